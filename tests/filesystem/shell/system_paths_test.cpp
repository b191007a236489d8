// The search path and the system's own folders, through the shipped DLL.
#include "shell_fixture.h"

namespace {

using namespace testbed;

using SystemSearch = WinUtilTest;
using ExcludeFolders = WinUtilTest;
using Paths = std::vector<std::wstring>;

TEST_F(SystemSearch, FindsASystemFile) {
    wchar_t systemFolder[MAX_PATH];
    GetSystemDirectoryW(systemFolder, MAX_PATH);

    const std::wstring found = NATIVE(searchPathFromLibrary)(L"kernel32.dll").text();

    EXPECT_EQ(_wcsicmp(found.c_str(), (std::wstring(systemFolder) + L"\\kernel32.dll").c_str()), 0)
        << toUtf8(found);
}

TEST_F(SystemSearch, IsEmptyForWhatIsNotThere) {
    EXPECT_EQ(NATIVE(searchPathFromLibrary)(L"no such file.dll").text(), L"");
    EXPECT_EQ(NATIVE(searchPathFromLibrary)(L"").text(), L"");
}

TEST_F(SystemSearch, AsksTheSystemInItsOwnOrder) {
    const auto search = REPLACE(SearchPathW,
                                [](LPCWSTR path, LPCWSTR name, LPCWSTR extension, DWORD capacity,
                                   LPWSTR buffer, LPWSTR* filePart) -> DWORD {
                                    EXPECT_EQ(path, nullptr);
                                    EXPECT_STREQ(name, L"name");
                                    EXPECT_EQ(extension, nullptr);
                                    EXPECT_EQ(capacity, 256u);
                                    EXPECT_EQ(filePart, nullptr);
                                    wcscpy(buffer, L"C:\\found");
                                    return 8;
                                });

    EXPECT_EQ(NATIVE(searchPathFromLibrary)(L"name").text(), L"C:\\found");
}

TEST_F(SystemSearch, GivesAPathThatFitsAndNeverACutOne) {
    DWORD needed = 255;
    const auto search =
        REPLACE(SearchPathW, [&](LPCWSTR, LPCWSTR, LPCWSTR, DWORD, LPWSTR buffer, LPWSTR*) -> DWORD {
            std::fill_n(buffer, 256, L'a');
            buffer[255] = needed < 256 ? L'\0' : L'a';
            return needed;
        });

    EXPECT_EQ(NATIVE(searchPathFromLibrary)(L"name").text(), std::wstring(255, L'a'));
    needed = 300;
    EXPECT_EQ(NATIVE(searchPathFromLibrary)(L"name").text(), L"");
}

TEST_F(SystemSearch, FindsNothingWithoutMemoryForTheName) {
    {
        const auto memory = system().answer("malloc", 0);
        EXPECT_FALSE(NATIVE(searchPathFromLibrary)(L"kernel32.dll"));
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    }
    java.failCall("GetStringChars", 1);
    EXPECT_FALSE(NATIVE(searchPathFromLibrary)(L"kernel32.dll"));
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
}

TEST_F(SystemSearch, IsEmptyOnASystemWithoutTheSearch) {
    FreshLibrary old(folder(), L"old.dll");
    old.ledger().allowUnknown("FreeLibrary");  // of a module that was only looked up
    const auto hidden = old.system().hide({"SearchPathW"});
    ASSERT_TRUE(old.load());
    using Function = decltype(Java_com_qarvo_kel_util_WindowsUtil_searchPathFromLibrary);
    const char* name = "Java_com_qarvo_kel_util_WindowsUtil_searchPathFromLibrary";
    const NativeMethod<Function> search(java, name, old.exported<Function>(name));

    EXPECT_EQ(search(L"kernel32.dll").text(), L"");

    old.unload();
}

Paths textsOf(const JavaObject& list) {
    Paths texts;
    for (const JavaObject& element : FakeJava::listElements(list)) {
        texts.push_back(element.text());
    }
    return texts;
}

std::wstring systemFolder(int id) {
    wchar_t path[MAX_PATH] = {};
    EXPECT_EQ(SHGetFolderPathW(nullptr, id, nullptr, 0, path), S_OK);
    return path;
}

TEST_F(ExcludeFolders, AreTheProgramFoldersAndWindows) {
    const JavaObject list = java.list();

    NATIVE(getSystemExcludeFolders)(list);

    EXPECT_EQ(textsOf(list), (Paths{systemFolder(42), systemFolder(38), systemFolder(36)}));
}

TEST_F(ExcludeFolders, LeaveOutWhatTheSystemDoesNotHave) {
    const auto folders =
        REPLACE(SHGetFolderPathW, [](HWND window, int id, HANDLE token, DWORD flags, LPWSTR path) {
            EXPECT_EQ(window, nullptr);
            EXPECT_EQ(token, nullptr);
            EXPECT_EQ(flags, 0u);
            if (id == 38) {
                return E_INVALIDARG;
            }
            wcscpy(path, std::to_wstring(id).c_str());
            return id == 36 ? S_FALSE : S_OK;  // S_FALSE: a known folder that does not exist
        });
    const JavaObject list = java.list();

    NATIVE(getSystemExcludeFolders)(list);

    EXPECT_EQ(textsOf(list), Paths{L"42"});
}

TEST_F(ExcludeFolders, AreNoneOnAnOlderSystem) {
    DWORD major = 4;
    BOOL answer = TRUE;
    const auto version = REPLACE(GetVersionExA, [&](LPOSVERSIONINFOA information) {
        EXPECT_EQ(information->dwOSVersionInfoSize, 148u);
        information->dwMajorVersion = major;
        return answer;
    });
    const JavaObject list = java.list();

    NATIVE(getSystemExcludeFolders)(list);
    answer = FALSE;
    major = 5;
    NATIVE(getSystemExcludeFolders)(list);
    EXPECT_EQ(textsOf(list), Paths{});

    answer = TRUE;
    NATIVE(getSystemExcludeFolders)(list);
    EXPECT_EQ(textsOf(list).size(), 3u);
}

TEST_F(ExcludeFolders, ReachNoCollectionWithoutAdd) {
    NATIVE(getSystemExcludeFolders)(java.object("java/lang/Object"));

    EXPECT_FALSE(java.isPending());
    EXPECT_EQ(system().count("SHGetFolderPathW"), 0u);
}

TEST_F(ExcludeFolders, EndWithTheExceptionOfTheCollection) {
    int added = 0;
    const JavaObject collection =
        java.collector("add", "(Ljava/lang/Object;)Z", [&](const Arguments&) -> Value {
            ++added;
            throw JavaThrow{java.exception("java/lang/IllegalStateException", L"full")};
        });

    NATIVE(getSystemExcludeFolders)(collection);

    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/IllegalStateException", L"full"}));
    EXPECT_EQ(added, 1);
}

}  // namespace
