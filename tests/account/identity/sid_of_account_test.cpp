// SIDs of named accounts.
#include <cstring>

#include "sid_bytes.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// One lookup, as the system saw it.
struct Lookup {
    std::wstring name;
    bool withSid;
    DWORD sidSize;
    DWORD domainSize;
    bool operator==(const Lookup&) const = default;
};

void PrintTo(const Lookup& lookup, std::ostream* stream) {
    *stream << "{" << toUtf8(lookup.name) << ", " << lookup.withSid << ", " << lookup.sidSize << ", "
            << lookup.domainSize << "}";
}

class SidOfAccount : public WinUtilTest {
protected:
    // Lets every account have these SID bytes.
    Replacement accountsHave(std::string sid) {
        return REPLACE(
            LookupAccountNameW,
            [this, sid = std::move(sid)](LPCWSTR server, LPCWSTR name, PSID buffer, LPDWORD size,
                                         LPWSTR domain, LPDWORD domainSize, PSID_NAME_USE) -> BOOL {
                EXPECT_EQ(server, nullptr);
                lookups.push_back({name, buffer != nullptr, *size, *domainSize});
                wcscpy_s(domain, *domainSize, L"DOMAIN");
                if (*size < sid.size()) {
                    *size = static_cast<DWORD>(sid.size());
                    *domainSize = 5000;
                    SetLastError(ERROR_INSUFFICIENT_BUFFER);
                    return FALSE;
                }
                std::memcpy(buffer, sid.data(), sid.size());
                return TRUE;
            });
    }

    std::vector<Lookup> lookups;
};

TEST_F(SidOfAccount, IsThatOfTheSystem) {
    EXPECT_EQ(NATIVE(getSIDForUser)(nullptr, L"Administrators").text(), L"S-1-5-32-544");
    EXPECT_EQ(NATIVE(getSIDForUser)(L"", L"SYSTEM").text(), L"S-1-5-18");
    EXPECT_EQ(NATIVE(getSIDForUser)(L"NT AUTHORITY", L"SYSTEM").text(), L"S-1-5-18");
    EXPECT_EQ(NATIVE(getSIDForUser)(nullptr, L"Everyone").text(), L"S-1-1-0");
    EXPECT_EQ(NATIVE(getSIDForUser)(nullptr, NATIVE(getUsername)().text()).text(), toWide(processUserSid()));
}

TEST_F(SidOfAccount, IsEmptyForAnAccountThatIsNotThere) {
    EXPECT_EQ(NATIVE(getSIDForUser)(nullptr, L"nobody of that name").text(), L"");
    EXPECT_EQ(NATIVE(getSIDForUser)(L"no such domain", L"SYSTEM").text(), L"");
}

TEST_F(SidOfAccount, AsksForTheSizeFirst) {
    const auto accounts = accountsHave(sidBytes(ntAuthority, {18}));

    EXPECT_EQ(NATIVE(getSIDForUser)(L"CORP", L"al\u00EDce").text(), L"S-1-5-18");

    EXPECT_THAT(lookups, ElementsAre(Lookup{L"CORP\\al\u00EDce", false, 0, 128},
                                     Lookup{L"CORP\\al\u00EDce", true, 12, 128}));
}

TEST_F(SidOfAccount, TakesTwiceTheMemoryThatTheSystemAsksFor) {
    const auto accounts = accountsHave(sidBytes(ntAuthority, {21, 1, 2, 3, 1000}));
    const auto memory = system().watch("malloc");

    NATIVE(getSIDForUser)(nullptr, L"alice");

    // The user's name, the SID of 28 bytes.
    ASSERT_EQ(memory.count(), 2u);
    EXPECT_EQ(memory.calls()[1].argument<std::size_t>(0), 56u);
}

TEST_F(SidOfAccount, LooksUpTheBareNameWithoutADomain) {
    const auto accounts = accountsHave(sidBytes(ntAuthority, {18}));

    NATIVE(getSIDForUser)(nullptr, L"alice");
    NATIVE(getSIDForUser)(L"", L"alice");

    ASSERT_EQ(lookups.size(), 4u);
    EXPECT_EQ(lookups[0].name, L"alice");
    EXPECT_EQ(lookups[2].name, L"alice");
}

