// The text of security identifiers: of the token's user through the library, and the worker by itself.
#include "account/sids.h"
#include "bridge/token_user.h"
#include "sid_bytes.h"

namespace {

using namespace testbed;
using winutil::isSidWithin;
using winutil::account::sidToText;

struct SidCase {
    const char* name;
    std::string bytes;
    std::wstring text;
};

std::string largeSid(int count) {
    return sidBytes({1, 2, 0xFF, 4, 5, 6}, std::vector<DWORD>(static_cast<std::size_t>(count), 0xFFFFFFFF));
}

std::wstring largeSidText(int count) {
    std::wstring text = L"S-1-0x0102ff040506";
    for (int i = 0; i < count; ++i) {
        text += L"-4294967295";
    }
    return text;
}

const SidCase cases[] = {
    {"LocalSystem", sidBytes(ntAuthority, {18}), L"S-1-5-18"},
    {"Administrators", sidBytes(ntAuthority, {32, 544}), L"S-1-5-32-544"},
    {"DomainUser", sidBytes(ntAuthority, {21, 4294967295, 2147483648, 7, 1000}),
     L"S-1-5-21-4294967295-2147483648-7-1000"},
    {"NoSubAuthority", sidBytes(ntAuthority, {}), L"S-1-5"},
    {"AuthorityOfFourBytes", sidBytes({0, 0, 0xFF, 0xFE, 0xFD, 0xFC}, {1}), L"S-1-4294901244-1"},
    {"AuthorityWithATopByte", sidBytes({1, 0, 0, 0, 0, 5}, {1}), L"S-1-0x010000000005-1"},
    {"AuthorityWithASecondByte", sidBytes({0, 0xAB, 0xCD, 0, 0, 0xF}, {1}), L"S-1-0x00abcd00000f-1"},
    {"EightSubAuthorities", largeSid(8), largeSidText(8)},
    // More do not fit into the text.
    {"NineSubAuthorities", largeSid(9), L""},
    {"FifteenSubAuthorities", largeSid(15), L""},
    // What is no SID.
    {"WrongRevision", sidBytes(ntAuthority, {18}, -1, 2), L""},
    {"TooManySubAuthorities", sidBytes(ntAuthority, std::vector<DWORD>(16, 1)), L""},
    // Hostile: a count that the memory does not bear out.
    {"OneMoreClaimed", sidBytes(ntAuthority, {18}, 2), L""},
    {"EightClaimed", sidBytes(ntAuthority, {18}, 8), L""},
    {"FifteenClaimed", sidBytes(ntAuthority, {}, 15), L""},
    {"EverythingClaimed", sidBytes(ntAuthority, {18}, 255), L""},
    {"HalfASubAuthority", sidBytes(ntAuthority, {18, 19}).substr(0, 14), L""},
    {"NoWholeHeader", sidBytes(ntAuthority, {}).substr(0, 7), L""},
    {"OneByte", sidBytes(ntAuthority, {}).substr(0, 1), L""},
    {"Nothing", "", L""},
};

std::string caseName(const testing::TestParamInfo<SidCase>& info) {
    return info.param.name;
}

class SidOfToken : public WinUtilTest, public testing::WithParamInterface<SidCase> {};

// The bytes end at a guard page: one read too many faults.
TEST_P(SidOfToken, IsTheTextOfItsBytesOrEmpty) {
    const TokenOfUser token(system(), GetParam().bytes);

    const JavaObject sid = NATIVE(getSID)();

    EXPECT_EQ(sid.text(), GetParam().text);
}

// A SID that the library would not print must not reach the system's lookup either.
TEST_P(SidOfToken, IsNotLookedUpWhenItIsNotWhole) {
    const std::string& bytes = GetParam().bytes;
    const bool whole = bytes.size() >= 8 && bytes.size() >= 8 + 4u * static_cast<BYTE>(bytes[1]);
    const TokenOfUser token(system(), bytes);
    const auto lookup = system().answer("LookupAccountSidA", FALSE, ERROR_NONE_MAPPED);

    EXPECT_EQ(NATIVE(getV6DomainName)().text(), L"");

    EXPECT_EQ(lookup.count(), whole ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Bytes, SidOfToken, testing::ValuesIn(cases), caseName);

// What the worker leaves to its caller.
TEST(SidToText, SaysHowMuchRoomItWants) {
    std::string sid = sidBytes(ntAuthority, {32, 544});
    char text[51];
    DWORD size = sizeof(text);
    SetLastError(0);

    EXPECT_FALSE(sidToText(sid.data(), text, size));

    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(size, 52u);
}

TEST(SidToText, WritesIntoTheRoomThatItWants) {
    std::string sid = sidBytes(ntAuthority, {32, 544});
    const GuardedBuffer text(52, "a SID's text");
    DWORD size = 52;

    EXPECT_TRUE(sidToText(sid.data(), text.as<char>(), size));

    EXPECT_STREQ(text.as<char>(), "S-1-5-32-544");
    EXPECT_EQ(size, 52u);
}

// Except where an authority has 32 bits or more: not every system prints those as it should.
TEST(SidToText, AgreesWithTheSystem) {
    for (const auto& [name, bytes, text] : cases) {
        if (!text.empty() && bytes.substr(2, 5) == std::string(5, '\0')) {
            std::string copy = bytes;
            char made[winutil::account::sidTextCapacity];
            DWORD size = sizeof(made);
            EXPECT_TRUE(sidToText(copy.data(), made, size)) << name;
            EXPECT_EQ(made, systemSidText(copy.data())) << name;
        }
    }
}

TEST(SidToText, LeavesTheSizeAloneForWhatIsNoSid) {
    std::string sid = sidBytes(ntAuthority, {18}, -1, 9);
    char text[8];
    DWORD size = sizeof(text);

    EXPECT_FALSE(sidToText(sid.data(), text, size));

    EXPECT_EQ(size, sizeof(text));
}

TEST(SidWithin, IsNoneThatLiesOutsideItsMemory) {
    const std::string sid = sidBytes(ntAuthority, {18});
    std::string memory = std::string(16, 'x') + sid;

    EXPECT_TRUE(isSidWithin(memory.data() + 16, memory.data(), memory.size()));
    EXPECT_FALSE(isSidWithin(memory.data() + 16, memory.data(), memory.size() - 1));
    EXPECT_FALSE(isSidWithin(memory.data() + 16, memory.data() + 17, memory.size()));
    EXPECT_FALSE(isSidWithin(memory.data() + memory.size(), memory.data(), memory.size()));
    EXPECT_FALSE(isSidWithin(memory.data() + memory.size() + 1, memory.data(), memory.size()));
    EXPECT_FALSE(isSidWithin(nullptr, memory.data(), memory.size()));
}

TEST(SidWithin, IsNoneAtAnAddressWhereNoSidLies) {
    const std::string memory = std::string(19, 'x') + sidBytes(ntAuthority, {18});

    EXPECT_FALSE(isSidWithin(memory.data() + 19, memory.data(), memory.size()));
}

}  // namespace
