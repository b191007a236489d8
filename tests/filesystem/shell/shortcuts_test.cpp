// Shortcuts through the shipped DLL: with counted objects, and with the shell's own.
#include "shell_fixture.h"

namespace {

using namespace testbed;

using ShortcutTarget = ShellTest;
using RealShortcut = RealShellTest;

TEST_F(ShortcutTarget, ReadsQuietlyAndRewritesNothing) {
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"C:\\target.txt");

    EXPECT_EQ(file.loaded, L"C:\\a.lnk");
    EXPECT_EQ(file.loadMode, 0u);
    EXPECT_EQ(link.window, nullptr);
    EXPECT_EQ(link.resolveFlags, 121u);
    EXPECT_EQ(link.pathCapacity, 2048);
    EXPECT_EQ(link.findData, nullptr);
    EXPECT_EQ(link.pathFlags, 4u);
}

TEST_F(ShortcutTarget, ReleasesTheLinkThenTheFileBehindTheEndOfCom) {
    const Events expected{"initialize", "uninitialize", "release link", "release file"};

    NATIVE(getShortcutTarget)(L"C:\\a.lnk");
    EXPECT_EQ(events, expected);

    events.clear();
    file.loadResult = E_FAIL;
    NATIVE(getShortcutTarget)(L"C:\\a.lnk");
    EXPECT_EQ(events, expected);

    events.clear();
    file.loadResult = S_OK;
    link.resolveResult = E_FAIL;
    NATIVE(getShortcutTarget)(L"C:\\a.lnk");
    EXPECT_EQ(events, expected);

    events.clear();
    link.resolveResult = S_OK;
    link.pathResult = E_FAIL;
    NATIVE(getShortcutTarget)(L"C:\\a.lnk");
    EXPECT_EQ(events, expected);
}

TEST_F(ShortcutTarget, IsEmptyWhenAStepFails) {
    createResult = REGDB_E_CLASSNOTREG;
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"");
    EXPECT_EQ(events, (Events{"initialize", "uninitialize"}));
    createResult = S_OK;
    link.withdraw(IID_IPersistFile);
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"");
    link.offer(IID_IPersistFile, file);
    file.loadResult = STG_E_FILENOTFOUND;
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"");
    file.loadResult = S_OK;
    link.resolveResult = E_FAIL;
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"");
    link.resolveResult = S_OK;
    link.pathResult = E_FAIL;
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"");

    EXPECT_EQ(count("initialize"), 5);
    EXPECT_EQ(count("uninitialize"), 5);
}

TEST_F(ShortcutTarget, IsNotReadWithoutMemoryForThePath) {
    {
        const auto memory = system().answer("malloc", 0);
        EXPECT_FALSE(NATIVE(getShortcutTarget)(L"C:\\a.lnk"));
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    }
    java.failCall("GetStringChars", 1);
    EXPECT_FALSE(NATIVE(getShortcutTarget)(L"C:\\a.lnk"));
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_EQ(events, Events{});
}

TEST_F(ShortcutTarget, DropsTheLongPrefix) {
    link.target = L"\\\\?\\C:\\target.txt";
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"C:\\target.txt");
    link.target = L"\\\\?\\";
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"");
    link.target = L"\\\\.\\C:\\x";
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"\\\\.\\C:\\x");
    link.target = L"";
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"");
}

TEST_F(ShortcutTarget, EndsATargetThatTheShellDidNotEnd) {
    link.target = std::wstring(5000, L'a');

    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), std::wstring(2047, L'a'));
}

TEST_F(ShortcutTarget, TakesAThreadInTheOtherModeAsItIs) {
    initializeResult = RPC_E_CHANGED_MODE;

    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"C:\\target.txt");
    EXPECT_EQ(count("uninitialize"), 0);
}

TEST_F(ShortcutTarget, BalancesAnInitializationThatWasThereBefore) {
    initializeResult = S_FALSE;

    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"C:\\target.txt");
    EXPECT_EQ(count("uninitialize"), 1);
}

TEST_F(ShortcutTarget, IsEmptyWithoutCom) {
    initializeResult = E_OUTOFMEMORY;

    EXPECT_EQ(NATIVE(getShortcutTarget)(L"C:\\a.lnk").text(), L"");
    EXPECT_EQ(events, Events{"initialize"});
    EXPECT_EQ(system().count("CoCreateInstance"), 0u);
}

// Asking the shell what a file is

struct Answer {
    DWORD_PTR result;
    DWORD attributes;
};

Replacement answerShell(SystemCalls& calls, const Answer& answer) {
    return calls.replace<decltype(::SHGetFileInfoW)>(
        "SHGetFileInfoW",
        [answer](LPCWSTR path, DWORD attributes, SHFILEINFOW* information, UINT size, UINT flags) {
            EXPECT_STREQ(path, L"C:\\a.lnk");
            EXPECT_EQ(attributes, 0u);
            EXPECT_EQ(size, 696u);
            EXPECT_EQ(flags, 0x800u);
            information->dwAttributes = answer.attributes;
            return answer.result;
        });
}

bool isShortcut(const NativeMethod<decltype(Java_com_qarvo_kel_util_WindowsUtil_isShortcut)>& method,
                SystemCalls& calls, const Answer& answer) {
    const Replacement shell = answerShell(calls, answer);
    return method(L"C:\\a.lnk");
}

