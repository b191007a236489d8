// The privileges that Java switches on.
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

class PrivilegesTest : public WinUtilTest {
protected:
    Replacement watchNames() {
        return REPLACE(LookupPrivilegeValueA, [this](LPCSTR machine, LPCSTR name, PLUID luid) {
            names.emplace_back(name);
            return REAL(LookupPrivilegeValueA)(machine, name, luid);
        });
    }

    std::vector<std::string> names;
};

TEST_F(PrivilegesTest, EachMethodSwitchesItsOwnOn) {
    const auto watch = watchNames();
    const auto adjust = REPLACE(AdjustTokenPrivileges, [](HANDLE, BOOL all, PTOKEN_PRIVILEGES state, DWORD,
                                                          PTOKEN_PRIVILEGES, PDWORD) {
        EXPECT_FALSE(all);
        EXPECT_EQ(state->PrivilegeCount, 1u);
        EXPECT_EQ(state->Privileges[0].Attributes, static_cast<DWORD>(SE_PRIVILEGE_ENABLED));
        return TRUE;
    });

    EXPECT_TRUE(NATIVE(enableSecurityPrivilege)());
    EXPECT_TRUE(NATIVE(enableTakeOwnershipPrivilege)());
    EXPECT_TRUE(NATIVE(enableRestorePrivilege)());
    EXPECT_TRUE(NATIVE(enableBackupPrivilege)());

    EXPECT_THAT(names, ElementsAre("SeSecurityPrivilege", "SeTakeOwnershipPrivilege", "SeRestorePrivilege",
                                   "SeBackupPrivilege"));
}

TEST_F(PrivilegesTest, ARequestForAPrivilegeThatIsNotHeldCountsAsMade) {
    const auto adjust = system().answer("AdjustTokenPrivileges", TRUE, ERROR_NOT_ALL_ASSIGNED);

    EXPECT_TRUE(NATIVE(enableBackupPrivilege)());
}

TEST_F(PrivilegesTest, AFailedRequestIsFalse) {
    for (const char* function : {"OpenProcessToken", "LookupPrivilegeValueA", "AdjustTokenPrivileges"}) {
        const auto failing = system().answer(function, FALSE, ERROR_ACCESS_DENIED);

        EXPECT_FALSE(NATIVE(enableSecurityPrivilege)()) << function;
        EXPECT_FALSE(NATIVE(enableTakeOwnershipPrivilege)()) << function;
        EXPECT_FALSE(NATIVE(enableRestorePrivilege)()) << function;
        EXPECT_FALSE(NATIVE(enableBackupPrivilege)()) << function;
    }
}

}  // namespace
