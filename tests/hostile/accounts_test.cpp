// Tokens, account databases, directories, networks and other processes that say anything.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <lm.h>
#include <sddl.h>

#include "answers/accounts.h"
#include "answers/network.h"
#include "answers/pipes.h"
#include "answers/processes.h"
#include "answers/security.h"
#include "hostile_test.h"

namespace testbed {

namespace {

using HostileAccounts = HostileTest<WinUtilTest>;

TEST_F(HostileAccounts, HaveSidsOfAnyForm) {
    forEachInput("sid", [&](hostile::Input& input) {
        hostile::Accounts accounts(input);
        const auto token = REPLACE(
            GetTokenInformation, [&](HANDLE, TOKEN_INFORMATION_CLASS, LPVOID buffer, DWORD size,
                                     PDWORD needed) { return accounts.giveTokenUser(buffer, size, needed); });
        const auto account = REPLACE(
            LookupAccountNameW,
            [&](LPCWSTR, LPCWSTR, PSID sid, LPDWORD size, auto...) { return accounts.giveSid(sid, size); });
        note(input.value<BYTE>() % 2 == 0 ? NATIVE(getSID)() : NATIVE(getSIDForUser)(L"domain", L"user"));
    });
}

TEST_F(HostileAccounts, AreInGroupsOfAnyName) {
    forEachInput("user_groups", [&](hostile::Input& input) {
        const auto give = [&](LPBYTE* buffer, LPDWORD count) {
            constexpr NET_API_STATUS results[] = {NERR_Success, RPC_S_SERVER_UNAVAILABLE, ERROR_MORE_DATA,
                                                  NERR_UserNotFound};
            const NET_API_STATUS result = hostile::chooseCode(input, results);
            if (result == NERR_Success || result == ERROR_MORE_DATA) {
                hostile::GroupArray groups(input);
                *buffer = static_cast<LPBYTE>(memory().give(groups.size()));
                groups.place(*buffer);
                *count = groups.count();
                if (result == ERROR_MORE_DATA) {
                    // The ledger takes it for a failure that hands out nothing.
                    ledger().take(Kind::networkBuffer, reinterpret_cast<std::uint64_t>(*buffer),
                                  "NetUserGetGroups", "the test");
                }
            }
            return result;
        };
        const auto global =
            REPLACE(NetUserGetGroups, [&](LPCWSTR, LPCWSTR, DWORD, LPBYTE* buffer, DWORD, LPDWORD count,
                                          LPDWORD) { return give(buffer, count); });
        const auto local =
            REPLACE(NetUserGetLocalGroups, [&](LPCWSTR, LPCWSTR, DWORD, DWORD, LPBYTE* buffer, DWORD,
                                               LPDWORD count, LPDWORD) { return give(buffer, count); });
        NATIVE(getDomainUserGroups)(L"server", L"user", collector());
    });
}

using HostileFiles = HostileTest<WinUtilTest>;

TEST_F(HostileFiles, HaveDescriptorsOfAnySize) {
    forEachInput("security_descriptor", [&](hostile::Input& input) {
        hostile::Descriptors descriptors(input);
        const auto reading =
            REPLACE(GetFileSecurityW, [&](LPCWSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR out, DWORD size,
                                          LPDWORD needed) { return descriptors.give(out, size, needed); });
        const auto byName = system().answer("GetNamedSecurityInfoW", ERROR_ACCESS_DENIED);
        const auto converting =
            REPLACE(ConvertSecurityDescriptorToStringSecurityDescriptorW,
                    [&](PSECURITY_DESCRIPTOR, DWORD, SECURITY_INFORMATION, LPWSTR* text, PULONG length) {
                        *length = descriptors.textLength();
                        *text = static_cast<LPWSTR>(memory().give(*length * sizeof(wchar_t)));
                        descriptors.giveText(*text, *length);
                        return TRUE;
                    });
        note(NATIVE(getWinSecurityDescriptor)(L"C:\\x", 7, nullptr));
    });
}

using HostileNetwork = HostileTest<WinUtilTest>;

TEST_F(HostileNetwork, HasResourcesOfAnyName) {
    const auto opening =
        REPLACE(WNetOpenEnumW, [](DWORD, DWORD, DWORD, LPNETRESOURCEW, LPHANDLE enumeration) {
            *enumeration = Ledger::fakeHandle();
            return DWORD{NO_ERROR};
        });
    forEachInput("net_resources", [&](hostile::Input& input) {
        hostile::Network network(input);
        const auto entries =
            REPLACE(WNetEnumResourceW, [&](HANDLE, LPDWORD count, LPVOID buffer, LPDWORD size) {
                return network.giveEntries(count, buffer, size);
            });
        const auto name = REPLACE(WNetGetUniversalNameW, [&](LPCWSTR, DWORD, LPVOID buffer, LPDWORD size) {
            return network.giveUniversalName(buffer, size);
        });
        if (input.value<BYTE>() % 2 == 0) {
            note(NATIVE(getNetUsed)(collector()));
        } else {
            note(NATIVE(getUNC)(L"X:\\"));
        }
    });
}

using HostileProcesses = HostileTest<WinUtilTest>;

TEST_F(HostileProcesses, HaveMemoryOfAnyContent) {
    const auto opening = REPLACE(OpenProcess, [](auto...) { return Ledger::fakeHandle(); });
    const auto printing =
        REPLACE(fwrite, [](const void*, std::size_t, std::size_t count, FILE*) { return count; });
    forEachInput("command_line", [&](hostile::Input& input) {
        hostile::Processes processes(input);
        const auto query = system().replace<NTSTATUS(HANDLE, int, PVOID, ULONG, PULONG)>(
            "NtQueryInformationProcess", [&](HANDLE, int, PVOID information, ULONG size, PULONG) {
                return processes.query(information, size);
            });
        const auto reading =
            REPLACE(ReadProcessMemory, [&](auto... arguments) { return processes.read(arguments...); });
        note(NATIVE(getProcessCommandLineArguments)(4, true));
    });
}

using HostilePipes = HostileTest<WinUtilTest>;

TEST_F(HostilePipes, BringMessagesOfAnyForm) {
    const auto making = REPLACE(CreateNamedPipeW, [](auto...) { return Ledger::fakeHandle(); });
    const auto opening = REPLACE(CreateFileW, [](auto...) { return Ledger::fakeHandle(); });
    const auto connecting = system().answer("ConnectNamedPipe", TRUE);
    const auto disconnecting = system().answer("DisconnectNamedPipe", TRUE);
    const auto flushing = system().answer("FlushFileBuffers", TRUE);
    const auto mode = system().answer("SetNamedPipeHandleState", TRUE);
    const auto writing = REPLACE(WriteFile, [](HANDLE, LPCVOID, DWORD size, LPDWORD written, LPOVERLAPPED) {
        *written = size;
        return TRUE;
    });
    forEachInput("pipe_message", [&](hostile::Input& input) {
        hostile::Pipe pipe(input);
        const auto reading = REPLACE(ReadFile, [&](HANDLE, LPVOID buffer, DWORD size, LPDWORD count,
                                                   LPOVERLAPPED) { return pipe.read(buffer, size, count); });
        if (input.value<BYTE>() % 2 == 0) {
            note(NATIVE(connectPipe)(L"name"));
        } else {
            note(NATIVE(sendPipe)(L"name", L"text"));
        }
    });
}

}  // namespace

}  // namespace testbed