TEST_F(RealShortcut, IsWhatTheShellCallsALink) {
    const auto method = NATIVE(isShortcut);

    EXPECT_TRUE(isShortcut(method, system(), {1, SFGAO_LINK}));
    EXPECT_TRUE(isShortcut(method, system(), {1, SFGAO_LINK | SFGAO_FILESYSTEM}));
    EXPECT_FALSE(isShortcut(method, system(), {1, SFGAO_FILESYSTEM}));
    // Only a negative answer is a failure.
    EXPECT_TRUE(isShortcut(method, system(), {0, SFGAO_LINK}));
    EXPECT_FALSE(isShortcut(method, system(), {0, 0}));
    EXPECT_FALSE(isShortcut(method, system(), {static_cast<DWORD_PTR>(-1), SFGAO_LINK}));
}

TEST_F(RealShortcut, IsNotToldFromALinkWithoutMemory) {
    const auto shell = answerShell(system(), {1, SFGAO_LINK});
    // The path, and its long form for the attributes.
    for (const std::size_t k : {1, 2}) {
        const auto memory = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_FALSE(NATIVE(isShortcut)(L"C:\\a.lnk"));

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << k;
    }
    EXPECT_EQ(shell.count(), 0u);
}

TEST_F(RealShortcut, IsNeverAReparseLink) {
    const auto attributes = REPLACE(GetFileAttributesExW, [](LPCWSTR, GET_FILEEX_INFO_LEVELS, LPVOID data) {
        auto& written = *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data);
        written = {};
        written.dwFileAttributes = FILE_ATTRIBUTE_REPARSE_POINT;
        return TRUE;
    });
    const auto open = REPLACE(CreateFileW, [](LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD,
                                              HANDLE) { return Ledger::fakeHandle(); });
    DWORD tag = IO_REPARSE_TAG_SYMLINK;
    const auto control = REPLACE(DeviceIoControl, [&](HANDLE, DWORD, LPVOID, DWORD, LPVOID output, DWORD,
                                                      LPDWORD returned, LPOVERLAPPED) {
        std::memcpy(output, &tag, sizeof(tag));
        *returned = 20;
        return TRUE;
    });
    const auto shell = answerShell(system(), {1, SFGAO_LINK});

    EXPECT_FALSE(NATIVE(isShortcut)(L"C:\\a.lnk"));
    tag = IO_REPARSE_TAG_MOUNT_POINT;
    EXPECT_FALSE(NATIVE(isShortcut)(L"C:\\a.lnk"));
    EXPECT_EQ(shell.count(), 0u);

    tag = 0x9000001A;
    EXPECT_TRUE(NATIVE(isShortcut)(L"C:\\a.lnk")) << "another reparse point";
}

// A shortcut as the shell itself saves it.
void saveShortcut(const std::wstring& path, const std::wstring& target) {
    ASSERT_HRESULT_SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    IShellLinkW* link = nullptr;
    IPersistFile* file = nullptr;
    EXPECT_HRESULT_SUCCEEDED(
        CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&link)));
    EXPECT_HRESULT_SUCCEEDED(link->SetPath(target.c_str()));
    EXPECT_HRESULT_SUCCEEDED(link->QueryInterface(IID_PPV_ARGS(&file)));
    EXPECT_HRESULT_SUCCEEDED(file->Save(path.c_str(), TRUE));
    file->Release();
    link->Release();
    CoUninitialize();
}

TEST_F(RealShortcut, OfTheShellsOwnMakingIsFollowed) {
    writeFile(folder() / L"target.txt", "content");
    saveShortcut(folder() / L"a.lnk", folder() / L"target.txt");
    const std::string before = readFile(folder() / L"a.lnk");

    EXPECT_TRUE(NATIVE(isShortcut)(folder() / L"a.lnk"));
    EXPECT_EQ(NATIVE(getShortcutTarget)(folder() / L"a.lnk").text(), folder() / L"target.txt");
    EXPECT_EQ(readFile(folder() / L"a.lnk"), before);
}

TEST_F(RealShortcut, IsNoPlainFileNorAMissingOne) {
    writeFile(folder() / L"file.txt", "content");

    EXPECT_FALSE(NATIVE(isShortcut)(folder() / L"file.txt"));
    EXPECT_FALSE(NATIVE(isShortcut)(folder() / L"missing"));
    EXPECT_FALSE(NATIVE(isShortcut)(folder().path()));
}

TEST_F(RealShortcut, LeadsNowhereWhenItIsMissingOrNotOne) {
    writeFile(folder() / L"junk.lnk", "This is no shortcut, however it is named.");

    EXPECT_EQ(NATIVE(getShortcutTarget)(folder() / L"junk.lnk").text(), L"");
    EXPECT_EQ(NATIVE(getShortcutTarget)(folder() / L"missing.lnk").text(), L"");
    EXPECT_EQ(NATIVE(getShortcutTarget)(L"").text(), L"");
}

TEST_F(RealShortcut, IsFollowedOnAThreadOfTheOtherMode) {
    writeFile(folder() / L"target.txt", "content");
    saveShortcut(folder() / L"a.lnk", folder() / L"target.txt");
    ASSERT_HRESULT_SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));

    EXPECT_EQ(NATIVE(getShortcutTarget)(folder() / L"a.lnk").text(), folder() / L"target.txt");

    EXPECT_EQ(system().count("CoUninitialize"), 0u);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE) << "COM is still there";
    CoUninitialize();
    CoUninitialize();
}

}  // namespace
