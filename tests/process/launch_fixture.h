// Launches in which the system does nothing but record.
#pragma once

// windows.h comes first: the others build on it.
#include <windows.h>

#include <userenv.h>
#include <wtsapi32.h>

#include <cstring>
#include <string>
#include <vector>

#include "process_fixture.h"

namespace testbed {

inline const std::wstring userTag = L"[WindowsUtil:createProcessAsUserN]";
inline const std::wstring sessionTag = L"[WindowsUtil:createProcessAsUserSession]";
inline constexpr char pipeClass[] = "com/qarvo/kel/util/WinPipe";

class LaunchTest : public ProcessTest {
protected:
    LaunchTest() {
        replacePipes();
        replaceAccounts();
        replaceStart();
        java.removeMethod(pipeClass, "<init>", "(J)V");
        java.defineMethod(pipeClass, "<init>", "(J)V", [this](const Arguments& arguments) {
            events.emplace_back(cellContent(arguments[0]) == outputRead ? "WinPipe of stdout"
                                                                        : "WinPipe of stderr");
        });
    }

    JavaObject launchUser() {
        return NATIVE(createProcessAsUserN)(L"C:\\a.exe", L"a.exe /b", nullptr, L"C:\\w", L"DOM", L"user",
                                            L"secret");
    }

    JavaObject launchSession() {
        return NATIVE(createProcessAsUserSession)(L"C:\\a.exe", L"a.exe /b", nullptr, L"C:\\w", 5);
    }

    static HANDLE cellContent(const Value& cell) {
        return cell.number() == 0 ? nullptr : *reinterpret_cast<HANDLE*>(cell.number());
    }

    // Gives back everything that a launch handed to Java.
    void release(const JavaObject& made) {
        const Arguments& arguments = made.arguments();
        NATIVE(closeHandle)(arguments[0].number());
        NATIVE(closeHandle)(arguments[1].object().arguments()[0].number());
        NATIVE(closeHandle)(arguments[2].object().arguments()[0].number());
        NATIVE(unloadUserProfile)(arguments[3].number(), arguments[4].number());
    }

    // The functions in the order in which they were called, without those of the ordinary course of a call;
    // the ends of pipes whose inheritance was switched; and the pipes in the order in which they were made
    // for Java.
    std::vector<std::string> events;

    HANDLE outputRead = nullptr;
    HANDLE outputWrite = nullptr;
    HANDLE errorRead = nullptr;
    HANDLE errorWrite = nullptr;
    HANDLE logonToken = Ledger::fakeHandle();
    HANDLE linkedToken = Ledger::fakeHandle();  // null for an account that has none
    HANDLE primaryToken = Ledger::fakeHandle();
    HANDLE profile = Ledger::fakeHandle();
    HANDLE environment = Ledger::fakeHandle();
    HANDLE process = Ledger::fakeHandle();
    HANDLE thread = Ledger::fakeHandle();
    HANDLE duplicatedFrom = nullptr;
    HANDLE impersonated = nullptr;

    std::vector<std::wstring> logonArguments;
    std::vector<std::wstring> profileArguments;
    struct Start {
        HANDLE token = nullptr;
        std::vector<std::wstring> texts;
        BOOL inherits = FALSE;
        DWORD flags = 0;
        void* environment = nullptr;
        STARTUPINFOW startup = {};
    } started;

private:
    static std::wstring textOf(const wchar_t* text) { return text == nullptr ? L"<null>" : text; }

    void replacePipes() {
        replacements_.push_back(REPLACE(
            CreatePipe, [this](PHANDLE read, PHANDLE write, LPSECURITY_ATTRIBUTES security, DWORD size) {
                EXPECT_EQ(security->nLength, 24u);
                EXPECT_EQ(security->lpSecurityDescriptor, nullptr);
                EXPECT_EQ(security->bInheritHandle, TRUE);
                EXPECT_EQ(size, 0u);
                *read = Ledger::fakeHandle();
                *write = Ledger::fakeHandle();
                (outputRead == nullptr ? outputRead : errorRead) = *read;
                (outputWrite == nullptr ? outputWrite : errorWrite) = *write;
                events.emplace_back("CreatePipe");
                return TRUE;
            }));
        replacements_.push_back(REPLACE(SetHandleInformation, [this](HANDLE handle, DWORD mask, DWORD flags) {
            EXPECT_EQ(mask, 1u);
            EXPECT_LE(flags, 1u);
            const char* end = handle == outputRead    ? "stdout read"
                              : handle == outputWrite ? "stdout write"
                              : handle == errorRead   ? "stderr read"
                              : handle == errorWrite  ? "stderr write"
                                                      : "unknown";
            events.push_back(std::string(end) + (flags == 0 ? " off" : " on"));
            SetLastError(ERROR_GEN_FAILURE);
            return TRUE;
        }));
    }

