// What becomes of a membership when the directory fails, and that nothing is left behind it.
#include "membership_fixture.h"

namespace {

using namespace testbed;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using DirectoryFailure = MembershipTest;

struct FailureCase {
    const char* name;
    const char* method;
    std::size_t call;
    bool listed;  // whether the group is in the result
    HRESULT result = E_ACCESSDENIED;
};

// The failing call of a lookup that finds the user in the first group's nested one.
class FailedStep : public MembershipTest, public testing::WithParamInterface<FailureCase> {};

TEST_P(FailedStep, PutsTheGroupIntoTheListUnlessItIsTheGroupsSearch) {
    addGroup(L"Inner", {alice});
    addGroup(L"Outer", {group(L"Inner")});
    directory.failCall(GetParam().method, GetParam().call, GetParam().result);

    const auto listed = isMemberOf({L"Outer"});

    EXPECT_EQ(listed.size(), GetParam().listed ? 1u : 0u);
    EXPECT_TRUE(result);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, FailedStep,
    testing::Values(
        FailureCase{"BindingTheDirectory", "ADsGetObject", 1, true},
        FailureCase{"UserPreference", "SetSearchPreference", 1, true},
        FailureCase{"UserSearch", "ExecuteSearch", 1, true}, FailureCase{"UserRow", "GetNextRow", 1, true},
        FailureCase{"UserColumn", "GetColumn", 1, true},
        FailureCase{"BindingTheUser", "ADsGetObject", 2, true},
        FailureCase{"BehindTheUserRow", "GetNextRow", 2, false},
        FailureCase{"GroupPreference", "SetSearchPreference", 2, false},
        FailureCase{"GroupSearch", "ExecuteSearch", 2, false},
        FailureCase{"GroupRow", "GetNextRow", 3, false}, FailureCase{"GroupColumn", "GetColumn", 2, false},
        FailureCase{"BindingTheFoundGroup", "ADsGetObject", 3, false},
        FailureCase{"BindingTheGroup", "ADsGetObject", 4, true},
        FailureCase{"AskingTheGroup", "IsMember", 1, true},
        FailureCase{"BindingTheUsersIdentity", "ADsGetObject", 5, true},
        FailureCase{"ReadingTheUsersIdentity", "GetObjectAttributes", 1, true},
        FailureCase{"ReadingTheGroupsIdentity", "GetObjectAttributes", 2, false},
        FailureCase{"Members", "Members", 1, true}, FailureCase{"Enumerator", "get__NewEnum", 1, true},
        FailureCase{"FirstMembers", "Next", 1, true}, FailureCase{"BehindTheFirstMembers", "Next", 2, false},
        FailureCase{"ReadingAMembersIdentity", "GetObjectAttributes", 3, true},
        FailureCase{"ReadingAMembersPath", "get_ADsPath", 1, true},
        FailureCase{"BindingANestedGroup", "ADsGetObject", 6, true},
        FailureCase{"NestedMembers", "Members", 2, true}),
    [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    StepsThatGiveNothing, FailedStep,
    testing::Values(FailureCase{"BindingTheDirectory", "ADsGetObject", 1, true, S_FALSE},
                    FailureCase{"BindingTheUser", "ADsGetObject", 2, true, S_FALSE},
                    FailureCase{"BindingTheFoundGroup", "ADsGetObject", 3, false, S_FALSE},
                    FailureCase{"BindingTheGroup", "ADsGetObject", 4, true, S_FALSE},
                    FailureCase{"ReadingTheUsersIdentity", "GetObjectAttributes", 1, true, S_FALSE},
                    FailureCase{"Members", "Members", 1, true, S_FALSE},
                    FailureCase{"Enumerator", "get__NewEnum", 1, true, S_FALSE},
                    FailureCase{"ReadingAMembersIdentity", "GetObjectAttributes", 3, true, S_FALSE},
                    FailureCase{"ReadingAMembersPath", "get_ADsPath", 1, true, S_FALSE},
                    FailureCase{"BindingANestedGroup", "ADsGetObject", 6, true, S_FALSE}),
    [](const auto& test) { return test.param.name; });

// The fake directory and the ledger see to it that every reference, search, column and block goes back.
TEST_F(DirectoryFailure, LeavesNothingBehindWhicheverCallFails) {
    addGroup(L"Inner", {alice});
    addGroup(L"Outer", {group(L"Outer"), group(L"Inner")});
    ASSERT_THAT(isMemberOf({L"Outer"}), IsEmpty());
    const std::size_t steps = directory.steps();
    ASSERT_GT(steps, 20u);

    for (std::size_t k = 1; k <= steps; ++k) {
        directory.failStep(k);
        EXPECT_THAT(isMemberOf({L"Outer"}), AnyOf(IsEmpty(), ElementsAre(L"Outer"))) << k;
        EXPECT_TRUE(ledger().isEmpty()) << k;
    }
}

TEST_F(DirectoryFailure, LeavesNothingBehindWithoutMemory) {
    addGroup(L"Inner", {alice});
    addGroup(L"Outer", {group(L"Inner")});
    std::size_t allocations = 0;
    {
        const auto memory = system().watch("malloc");
        ASSERT_THAT(isMemberOf({L"Outer"}), IsEmpty());
        allocations = memory.count();
    }
    ASSERT_GE(allocations, 3u);  // two paths, the groups that were visited

    for (std::size_t k = 1; k <= allocations; ++k) {
        const auto memory = system().failCall("malloc", k, 0);
        EXPECT_THAT(isMemberOf({L"Outer"}), ElementsAre(L"Outer")) << k;
        EXPECT_TRUE(ledger().isEmpty()) << k;
    }
}

// It is not one that the directory does not know.
TEST_F(DirectoryFailure, PutsAGroupIntoTheListWithoutMemoryForItsPath) {
    addGroup(L"Staff", {alice});
    const auto memory = system().failCall("malloc", 2, 0);  // behind the user's

    EXPECT_THAT(isMemberOf({L"Staff"}), ElementsAre(L"Staff"));
    EXPECT_EQ(directory.count("ExecuteSearch"), 2u);
}

// Nor is the last row that there was memory for the last one.
TEST_F(DirectoryFailure, PutsAGroupIntoTheListWithoutMemoryForTheLastOfItsPaths) {
    addGroup(L"Staff", {alice});
    addGroup(L"Other staff", {});
    directory.rows[L"(&(objectClass=group)(cn=Staff))"] = {{group(L"Staff")}, {group(L"Other staff")}};
    const auto memory = system().failCall("malloc", 3, 0);

    EXPECT_THAT(isMemberOf({L"Staff"}), ElementsAre(L"Staff"));
    EXPECT_THAT(directory.questions(), IsEmpty());
}

TEST_F(DirectoryFailure, PutsAGroupIntoTheListWithoutMemoryForTheQuestion) {
    addGroup(L"Staff", {alice});
    const auto memory = system().answer("SysAllocString", 0);

    EXPECT_THAT(isMemberOf({L"Staff"}), ElementsAre(L"Staff"));
}

// Groups beyond those that there is memory for are not searched; the walk still ends.
TEST_F(DirectoryFailure, EndsTheWalkWithoutMemoryForMoreGroups) {
    std::vector<std::wstring> members;
    for (int i = 0; i < 40; ++i) {
        addGroup(L"g" + std::to_wstring(i), {});
        members.push_back(group(L"g" + std::to_wstring(i)));
    }
    addGroup(L"Outer", members);
    const auto memory = system().failCall("malloc", 4, 0);  // two paths, 16 groups, 32 groups
    const auto later = system().failCall("malloc", 5, 0);

    EXPECT_THAT(isMemberOf({L"Outer"}), ElementsAre(L"Outer"));

    // Of the first 16 entries one is the group itself; two of the others found no room.
    EXPECT_THAT(directory.searchedGroups(), SizeIs(1 + 40 - 2));
}

TEST_F(DirectoryFailure, ListsEveryGroupWhenThereIsNoDirectory) {
    directory.failCall("ADsGetObject", 1, HRESULT_FROM_WIN32(ERROR_DS_SERVER_DOWN));
    directory.failCall("ADsGetObject", 2, HRESULT_FROM_WIN32(ERROR_DS_SERVER_DOWN));

    EXPECT_THAT(isMemberOf({L"Staff", L"Admins"}), ElementsAre(L"Staff", L"Admins"));
}

TEST_F(DirectoryFailure, ListsEveryGroupWhenTheUserHasNoName) {
    addGroup(L"Staff", {alice});
    const auto name = system().answer("GetUserNameW", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_THAT(isMemberOf({L"Staff"}), ElementsAre(L"Staff"));
}

TEST_F(DirectoryFailure, ListsEveryGroupWhenTheComputerHasNoName) {
    addGroup(L"Staff", {alice});
    // It may have written some of it.
    const auto name = REPLACE(GetComputerNameExW, [](COMPUTER_NAME_FORMAT, LPWSTR buffer, LPDWORD) -> BOOL {
        wcscpy(buffer, L"computer.part");
        SetLastError(ERROR_MORE_DATA);
        return FALSE;
    });

    EXPECT_THAT(isMemberOf({L"Staff"}), ElementsAre(L"Staff"));
    EXPECT_THAT(directory.bound(), ElementsAre(L"LDAP:///dc= as IDirectorySearch"));
}

}  // namespace
