// Memberships in the directory's groups: the list has those for which membership was not established.
#include "membership_fixture.h"

namespace {

using namespace testbed;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

using Membership = MembershipTest;

TEST_F(Membership, IsFoundInAGroupWithTheUser) {
    addGroup(L"Staff", {alice});

    EXPECT_THAT(isMemberOf({L"Staff"}), IsEmpty());

    EXPECT_THAT(directory.questions(), ElementsAre(group(L"Staff") + L" has " + alice));
    EXPECT_THAT(directory.searchedGroups(), IsEmpty());
    EXPECT_THAT(
        directory.bound(),
        ElementsAre(std::wstring(root) + L" as IDirectorySearch", std::wstring(alice) + L" as IADsUser",
                    group(L"Staff") + L" as IADsGroup", group(L"Staff") + L" as IADsGroup"));
}

TEST_F(Membership, IsNotFoundInAGroupWithoutTheUser) {
    addGroup(L"Admins", {});

    EXPECT_THAT(isMemberOf({L"Admins"}), ElementsAre(L"Admins"));

    EXPECT_THAT(directory.bound(), Contains(std::wstring(alice) + L" as IDirectoryObject"));
}

TEST_F(Membership, LeavesOutAGroupThatTheDirectoryDoesNotKnow) {
    EXPECT_THAT(isMemberOf({L"Unknown"}), IsEmpty());
}

TEST_F(Membership, IsLookedForGroupByGroup) {
    addGroup(L"Staff", {alice});
    addGroup(L"Admins", {});
    addGroup(L"Guests", {});

    EXPECT_THAT(isMemberOf({L"Admins", L"Staff", L"Unknown", L"Guests"}), ElementsAre(L"Admins", L"Guests"));
}

TEST_F(Membership, IsFoundThroughNestedGroups) {
    addGroup(L"Inner", {alice});
    addGroup(L"Middle", {group(L"Inner")});
    addGroup(L"Outer", {L"LDAP://nothing", group(L"Middle")});

    EXPECT_THAT(isMemberOf({L"Outer"}), IsEmpty());

    EXPECT_THAT(directory.searchedGroups(), ElementsAre(group(L"Outer"), group(L"Middle"), group(L"Inner")));
}

// What a member is known by is its GUID, not the path by which a group names it.
TEST_F(Membership, IsFoundUnderAnotherPathOfTheUser) {
    directory.entries[L"LDAP://dc2/CN=Alice"] = {.number = aliceNumber};
    addGroup(L"Staff", {L"LDAP://dc2/CN=Alice"});

    EXPECT_THAT(isMemberOf({L"Staff"}), IsEmpty());
}

TEST_F(Membership, IsLookedForInBatchesOfMembers) {
    std::vector<std::wstring> members;
    for (int i = 0; i < 40; ++i) {
        members.push_back(L"LDAP://corp.example.com/CN=user " + std::to_wstring(i));
        directory.entries[members.back()] = {.number = static_cast<DWORD>(1000 + i)};
    }
    addGroup(L"Inner", {alice});
    members.push_back(group(L"Inner"));
    addGroup(L"Large", members);

    EXPECT_THAT(isMemberOf({L"Large"}), IsEmpty());

    EXPECT_EQ(system().count("ADsEnumerateNext"), 5u);  // 16, 16, 9 and the end; then the one with the user
    // The users are not groups, so nobody searches them.
    EXPECT_THAT(directory.searchedGroups(), ElementsAre(group(L"Large"), group(L"Inner")));
}

TEST_F(Membership, EndsTheWalkWhereTheUserIsFound) {
    addGroup(L"First", {alice});
    addGroup(L"Second", {});
    addGroup(L"Outer", {group(L"First"), group(L"Second")});

    EXPECT_THAT(isMemberOf({L"Outer"}), IsEmpty());

    EXPECT_THAT(directory.searchedGroups(), Not(Contains(group(L"Second"))));
}

TEST_F(Membership, IsLookedForOnceInAGroupThatIsNestedTwice) {
    addGroup(L"Shared", {});
    addGroup(L"Left", {group(L"Shared")});
    addGroup(L"Right", {group(L"Shared")});
    addGroup(L"Outer", {group(L"Left"), group(L"Right"), group(L"Left")});

    EXPECT_THAT(isMemberOf({L"Outer"}), ElementsAre(L"Outer"));

    EXPECT_THAT(directory.searchedGroups(),
                UnorderedElementsAre(group(L"Outer"), group(L"Left"), group(L"Right"), group(L"Shared")));
}

TEST_F(Membership, IsLookedForOnceInAGroupThatContainsItself) {
    addGroup(L"Ouroboros", {group(L"Ouroboros")});

    EXPECT_THAT(isMemberOf({L"Ouroboros"}), ElementsAre(L"Ouroboros"));

    EXPECT_THAT(directory.searchedGroups(), ElementsAre(group(L"Ouroboros")));
}

TEST_F(Membership, IsLookedForOnceInEachGroupOfACycle) {
    addGroup(L"A", {group(L"B")});
    addGroup(L"B", {group(L"C")});
    addGroup(L"C", {group(L"A"), group(L"B")});

    EXPECT_THAT(isMemberOf({L"A"}), ElementsAre(L"A"));

    EXPECT_THAT(directory.searchedGroups(), ElementsAre(group(L"A"), group(L"B"), group(L"C")));
}

class NestedGroups : public MembershipTest {
protected:
    static constexpr int depth = 1000;