TEST_F(SidOfAccount, IsEmptyForANullUser) {
    const auto accounts = accountsHave(sidBytes(ntAuthority, {18}));

    EXPECT_EQ(NATIVE(getSIDForUser)(L"CORP", nullptr).text(), L"");

    EXPECT_THAT(lookups, IsEmpty());
}

TEST_F(SidOfAccount, IsEmptyForAnEmptyName) {
    const auto accounts = accountsHave(sidBytes(ntAuthority, {18}));

    EXPECT_EQ(NATIVE(getSIDForUser)(nullptr, L"").text(), L"");
    EXPECT_THAT(lookups, IsEmpty());
    EXPECT_EQ(NATIVE(getSIDForUser)(L"CORP", L"").text(), L"S-1-5-18");
    EXPECT_EQ(lookups.front().name, L"CORP\\");
}

// Cut, it could be the name of another account.
TEST_F(SidOfAccount, IsEmptyForANameOfMoreThan1023Characters) {
    const auto accounts = accountsHave(sidBytes(ntAuthority, {18}));

    ASSERT_EQ(NATIVE(getSIDForUser)(L"CORP", std::wstring(1018, L'a')).text(), L"S-1-5-18");
    EXPECT_EQ(lookups.front().name.size(), 1023u);
    lookups.clear();
    EXPECT_EQ(NATIVE(getSIDForUser)(L"CORP", std::wstring(1019, L'a')).text(), L"");

    EXPECT_THAT(lookups, IsEmpty());
}

TEST_F(SidOfAccount, IsEmptyWhereTheFirstLookupFails) {
    const auto lookup = system().answer("LookupAccountNameW", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(getSIDForUser)(nullptr, L"alice").text(), L"");

    EXPECT_EQ(lookup.count(), 1u);
}

TEST_F(SidOfAccount, IsEmptyWhereTheSecondLookupFails) {
    const auto lookup = system().failCall("LookupAccountNameW", 2, ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(getSIDForUser)(nullptr, L"SYSTEM").text(), L"");
}

// An empty text would say that there is no such account.
TEST_F(SidOfAccount, IsNotToldWithoutMemoryForIt) {
    const auto accounts = accountsHave(sidBytes(ntAuthority, {18}));
    const auto memory = system().failCall("malloc", 3, 0);

    EXPECT_FALSE(NATIVE(getSIDForUser)(L"CORP", L"alice"));

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_EQ(lookups.size(), 1u);
}

TEST_F(SidOfAccount, IsNotLookedUpWithoutMemoryForTheNames) {
    const auto accounts = accountsHave(sidBytes(ntAuthority, {18}));
    for (std::size_t k = 1; k <= 2; ++k) {
        const auto memory = system().failCall("malloc", k, 0);
        EXPECT_FALSE(NATIVE(getSIDForUser)(L"CORP", L"alice")) << k;
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << k;
    }
    EXPECT_THAT(lookups, IsEmpty());
}

TEST_F(SidOfAccount, IsNotLookedUpWhereJavaHasNoMemoryForTheNames) {
    const auto accounts = accountsHave(sidBytes(ntAuthority, {18}));
    for (std::size_t k = 1; k <= 2; ++k) {
        java.failCall("GetStringChars", k);
        EXPECT_FALSE(NATIVE(getSIDForUser)(L"CORP", L"alice")) << k;
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << k;
    }
    EXPECT_THAT(lookups, IsEmpty());
}

TEST_F(SidOfAccount, IsEmptyForALookupThatSucceedsWithoutASize) {
    const auto lookup = system().answer("LookupAccountNameW", TRUE);

    EXPECT_EQ(NATIVE(getSIDForUser)(nullptr, L"alice").text(), L"");
}

TEST_F(SidOfAccount, IsEmptyForMoreThanEightSubAuthorities) {
    const auto accounts = accountsHave(sidBytes(ntAuthority, std::vector<DWORD>(9, 1)));

    EXPECT_EQ(NATIVE(getSIDForUser)(nullptr, L"alice").text(), L"");
}

// The size that the system named is all that it filled, so a count that wants more is a lie.
TEST_F(SidOfAccount, IsEmptyForACountThatTheSizeDoesNotBearOut) {
    for (const int count : {2, 8, 15, 255}) {
        const auto accounts = accountsHave(sidBytes(ntAuthority, {18}, count));
        EXPECT_EQ(NATIVE(getSIDForUser)(nullptr, L"alice").text(), L"") << count;
    }
}

}  // namespace
