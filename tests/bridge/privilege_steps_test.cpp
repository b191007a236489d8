// The steps of switching a privilege on, and what is left when one of them fails. (Which method switches
// which privilege on is looked at elsewhere.)
#include "winutil_fixture.h"

namespace {

using namespace testbed;

class PrivilegeStepsTest : public WinUtilTest {};

TEST_F(PrivilegeStepsTest, AskForThePrivilegeAloneOnTheProcessToken) {
    const auto open = REPLACE(OpenProcessToken, [](HANDLE process, DWORD access, PHANDLE token) {
        EXPECT_EQ(process, GetCurrentProcess());
        EXPECT_EQ(access, 0x28u);
        *token = Ledger::fakeHandle();
        return TRUE;
    });
    const auto look = REPLACE(LookupPrivilegeValueA, [](LPCSTR machine, LPCSTR name, PLUID value) {
        EXPECT_EQ(machine, nullptr);
        EXPECT_STREQ(name, "SeBackupPrivilege");
        *value = {17, 4};
        return TRUE;
    });
    const auto adjust =
        REPLACE(AdjustTokenPrivileges, [](HANDLE, BOOL disableAll, PTOKEN_PRIVILEGES request, DWORD size,
                                          PTOKEN_PRIVILEGES previous, PDWORD previousSize) {
            EXPECT_FALSE(disableAll);
            EXPECT_EQ(request->PrivilegeCount, 1u);
            EXPECT_EQ(request->Privileges[0].Luid.LowPart, 17u);
            EXPECT_EQ(request->Privileges[0].Luid.HighPart, 4);
            EXPECT_EQ(request->Privileges[0].Attributes, 2u);
            EXPECT_EQ(size, 16u);
            EXPECT_EQ(previous, nullptr);
            EXPECT_EQ(previousSize, nullptr);
            return TRUE;
        });

    EXPECT_TRUE(NATIVE(enableBackupPrivilege)());

    EXPECT_EQ(adjust.count(), 1u);
    EXPECT_EQ(system().count("CloseHandle"), 1u);
    EXPECT_EQ(system().count("FormatMessageW"), 0u);
}

TEST_F(PrivilegeStepsTest, AdjustTheTokenThatWasOpened) {
    const HANDLE token = Ledger::fakeHandle();
    const auto open = REPLACE(OpenProcessToken, [&](HANDLE, DWORD, PHANDLE opened) {
        *opened = token;
        return TRUE;
    });
    const auto adjust = system().answer("AdjustTokenPrivileges", TRUE);

    EXPECT_TRUE(NATIVE(enableBackupPrivilege)());

    EXPECT_EQ(adjust.calls().at(0).argument<HANDLE>(0), token);
}

TEST_F(PrivilegeStepsTest, SwitchAPrivilegeOffWithNoAttributeAtAll) {
    std::vector<DWORD> attributes;
    const auto adjust = REPLACE(AdjustTokenPrivileges, [&](HANDLE, BOOL, PTOKEN_PRIVILEGES request, DWORD,
                                                           PTOKEN_PRIVILEGES, PDWORD) {
        attributes.push_back(request->Privileges[0].Attributes);
        return TRUE;
    });

    // A preallocated file holds a privilege while it is opened.
    const jlong record = NATIVE(createFileNC__Ljava_lang_String_2IIIJ)(
        folder() / L"file", static_cast<jint>(GENERIC_WRITE), CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, 1);
    NATIVE(closeFile)(record);

    EXPECT_THAT(attributes, ::testing::ElementsAre(2u, 0u));
}

TEST_F(PrivilegeStepsTest, CountAsDoneWithoutThePrivilege) {
    const auto adjust = system().answer("AdjustTokenPrivileges", TRUE, ERROR_NOT_ALL_ASSIGNED);

    EXPECT_TRUE(NATIVE(enableBackupPrivilege)());
}

TEST_F(PrivilegeStepsTest, MayBeMadeTwice) {
    EXPECT_TRUE(NATIVE(enableBackupPrivilege)());
    EXPECT_TRUE(NATIVE(enableBackupPrivilege)());
}

struct Step {
    const char* function;
    std::size_t closed;  // tokens
};

class FailingStepTest : public PrivilegeStepsTest, public ::testing::WithParamInterface<Step> {};

TEST_P(FailingStepTest, ClosesTheTokenAndTellsNobodyWhy) {
    const auto fail = system().answer(GetParam().function, FALSE, ERROR_NO_SUCH_PRIVILEGE);
    const auto text = system().watch("FormatMessageW");

    EXPECT_FALSE(NATIVE(enableBackupPrivilege)());

    EXPECT_EQ(fail.count(), 1u);
    EXPECT_EQ(system().count("CloseHandle"), GetParam().closed);
    ASSERT_EQ(text.count(), 1u);
    EXPECT_EQ(text.calls()[0].argument<DWORD>(2), static_cast<DWORD>(ERROR_NO_SUCH_PRIVILEGE));
    EXPECT_FALSE(java.isPending());
}

INSTANTIATE_TEST_SUITE_P(Steps, FailingStepTest,
                         ::testing::Values(Step{"OpenProcessToken", 0}, Step{"LookupPrivilegeValueA", 1},
                                           Step{"AdjustTokenPrivileges", 1}),
                         [](const auto& step) { return step.param.function; });

}  // namespace
