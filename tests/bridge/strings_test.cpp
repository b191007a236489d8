// Texts on their way from Java into calls of the system and back.
#include <functional>

#include "winutil_fixture.h"

namespace {

using namespace testbed;

struct Text {
    const char* name;
    std::wstring text;
};

class RoundTripTest : public WinUtilTest, public ::testing::WithParamInterface<Text> {};

// Terminated where the JVM put the characters.
TEST_P(RoundTripTest, KeepsEveryUnitInPlace) {
    std::wstring passed = L"(no call)";
    const auto expand = REPLACE(ExpandEnvironmentStringsW, [&](LPCWSTR text, LPWSTR buffer, DWORD capacity) {
        passed = text;
        EXPECT_LT(passed.size(), capacity);
        passed.copy(buffer, passed.size());
        return static_cast<DWORD>(passed.size() + 1);
    });

    EXPECT_EQ(NATIVE(CovertEnvPathToFilePath)(GetParam().text).text(), GetParam().text);

    EXPECT_EQ(passed, GetParam().text);
}

// Copied.
TEST_P(RoundTripTest, KeepsEveryUnitOfACopy) {
    std::wstring passed = L"(no call)";
    const auto query = REPLACE(GetFileAttributesExW, [&](LPCWSTR path, GET_FILEEX_INFO_LEVELS, LPVOID data) {
        passed = path;
        *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data) = {};
        return TRUE;
    });

    const JavaObject record = NATIVE(WinFile)(GetParam().text, JNI_FALSE, JNI_FALSE);

    EXPECT_EQ(passed, GetParam().text);
    EXPECT_EQ(record.arguments().at(0).text(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Texts, RoundTripTest,
                         ::testing::Values(Text{"Ascii", L"C:\\a b\\c.txt"}, Text{"Empty", L""},
                                           Text{"Accents", L"\x00E4\x0301\x4E2D"},
                                           Text{"SurrogatePair", L"\xD83D\xDE00\xD840\xDC0B"},
                                           Text{"LoneHighSurrogate", L"a\xD83D"},
                                           Text{"LoneLowSurrogate", L"\xDE00z"},
                                           Text{"SwappedSurrogates", L"\xDE00\xD83D"},
                                           Text{"LastUnits", L"\x0001\xFFFE\xFFFF"},
                                           Text{"Long", std::wstring(4095, L'x')}),
                         [](const auto& text) { return text.param.name; });

class StringsTest : public WinUtilTest {};

TEST_F(StringsTest, EndForTheSystemAtTheirFirstZero) {
    std::vector<std::wstring> passed;
    const auto query = REPLACE(GetFileAttributesExW, [&](LPCWSTR path, GET_FILEEX_INFO_LEVELS, LPVOID) {
        passed.emplace_back(path);
        return FALSE;
    });

    NATIVE(exists)(std::wstring(L"C:\\a\0b", 6));

    EXPECT_THAT(passed, ::testing::ElementsAre(L"C:\\a", L"\\\\?\\C:\\a"));
}

TEST_F(StringsTest, StayAsTheyWereInJava) {
    const JavaObject text = java.string(L"C:/a/b");

    NATIVE(exists)(text);
    NATIVE(getLongPathName)(text);
    NATIVE(CovertEnvPathToFilePath)(text);

    EXPECT_EQ(text.text(), L"C:/a/b");
}

// The methods of paths without memory for their strings; 0 stands for the neutral value of each.
class WithoutMemoryTest : public WinUtilTest {
protected:
    using Method = std::function<void()>;

    const std::vector<std::pair<const char*, Method>> methods = {
        {"exists", [this] { NATIVE(exists)(path); }},
        {"isDir", [this] { NATIVE(isDir)(path); }},
        {"lastModified", [this] { NATIVE(lastModified)(path); }},
        {"setLastModified", [this] { NATIVE(setLastModified)(path, 1); }},
        {"delete", [this] { NATIVE(delete)(path); }},
        {"mkdir", [this] { NATIVE(mkdir)(path); }},
        {"renameTo", [this] { NATIVE(renameTo)(path, path); }},
        {"setFileAttr", [this] { NATIVE(setFileAttr)(path, FILE_ATTRIBUTE_DIRECTORY); }},
        {"getLinkType", [this] { NATIVE(getLinkType)(path); }},
        {"getLinkTarget", [this] { NATIVE(getLinkTarget)(path); }},
        {"isLink", [this] { NATIVE(isLink)(path); }},
        {"isDirectoryJunction", [this] { NATIVE(isDirectoryJunction)(path); }},
        {"isShortcut", [this] { NATIVE(isShortcut)(path); }},
        {"isLibrary", [this] { NATIVE(isLibrary)(path + L"x.library-ms"); }},
        {"getLibraryFolders", [this] { NATIVE(getLibraryFolders)(path, java.list()); }},
        {"getLibraryIcon", [this] { NATIVE(getLibraryIcon)(path); }},
    };
    const std::wstring path = L"C:\\";

    static void expectNothingAsked() {
        for (const char* function :
             {"GetFileAttributesExW", "GetFileAttributesW", "SetFileAttributesW", "CreateFileW",
              "DeleteFileW", "CreateDirectoryW", "MoveFileW", "SHGetFileInfoW", "CoInitializeEx"}) {
            EXPECT_EQ(system().count(function), 0u) << function;
        }
    }
};

TEST_F(WithoutMemoryTest, EachMethodRaisesAndAsksTheSystemNothing) {
    for (const auto& [name, method] : methods) {
        {
            const auto fail = system().answer("malloc", 0);
            method();
        }
        EXPECT_NE(java.takeException(), nothingThrown()) << name;

        java.failCall("GetStringChars");
        method();
        EXPECT_NE(java.takeException(), nothingThrown()) << name;
    }
    expectNothingAsked();
}

TEST_F(WithoutMemoryTest, RenamingNeedsBothNames) {
    const auto fail = system().failCall("malloc", 2, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_FALSE(NATIVE(renameTo)(path, path));
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");

    java.failCall("GetStringChars", 2);
    EXPECT_FALSE(NATIVE(renameTo)(path, path));
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");

    EXPECT_EQ(system().count("MoveFileW"), 0u);
}

}  // namespace
