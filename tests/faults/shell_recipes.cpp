// Shortcuts, libraries and their icons.
#include "../filesystem/shell/shell_fixture.h"
#include "reasons.h"
#include "recipe.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;

RECIPE(WinUtilTest, isShortcut, thatIsOne) {
    tolerates({"CreateFileW", "GetFileAttributesExW", "GetFileAttributesW"}, nextDecides);
    const auto shell =
        REPLACE(SHGetFileInfoW, [](LPCWSTR, DWORD, SHFILEINFOW* info, UINT, UINT) -> DWORD_PTR {
            info->dwAttributes = SFGAO_LINK;
            return 1;
        });
    examine([&] { return NATIVE(isShortcut)(L"C:\\a.lnk"); });
}

RECIPE(ShellTest, getShortcutTarget, ofAShortcut) {
    tolerates({"CoInitializeEx with 0x80010106"}, anyModel);
    examine([&] { return NATIVE(getShortcutTarget)(L"C:\\a.lnk"); });
}

RECIPE(WinUtilTest, isLibrary, byItsName) {
    examine([&] { return NATIVE(isLibrary)(L"C:\\a.library-ms"); });
}

class FoldersTest : public ShellTest {
protected:
    FoldersTest() { enumeration.items = {&first, &second}; }

    FakeShellItem first{ledger(), events, "first", L"C:\\one"};
    FakeShellItem second{ledger(), events, "second", L"D:\\two"};
};

RECIPE(FoldersTest, getLibraryFolders, ofTwoFolders) {
    const JavaObject folders1 = java.list();
    examine([&] { NATIVE(getLibraryFolders)(L"C:\\a.library-ms", folders1); });
    noteElements(folders1);
}

class IconTest : public ShellTest {
protected:
    IconTest() { shellLibrary.icon = L"C:\\icons.dll,-7"; }

    Replacement extraction_ =
        REPLACE(ExtractIconExW, [](LPCWSTR, int, HICON* large, HICON* small, UINT count) {
            return REAL(ExtractIconExW)(L"shell32.dll", 3, large, small, count);
        });
};

RECIPE(IconTest, getLibraryIcon, ofALibrary) {
    tolerates({"CoInitializeEx with 0x80010106"}, anyModel);
    tolerates({"SelectObject 3", "SelectObject 4"}, nothingLeftToDo);
    tolerates({"IShellLibrary.GetIcon"}, standsIn);
    examine([&] { return NATIVE(getLibraryIcon)(L"C:\\a.library-ms"); });
}

RECIPE(WinUtilTest, searchPathFromLibrary, ofASystemFile) {
    examine([&] { return NATIVE(searchPathFromLibrary)(L"kernel32.dll"); });
}

RECIPE(WinUtilTest, getSystemExcludeFolders, ofThisSystem) {
    const JavaObject folders1 = java.list();
    leavesOut({"SHGetFolderPathW", "GetVersionExA"}, leftOut);
    leavesOut({"GetMethodID"}, noMethod);
    examine([&] { NATIVE(getSystemExcludeFolders)(folders1); });
    noteElements(folders1);
}

}  // namespace
