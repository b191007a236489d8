// Network drives, pipes, the event log, the environment and facts about the system.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <wininet.h>
#include <winnetwk.h>

#include <cstring>

#include "../host/pipe_fixture.h"
#include "../network/listing_fixture.h"
#include "reasons.h"
#include "recipe.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;

class ConnectionTest : public WinUtilTest {
protected:
    Replacement cancel_ = system().answer("WNetCancelConnectionW", NO_ERROR);
    Replacement use_ = system().answer("WNetUseConnectionW", NO_ERROR);
};

RECIPE(ConnectionTest, netUse, ofAShare) {
    tolerates({"WNetCancelConnectionW"}, nothingLeftToDo);
    examine([&] { NATIVE(netUse)(L"user", L"secret", L"\\\\server\\share"); });
}

RECIPE(ConnectionTest, removeNetUsed, ofAShare) {
    examine([&] { NATIVE(removeNetUsed)(L"\\\\server\\share"); });
}

class NetworkTest : public NetworkListing {
protected:
    NetworkTest() {
        NETRESOURCEW inner = container(L"\\\\server");
        network.give(L"", {{.entries = {share(L"\\\\a\\b"), inner}}});
        network.give(L"\\\\server", {{.entries = {share(L"\\\\server\\c")}}});
    }
};

RECIPE(NetworkTest, getNetUsed, ofAContainerWithinAnother) {
    leavesOut({"WNetOpenEnumW", "GlobalAlloc"}, leftOut);
    leavesOut({"GetMethodID"}, noMethod);
    tolerates({"WNetEnumResourceW"}, "any failure but the end is asked again");
    asksForEver("WNetEnumResourceW", "the caller relies on a listing that ends where the system has no more");
    examine([&] { return list(); });
    for (const std::wstring& name : remoteNames()) {
        note(name);
    }
}

RECIPE(WinUtilTest, getUserByNetUsedPath, ofAShare) {
    const auto user = REPLACE(WNetGetUserW, [](LPCWSTR, LPWSTR name, LPDWORD) -> DWORD {
        wcscpy(name, L"alice");
        return NO_ERROR;
    });
    examine([&] { return NATIVE(getUserByNetUsedPath)(L"U:"); });
}

// A drive whose name in the network fits into the buffer of the first look, or does not.
class UniversalNameTest : public WinUtilTest {
protected:
    Replacement known_ =
        REPLACE(WNetGetUniversalNameW, [this](LPCWSTR, DWORD, LPVOID buffer, LPDWORD size) -> DWORD {
            const std::size_t bytes = (name.size() + 1) * sizeof(wchar_t);
            if (*size < sizeof(REMOTE_NAME_INFOW) + bytes) {
                *size = static_cast<DWORD>(sizeof(REMOTE_NAME_INFOW) + bytes);
                return ERROR_MORE_DATA;
            }
            auto* information = static_cast<REMOTE_NAME_INFOW*>(buffer);
            information->lpUniversalName = reinterpret_cast<wchar_t*>(information + 1);
            std::memcpy(information->lpUniversalName, name.c_str(), bytes);
            return NO_ERROR;
        });
    std::wstring name = L"\\\\server\\share\\x";
};

RECIPE(UniversalNameTest, getUNC, ofADrive) {
    mayAnswer(L"\"U:\\x\"");
    examine([&] { return NATIVE(getUNC)(L"U:\\x"); });
}

RECIPE(UniversalNameTest, getUNC, ofALongName) {
    name += std::wstring(3000, L'y');
    mayAnswer(L"\"U:\\x\"");
    examine([&] { return NATIVE(getUNC)(L"U:\\x"); });
}

class ConversationTest : public PipeTest {
protected:
    ScriptedPipe pipe{system()};
};

constexpr char servesAgain[] =
    "a conversation that breaks ends with what came before, and the caller serves again";

