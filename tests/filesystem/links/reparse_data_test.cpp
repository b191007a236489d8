// The parser of reparse data, with its buffer against a page that nobody may touch.
#include "filesystem/reparse_data.h"

#include "filesystem/reparse_points.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "guard_pages.h"
#include "reparse_bytes.h"

namespace {

using namespace testbed;
using namespace winutil::filesystem;

constexpr DWORD file = FILE_ATTRIBUTE_REPARSE_POINT;
constexpr DWORD directory = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY;

struct Parsed {
    DWORD kind;
    std::wstring target;
    bool operator==(const Parsed&) const = default;
};

void PrintTo(const Parsed& parsed, std::ostream* stream) {
    *stream << parsed.kind << " " << std::string(parsed.target.begin(), parsed.target.end());
}

Parsed parse(const Bytes& bytes, DWORD attributes = directory) {
    const GuardedBuffer buffer(bytes, "reparse data");
    LinkTarget target;
    std::fill(std::begin(target), std::end(target), L'#');
    const DWORD kind = parseReparseData(buffer.bytes(), attributes, target);
    const std::size_t length = wcsnlen(target, linkTargetCapacity);
    EXPECT_LT(length, linkTargetCapacity) << "a target without an end";
    return {kind, std::wstring(target, std::min(length, linkTargetCapacity - 1))};
}

Parsed parseName(const std::wstring& name) {
    return parse(ReparseBytes{.path = name}.build());
}

TEST(ReparsePoint, WithoutItsAttributeIsNoneAndHasNoTarget) {
    LinkTarget target;
    std::fill(std::begin(target), std::end(target), L'#');

    EXPECT_EQ(readReparseKind(L"C:\\file", target, FILE_ATTRIBUTE_ARCHIVE), DWORD{linkKindNone});

    EXPECT_EQ(target[0], L'\0');
}

TEST(ReparseData, NamesTheKindByTagAndDirectoryBit) {
    const Bytes symlink = ReparseBytes{.tag = IO_REPARSE_TAG_SYMLINK}.build();

    EXPECT_EQ(parse(ReparseBytes{}.build()), (Parsed{16, L"C:\\data"}));
    EXPECT_EQ(parse(symlink, file), (Parsed{17, L"C:\\data"}));
    EXPECT_EQ(parse(symlink, directory), (Parsed{18, L"C:\\data"}));
}

TEST(ReparseData, AnswersAnotherTagWithItsLowByteSet) {
    EXPECT_EQ(parse(ReparseBytes{.tag = 0x80000017}.build()), (Parsed{0x800000FF, L""}));
    EXPECT_EQ(parse(ReparseBytes{.tag = 0x9000701A}.build()), (Parsed{0x900070FF, L""}));
}

TEST(ReparseData, TurnsTheObjectManagersNameIntoThePathOfAUser) {
    EXPECT_EQ(parseName(L"\\??\\UNC\\srv\\share\\x").target, L"\\\\srv\\share\\x");
    EXPECT_EQ(parseName(L"\\??\\unc\\srv\\share").target, L"\\\\srv\\share");
    EXPECT_EQ(parseName(L"\\??\\Volume{1}\\").target, L"\\\\?\\Volume{1}\\");
    EXPECT_EQ(parseName(L"\\??\\VOLUME{1}\\").target, L"\\\\?\\VOLUME{1}\\");
    EXPECT_EQ(parseName(L"\\??\\C:\\data").target, L"C:\\data");
    EXPECT_EQ(parseName(L"\\??\\UNCLE").target, L"UNCLE");
    EXPECT_EQ(parseName(L"..\\x").target, L"..\\x");
    EXPECT_EQ(parseName(L"\\Device\\Mup\\srv").target, L"\\Device\\Mup\\srv");
    EXPECT_EQ(parseName(L"\\??").target, L"\\??");
    EXPECT_EQ(parseName(L"").target, L"");
}

TEST(ReparseData, FindsTheNameBehindAnotherOne) {
    // As the system's own tool writes symbolic links: the name for display first, without a terminator.
    const ReparseBytes bytes{
        .tag = IO_REPARSE_TAG_SYMLINK, .path = L"C:\\x\\??\\C:\\x", .nameOffset = 8, .nameLength = 16};

    EXPECT_EQ(parse(bytes.build(), file), (Parsed{17, L"C:\\x"}));
}

TEST(ReparseData, TakesTheTextAtTheStartWhenTheNameReachesBehindItsEnd) {
    using namespace std::string_literals;
    const std::wstring twoTexts = L"C:\\a\0C:\\b"s;

    EXPECT_EQ(parse(ReparseBytes{.path = twoTexts, .nameOffset = 10, .nameLength = 8}.build()).target,
              L"C:\\a");
    EXPECT_EQ(parse(ReparseBytes{.path = L"C:\\a", .nameOffset = 2, .nameLength = 8}.build()).target,
              L"C:\\a");
    EXPECT_EQ(parse(ReparseBytes{.path = L"C:\\a", .nameOffset = 0xFFFE, .nameLength = 8}.build()).target,
              L"C:\\a");
    EXPECT_EQ(parse(ReparseBytes{.path = L"C:\\a", .nameLength = 0xFFFE}.build()).target, L"C:\\a");
    EXPECT_EQ(
        parse(ReparseBytes{.path = L"C:\\a", .nameOffset = 0xFFFF, .nameLength = 0xFFFF}.build()).target,
        L"C:\\a");
    EXPECT_EQ(parse(ReparseBytes{.path = L"", .nameLength = 0x7FFE}.build()), (Parsed{16, L""}));
}

TEST(ReparseData, HalvesOddOffsetsAndLengthsDownwards) {
    EXPECT_EQ(parse(ReparseBytes{.path = L"abcd", .nameOffset = 3, .nameLength = 5}.build()).target, L"bc");
    EXPECT_EQ(parse(ReparseBytes{.path = L"abcd", .nameOffset = 1, .nameLength = 1}.build()).target, L"");
}

TEST(ReparseData, BelievesTheBytesThatCameAndNotTheLengthTheyName) {
    for (const int dataLength : {0, 1, 12, 0x7FFF, 0xFFFF}) {
        EXPECT_EQ(parse(ReparseBytes{.dataLength = dataLength}.build()), (Parsed{16, L"C:\\data"}))
            << dataLength;
    }
}

TEST(ReparseData, SeesNoReparsePointInLessThanAHeader) {
    for (const DWORD tag : {IO_REPARSE_TAG_MOUNT_POINT, IO_REPARSE_TAG_SYMLINK, 0x80000017UL}) {
        const Bytes whole = ReparseBytes{.tag = tag}.build();
        const std::size_t header = tag == IO_REPARSE_TAG_MOUNT_POINT ? 16
                                   : tag == IO_REPARSE_TAG_SYMLINK   ? 20
                                                                     : 8;
        for (std::size_t size = 0; size <= whole.size(); ++size) {
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(parse(cut).kind == 255, size < header) << std::hex << tag << ": " << std::dec << size;
        }
    }
}

TEST(ReparseData, GivesTheBeginningOfANameThatIsCutOff) {
    Bytes bytes = ReparseBytes{}.build();
    bytes.pop_back();

    EXPECT_EQ(parse(bytes), (Parsed{16, L"C:\\dat"}));
}

TEST(ReparseData, GivesATargetThatFitsAndNeverACutOne) {
    EXPECT_EQ(parseName(std::wstring(2047, L'a')), (Parsed{16, std::wstring(2047, L'a')}));
    EXPECT_EQ(parseName(std::wstring(2048, L'a')), (Parsed{16, L""}));
    EXPECT_EQ(parseName(L"\\??\\" + std::wstring(2047, L'a')).target, std::wstring(2047, L'a'));
    EXPECT_EQ(parseName(L"\\??\\" + std::wstring(2048, L'a')).target, L"");
    EXPECT_EQ(parseName(L"\\??\\UNC\\" + std::wstring(2045, L'a')).target,
              L"\\\\" + std::wstring(2045, L'a'));
    EXPECT_EQ(parseName(L"\\??\\UNC\\" + std::wstring(2046, L'a')).target, L"");
    EXPECT_EQ(parseName(std::wstring(8184, L'a')), (Parsed{16, L""}));
}

TEST(ReparseData, StaysWithinAnyBytes) {
    std::mt19937 random(1);
    std::uniform_int_distribution<std::size_t> anySize(0, 200);
    std::uniform_int_distribution<int> anyByte(0, 255);
    for (int round = 0; round < 5'000; ++round) {
        Bytes bytes(anySize(random));
        for (std::byte& byte : bytes) {
            byte = static_cast<std::byte>(anyByte(random));
        }
        const DWORD tag = round % 2 == 0 ? IO_REPARSE_TAG_MOUNT_POINT : IO_REPARSE_TAG_SYMLINK;
        std::memcpy(bytes.data(), &tag, std::min(bytes.size(), sizeof(tag)));

        const Parsed parsed = parse(bytes, file);

        const std::size_t header = round % 2 == 0 ? 16 : 20;
        const DWORD kind = round % 2 == 0 ? 16 : 17;
        ASSERT_EQ(parsed.kind, bytes.size() < header ? 255 : kind) << "round " << round;
        // Each prefix that is taken away is longer than what comes in its place.
        ASSERT_LE(parsed.target.size() * sizeof(wchar_t), bytes.size());
    }
}

std::wstring junctionName(const std::wstring& target) {
    LinkTarget name;
    writeJunctionName(target, name);
    return name;
}

TEST(ReparseData, NamesAJunctionsTargetForTheObjectManager) {
    EXPECT_EQ(junctionName(L"C:\\data"), L"\\??\\C:\\data");
    EXPECT_EQ(junctionName(L"\\\\srv\\share\\x"), L"\\??\\UNC\\srv\\share\\x");
    EXPECT_EQ(junctionName(L"\\??\\Volume{1}\\"), L"\\??\\Volume{1}\\");
    EXPECT_EQ(junctionName(L"\\?anything"), L"\\?anything");
    EXPECT_EQ(junctionName(L"\\\\?\\C:\\data"), L"\\??\\UNC\\?\\C:\\data");
    EXPECT_EQ(junctionName(L"\\data"), L"\\??\\\\data");
    EXPECT_EQ(junctionName(L""), L"\\??\\");
}

TEST(ReparseData, NamesNoTargetThatIsTooLong) {
    EXPECT_EQ(junctionName(std::wstring(2043, L'a')).size(), 2047u);
    EXPECT_EQ(junctionName(std::wstring(2044, L'a')), L"");
    EXPECT_EQ(junctionName(L"\\??\\" + std::wstring(2043, L'a')).size(), 2047u);
    EXPECT_EQ(junctionName(L"\\??\\" + std::wstring(2044, L'a')), L"");
    EXPECT_EQ(junctionName(L"\\\\" + std::wstring(2039, L'a')).size(), 2047u);
    EXPECT_EQ(junctionName(L"\\\\" + std::wstring(2040, L'a')), L"");
}

TEST(ReparseData, FillsTheLongestJunctionWithinItsBuffer) {
    LinkTarget name;
    writeJunctionName(std::wstring(2043, L'a'), name);
    ReparseBuffer buffer = {};

    const DWORD length = fillJunctionData(name, buffer);

    EXPECT_EQ(length, 2u * 2047 + 12 + 8);
    LinkTarget target;
    EXPECT_EQ(parseReparseData({buffer.bytes, length}, directory, target), 16u);
    EXPECT_EQ(target, std::wstring(2043, L'a'));
}

}  // namespace