    // A chain of groups, of which the last has these members.
    void addChain(const std::vector<std::wstring>& innermost) {
        for (int i = 0; i < depth; ++i) {
            addGroup(name(i), i + 1 < depth ? std::vector{group(name(i + 1))} : innermost);
        }
    }
    static std::wstring name(int i) { return L"level " + std::to_wstring(i); }

    std::size_t timesSearched(int i) {
        return static_cast<std::size_t>(std::ranges::count(directory.searchedGroups(), group(name(i))));
    }
};

TEST_F(NestedGroups, AreSearchedThroughAThousandLevels) {
    addChain({alice});

    EXPECT_THAT(isMemberOf({name(0)}), IsEmpty());

    EXPECT_THAT(directory.searchedGroups(), SizeIs(depth));
}

TEST_F(NestedGroups, AreSearchedOnceEachInACycleOfAThousand) {
    addChain({group(name(0)), group(name(500))});

    EXPECT_THAT(isMemberOf({name(0)}), ElementsAre(name(0)));

    EXPECT_THAT(directory.searchedGroups(), SizeIs(depth));
    for (int i = 0; i < depth; ++i) {
        EXPECT_EQ(timesSearched(i), 1u) << i;
    }
    // However deep the walk is, it does not hold on to what it has searched.
    EXPECT_LE(directory.mostObjects(), 10u);
}

// Java threads have small stacks; depth must not cost any.
TEST_F(NestedGroups, NeedNoStack) {
    addChain({});
    std::vector<std::uintptr_t> places;
    const auto enumeration =
        REPLACE(ADsEnumerateNext, [&](IEnumVARIANT* members, ULONG wanted, VARIANT* values, ULONG* fetched) {
            places.push_back(reinterpret_cast<std::uintptr_t>(values));
            return members->Next(wanted, values, fetched);
        });

    isMemberOf({name(0)});

    ASSERT_THAT(places, Not(IsEmpty()));
    EXPECT_THAT(places, Each(places.front()));
}

struct UnreadableCase {
    const char* name;
    void (*change)(DirectoryEntry&);
};

class UnreadableMember : public MembershipTest, public testing::WithParamInterface<UnreadableCase> {};

// A member without an identity is passed over, were it the user himself; and were it a group, its way back
// could not be known.
TEST_P(UnreadableMember, IsPassedOver) {
    addGroup(L"Inner", {alice});
    addGroup(L"Odd", {alice});
    addGroup(L"Outer", {group(L"Odd"), group(L"Odd")});
    GetParam().change(directory.entries[group(L"Odd")]);

    EXPECT_THAT(isMemberOf({L"Outer"}), ElementsAre(L"Outer"));
    EXPECT_THAT(directory.searchedGroups(), ElementsAre(group(L"Outer")));

    directory.entries[group(L"Outer")].members.push_back(group(L"Inner"));
    EXPECT_THAT(isMemberOf({L"Outer"}), IsEmpty());
}

// The group that was asked for is searched all the same.
TEST_P(UnreadableMember, IsSearchedAsTheFirstGroup) {
    addGroup(L"Inner", {alice});
    addGroup(L"Odd", {group(L"Inner")});
    GetParam().change(directory.entries[group(L"Odd")]);

    EXPECT_THAT(isMemberOf({L"Odd"}), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Members, UnreadableMember,
    testing::Values(
        UnreadableCase{"NoDirectoryObject", [](DirectoryEntry& entry) { entry.isDirectoryObject = false; }},
        UnreadableCase{"GuidOfAnotherType", [](DirectoryEntry& entry) { entry.guidType = ADSTYPE_INTEGER; }},
        UnreadableCase{"GuidTooShort", [](DirectoryEntry& entry) { entry.guidLength = 15; }},
        UnreadableCase{"GuidTooLong", [](DirectoryEntry& entry) { entry.guidLength = 17; }},
        UnreadableCase{"GuidEmpty", [](DirectoryEntry& entry) { entry.guidLength = 0; }},
        UnreadableCase{"NoGuid", [](DirectoryEntry& entry) { entry.guidValues = 0; }}),
    [](const auto& test) { return test.param.name; });

TEST_F(Membership, IsNotEstablishedForAUserWithoutIdentity) {
    directory.entries[alice].guidValues = 0;
    addGroup(L"Admins", {});

    EXPECT_THAT(isMemberOf({L"Admins"}), ElementsAre(L"Admins"));

    EXPECT_THAT(directory.searchedGroups(), IsEmpty());
}

TEST_F(Membership, IsNotEstablishedForAUserThatTheDirectoryDoesNotKnow) {
    directory.rows.clear();
    addGroup(L"Staff", {alice});

    EXPECT_THAT(isMemberOf({L"Staff", L"Unknown"}), ElementsAre(L"Staff", L"Unknown"));
}

TEST_F(Membership, TakesTheLastRowThatIsAUser) {
    directory.entries[L"LDAP://first"] = {.number = 7};
    directory.entries[L"LDAP://group"] = {.isGroup = true, .number = 8};
    directory.rows[L"(&(objectClass=user)(samAccountName=alice))"] = {
        {L"LDAP://first"},
        {alice},
        {L"LDAP://group"},
        {L"LDAP://gone"},
        {L"LDAP://unreadable", false},
        {L""},
        {L"LDAP://first", true, ADSTYPE_INTEGER}};
    addGroup(L"Staff", {});

    isMemberOf({L"Staff"});

    EXPECT_THAT(directory.questions(), ElementsAre(group(L"Staff") + L" has " + alice));
}

// S_ADS_ERRORSOCCURRED: there is a row, and something was amiss.
constexpr HRESULT errorsOccurred = 0x5011;

TEST_F(Membership, IsLookedForBehindRowsThatComeWithErrors) {
    directory.rows[L"(&(objectClass=user)(samAccountName=alice))"] = {
        {.path = L"LDAP://gone", .result = errorsOccurred}, {.path = alice}};
    addGroup(L"Staff", {alice});

    EXPECT_THAT(isMemberOf({L"Staff"}), IsEmpty());

    EXPECT_THAT(directory.questions(), SizeIs(1));
}

TEST_F(Membership, IsNotLookedForBehindErrorsWithoutEnd) {
    directory.rows[L"(&(objectClass=user)(samAccountName=alice))"] =
        std::vector<DirectoryRow>(100000, {.path = L"LDAP://gone", .result = errorsOccurred});
    addGroup(L"Staff", {alice});

    EXPECT_THAT(isMemberOf({L"Staff"}), ElementsAre(L"Staff"));

    EXPECT_EQ(directory.count("GetNextRow"), 1000u);
}

TEST_F(Membership, IsLookedForBehindAnyNumberOfRowsWithoutErrors) {
    auto& rows = directory.rows[L"(&(objectClass=user)(samAccountName=alice))"];
    rows.assign(2000, {.path = L"LDAP://gone"});
    rows.push_back({alice});
    addGroup(L"Staff", {alice});

    EXPECT_THAT(isMemberOf({L"Staff"}), IsEmpty());
}

TEST_F(Membership, TakesTheLastRowThatIsAGroup) {
    addGroup(L"Staff", {});
    addGroup(L"Other staff", {alice});
    directory.rows[L"(&(objectClass=group)(cn=Staff))"] = {
        {group(L"Staff")}, {group(L"Other staff")}, {alice}};

    EXPECT_THAT(isMemberOf({L"Staff"}), IsEmpty());
}

TEST_F(Membership, IsAskedOfTheDirectoryOfTheComputersDomain) {
    const auto name = REPLACE(GetComputerNameExW, [](COMPUTER_NAME_FORMAT, LPWSTR buffer, LPDWORD) -> BOOL {
        wcscpy(buffer, L"lonely");
        return TRUE;
    });

    EXPECT_THAT(isMemberOf({L"Staff"}), ElementsAre(L"Staff"));

    EXPECT_THAT(directory.bound(), ElementsAre(L"LDAP://lonely/dc=lonely as IDirectorySearch"));
}

TEST_F(Membership, IsLookedForByANameOfAnyCharacters) {
    addGroup(L"Caf\u00E9 \U0001F512 %s", {alice});

    EXPECT_THAT(isMemberOf({L"Caf\u00E9 \U0001F512 %s"}), IsEmpty());

    EXPECT_THAT(directory.questions(), SizeIs(1));
}

struct EscapedCase {
    const char* name;
    wchar_t character;
    const wchar_t* written;
};

class EscapedName : public MembershipTest, public testing::WithParamInterface<EscapedCase> {};

// A filter that took them for its own would find other groups, or none.
TEST_P(EscapedName, IsLookedForByItsCharacters) {
    const std::wstring name = std::wstring(L"a") + GetParam().character + L"z";
    directory.entries[group(L"Staff")] = {.isGroup = true, .number = 7, .members = {alice}};
    directory.rows[L"(&(objectClass=group)(cn=a" + std::wstring(GetParam().written) + L"z))"] = {
        {group(L"Staff")}};

    EXPECT_THAT(isMemberOf({name}), IsEmpty());

    EXPECT_THAT(directory.questions(), SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(Characters, EscapedName,
                         testing::Values(EscapedCase{"Asterisk", L'*', L"\\2a"},
                                         EscapedCase{"OpeningParenthesis", L'(', L"\\28"},
                                         EscapedCase{"ClosingParenthesis", L')', L"\\29"},
                                         EscapedCase{"Backslash", L'\\', L"\\5c"},
                                         EscapedCase{"Zero", L'\0', L"\\00"}),
                         [](const auto& test) { return test.param.name; });

TEST_F(Membership, IsLookedForByTheCharactersOfTheUsersName) {
    const auto user = REPLACE(GetUserNameW, [](LPWSTR buffer, LPDWORD) -> BOOL {
        wcscpy(buffer, L"a*(l)i\\ce");
        return TRUE;
    });
    directory.rows[L"(&(objectClass=user)(samAccountName=a\\2a\\28l\\29i\\5cce))"] = {{alice}};
    addGroup(L"Staff", {alice});

    EXPECT_THAT(isMemberOf({L"Staff"}), IsEmpty());

    EXPECT_THAT(directory.questions(), SizeIs(1));
}

// The filter has room for 1023 characters, of which 27 are its own.
TEST_F(Membership, IsNotLookedForByANameThatWouldBeCut) {
    const std::wstring longest(1023 - 27, L'g');
    addGroup(longest, {});

    EXPECT_THAT(isMemberOf({longest}), ElementsAre(longest));
    EXPECT_THAT(isMemberOf({longest + L"g"}), IsEmpty());

    // The group's search of the second call was not made.
    EXPECT_EQ(directory.count("ExecuteSearch"), 3u);
}

// Otherwise it would pass for one that the directory does not know.
TEST_F(Membership, IsLookedForByALongNameThatGrowsByItsEscapes) {
    const std::wstring stars(1023 - 27, L'*');
    std::wstring escaped;
    for (std::size_t i = 0; i < stars.size(); ++i) {
        escaped += L"\\2a";
    }
    directory.rows[L"(&(objectClass=group)(cn=" + escaped + L"))"] = {{group(L"Staff")}};
    directory.entries[group(L"Staff")] = {.isGroup = true, .number = 7};

    EXPECT_THAT(isMemberOf({stars}), ElementsAre(stars));

    EXPECT_EQ(directory.count("ExecuteSearch"), 2u);
}

}  // namespace