RECIPE(ConversationTest, connectPipe, withTwoMessages) {
    pipe.reads = {{.bytes = "one"}, {.bytes = "two"}};
    tolerates({"ReadFile", "WriteFile"}, servesAgain);
    answersInstead("ReadFile", L"\"one\"", servesAgain);
    answersInstead("WriteFile", L"\"one\"", servesAgain);
    comesWhole("ReadFile", "a message that does not fit comes in parts of its own");
    tolerates({"FlushFileBuffers", "DisconnectNamedPipe"}, nothingLeftToDo);
    examine([&] { return NATIVE(connectPipe)(L"\\\\.\\pipe\\x"); });
}

RECIPE(ConversationTest, sendPipe, thatIsRefused) {
    pipe.reads = {{.bytes = asMessage(L"NO")}};
    comesWhole("ReadFile", "a message that does not fit comes in parts of its own");
    examine([&] { return NATIVE(sendPipe)(L"\\\\.\\pipe\\x", L"text"); });
}

RECIPE(ConversationTest, sendPipe, toABusyPipe) {
    pipe.openings = {ERROR_PIPE_BUSY, ERROR_PIPE_BUSY};
    pipe.reads = {{.bytes = asMessage(L"NO"), .code = ERROR_MORE_DATA}, {.bytes = asMessage(L"NO")}};
    comesWhole("ReadFile", "a message that does not fit comes in parts of its own");
    tolerates({"ReadFile 2"}, listEnds);
    waits("WaitNamedPipeW", "twenty seconds for a pipe that is busy");
    examine([&] { return NATIVE(sendPipe)(L"\\\\.\\pipe\\x", L"text"); });
}

RECIPE(PipeTest, sendPipe, toAMissingPipe) {
    examine([&] { return NATIVE(sendPipe)(name, L"text"); });
}

class EventTest : public WinUtilTest {
protected:
    Replacement source_ =
        REPLACE(RegisterEventSourceW, [](LPCWSTR, LPCWSTR) -> HANDLE { return Ledger::fakeHandle(); });
    Replacement report_ = system().answer("ReportEventW", TRUE);
    Replacement print_ = REPLACE(fputs, [](const char*, FILE*) { return 0; });
};

RECIPE(EventTest, createEventLog, ofAnEntry) {
    examine([&] { NATIVE(createEventLog)(L"Backup", L"message", 1, false); });
}

RECIPE(EventTest, createEventLog, ofAnEntryThatIsRefused) {
    const auto refused = system().answer("ReportEventW", FALSE, ERROR_LOG_FILE_FULL);
    examine([&] { NATIVE(createEventLog)(L"Backup", L"message", 1, false); });
}

RECIPE(WinUtilTest, getEnv, ofAVariable) {
    examine([&] { return NATIVE(getEnv)(L"SystemRoot"); });
}

RECIPE(WinUtilTest, setEnvironmentVariable, ofAVariable) {
    examine([&] { NATIVE(setEnvironmentVariable)(L"WINUTIL_FAULTS_TEST", L"value"); });
}

RECIPE(WinUtilTest, getSHfolderPath, ofTheWindowsFolder) {
    examine([&] { return NATIVE(getSHfolderPath)(36); });
}

RECIPE(WinUtilTest, getConsoleChar, thatWasTyped) {
    const auto key = system().answer("_getch", 'x');
    examine([&] { return NATIVE(getConsoleChar)(); });
}

RECIPE(WinUtilTest, CoInitializeEx, onThisThread) {
    mayAnswer(std::to_wstring(E_OUTOFMEMORY));
    mayAnswer(std::to_wstring(RPC_E_CHANGED_MODE));
    jint result = -1;
    examine([&] { return result = NATIVE(CoInitializeEx)(0); });
    if (result >= 0) {
        NATIVE(CoUninitialize)();
    }
}

RECIPE(WinUtilTest, CoUninitialize, onThisThread) {
    NATIVE(CoInitializeEx)(0);
    examine([&] { NATIVE(CoUninitialize)(); });
}

}  // namespace
