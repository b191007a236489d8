// Whether the system has a library and a function in it.
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

// Every module is given back: the ledger sees to it.
class SupportedTest : public WinUtilTest {};

TEST_F(SupportedTest, IsAFunctionThatTheLibraryExports) {
    EXPECT_TRUE(NATIVE(isMethodSupported)(L"kernel32.dll", L"CreateFileW"));
    EXPECT_TRUE(NATIVE(isMethodSupported)(L"kernel32", L"CreateFileW"));
    EXPECT_FALSE(NATIVE(isMethodSupported)(L"kernel32.dll", L"createfilew"));
    EXPECT_FALSE(NATIVE(isMethodSupported)(L"kernel32.dll", L"NoSuchFunction"));

    EXPECT_EQ(system().count("FreeLibrary"), 4u);
}

TEST_F(SupportedTest, IsALibraryWithoutAFunctionToLookFor) {
    EXPECT_TRUE(NATIVE(isMethodSupported)(L"advapi32.dll", L""));
    EXPECT_TRUE(NATIVE(isMethodSupported)(L"advapi32.dll", nullptr));

    EXPECT_EQ(system().count("GetProcAddress"), 0u);
}

TEST_F(SupportedTest, IsNothingWithoutALibrary) {
    for (const wchar_t* function : {L"CreateFileW", L""}) {
        EXPECT_FALSE(NATIVE(isMethodSupported)(L"", function));
        EXPECT_FALSE(NATIVE(isMethodSupported)(nullptr, function));
    }
    EXPECT_FALSE(NATIVE(isMethodSupported)(nullptr, nullptr));
    EXPECT_EQ(system().count("LoadLibraryA"), 0u);

    EXPECT_FALSE(NATIVE(isMethodSupported)(L"no such library.dll", L""));
    EXPECT_FALSE(NATIVE(isMethodSupported)(L"no such library.dll", L"CreateFileW"));
    EXPECT_EQ(system().count("LoadLibraryA"), 2u);
    EXPECT_EQ(system().count("FreeLibrary"), 0u);
}

TEST_F(SupportedTest, PassesTheBytesOfTheNamesAsTheyAre) {
    std::vector<std::string> names;
    const auto load = REPLACE(LoadLibraryA, [&](LPCSTR name) {
        names.emplace_back(name);
        return static_cast<HMODULE>(Ledger::fakeHandle());
    });
    const auto find = REPLACE(GetProcAddress, [&](HMODULE, LPCSTR name) -> FARPROC {
        names.emplace_back(name);
        return nullptr;
    });

    EXPECT_FALSE(NATIVE(isMethodSupported)(L"\x00E4.dll", L"f\x20AC"));

    EXPECT_THAT(names, ElementsAre("\xC3\xA4.dll", "f\xE2\x82\xAC"));
}

TEST_F(SupportedTest, LeavesTheErrorOfAJvmWithoutMemory) {
    for (std::size_t k = 1; k <= 2; ++k) {
        java.failCall("GetStringUTFChars", k);

        EXPECT_FALSE(NATIVE(isMethodSupported)(L"kernel32.dll", L"CreateFileW")) << k;

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    }
    EXPECT_EQ(system().count("LoadLibraryA"), 0u);
}

}  // namespace