    void replaceAccounts() {
        replacements_.push_back(REPLACE(LogonUserW, [this](LPCWSTR user, LPCWSTR domain, LPCWSTR password,
                                                           DWORD type, DWORD provider, PHANDLE token) {
            logonArguments = {textOf(user), textOf(domain), textOf(password), std::to_wstring(type),
                              std::to_wstring(provider)};
            *token = logonToken;
            events.emplace_back("LogonUserW");
            return TRUE;
        }));
        replacements_.push_back(REPLACE(WTSQueryUserToken, [this](ULONG session, PHANDLE token) {
            EXPECT_EQ(session, 5u);
            *token = logonToken;
            events.emplace_back("WTSQueryUserToken");
            return TRUE;
        }));
        replacements_.push_back(
            REPLACE(GetUserProfileDirectoryW, [this](HANDLE token, LPWSTR buffer, LPDWORD size) {
                EXPECT_EQ(token, logonToken);
                EXPECT_EQ(*size, 512u);
                std::wmemset(buffer, L'?', 2048);
                wcscpy_s(buffer, 2048, L"C:\\users\\user");
                events.emplace_back("GetUserProfileDirectoryW");
                return TRUE;
            }));
        replacements_.push_back(
            REPLACE(LookupPrivilegeValueA, [this](LPCSTR machine, LPCSTR name, PLUID luid) {
                events.emplace_back(name);
                return REAL(LookupPrivilegeValueA)(machine, name, luid);
            }));
        replacements_.push_back(REPLACE(LoadUserProfileW, [this](HANDLE token, LPPROFILEINFOW information) {
            EXPECT_EQ(token, logonToken);
            EXPECT_EQ(information->dwSize, 56u);
            EXPECT_EQ(information->dwFlags, 1u);
            EXPECT_EQ(information->lpDefaultPath, nullptr);
            EXPECT_EQ(information->lpServerName, nullptr);
            EXPECT_EQ(information->lpPolicyPath, nullptr);
            EXPECT_EQ(information->hProfile, nullptr);
            profileArguments = {textOf(information->lpUserName), textOf(information->lpProfilePath)};
            information->hProfile = profile;
            events.emplace_back("LoadUserProfileW");
            return TRUE;
        }));
        replacements_.push_back(REPLACE(UnloadUserProfile, [](HANDLE, HANDLE) { return TRUE; }));
        replacements_.push_back(
            REPLACE(GetTokenInformation,
                    [this](HANDLE token, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD size, PDWORD) {
                        EXPECT_EQ(token, logonToken);
                        EXPECT_EQ(kind, 19);
                        EXPECT_EQ(size, 8u);
                        events.emplace_back("GetTokenInformation");
                        if (linkedToken == nullptr) {
                            SetLastError(ERROR_NO_SUCH_LOGON_SESSION);
                            return FALSE;
                        }
                        static_cast<TOKEN_LINKED_TOKEN*>(buffer)->LinkedToken = linkedToken;
                        if (linkedToken != logonToken) {
                            ledger().take(Kind::handle, reinterpret_cast<std::uint64_t>(linkedToken),
                                          "GetTokenInformation", "the test");
                        }
                        return TRUE;
                    }));
        replacements_.push_back(REPLACE(
            DuplicateTokenEx, [this](HANDLE token, DWORD access, LPSECURITY_ATTRIBUTES security,
                                     SECURITY_IMPERSONATION_LEVEL level, TOKEN_TYPE type, PHANDLE copy) {
                EXPECT_EQ(access, 0x2000000u);
                EXPECT_EQ(security, nullptr);
                EXPECT_EQ(level, 3);
                EXPECT_EQ(type, 1);
                duplicatedFrom = token;
                *copy = primaryToken;
                events.emplace_back("DuplicateTokenEx");
                return TRUE;
            }));
    }

    void replaceStart() {
        replacements_.push_back(
            REPLACE(CreateEnvironmentBlock, [this](LPVOID* block, HANDLE token, WINBOOL inherit) {
                EXPECT_EQ(token, logonToken);
                EXPECT_FALSE(inherit);
                *block = environment;
                events.emplace_back("CreateEnvironmentBlock");
                return TRUE;
            }));
        replacements_.push_back(REPLACE(ImpersonateLoggedOnUser, [this](HANDLE token) {
            impersonated = token;
            events.emplace_back("ImpersonateLoggedOnUser");
            return TRUE;
        }));
        replacements_.push_back(REPLACE(RevertToSelf, [this] {
            events.emplace_back("RevertToSelf");
            SetLastError(ERROR_GEN_FAILURE);
            return TRUE;
        }));
        replacements_.push_back(REPLACE(
            CreateProcessAsUserW,
            [this](HANDLE token, LPCWSTR application, LPWSTR commandLine, LPSECURITY_ATTRIBUTES forProcess,
                   LPSECURITY_ATTRIBUTES forThread, BOOL inherits, DWORD flags, LPVOID block, LPCWSTR folder,
                   LPSTARTUPINFOW startup, LPPROCESS_INFORMATION information) {
                EXPECT_EQ(forProcess, nullptr);
                EXPECT_EQ(forThread, nullptr);
                started = {token,    {textOf(application), textOf(commandLine), textOf(folder)},
                           inherits, flags,
                           block,    *startup};
                *information = {process, thread, 77, 78};
                events.emplace_back("CreateProcessAsUserW");
                return TRUE;
            }));
    }

    std::vector<Replacement> replacements_;
};

}  // namespace testbed
