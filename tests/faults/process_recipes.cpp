// Launches, handles, other processes and services.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <tlhelp32.h>
#include <winsvc.h>
#include <winternl.h>

#include "../process/launch_fixture.h"
#include "reasons.h"
#include "recipe.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;

constexpr char forItsEnd[] = "for the end of a process, which has ended here";
constexpr char cells[] = "a launch that fails lets go of its cells";
class LaunchRecipe : public RecipeOn<LaunchTest> {
protected:
    template <class Call>
    void launch(std::size_t cellCount, Call&& call) {
        tolerates({"GetTokenInformation"}, standsIn);
        comesWhole("GetTokenInformation", "what has a fixed size does not grow");
        tolerates({"SetHandleInformation 1", "SetHandleInformation 2", "SetHandleInformation 7",
                   "SetHandleInformation 8"},
                  "an end that stays inheritable reaches the children of others too until it is closed");
        mustLeak("calloc", cellCount, cells);
        mustLeak("CreateProcessAsUserW", 1, "a child for which Java has no object runs on",
                 {"FindClass", "GetMethodID", "NewObject"});
        // The fixture asks for the order of the calls; what fails comes in another.
        JavaObject made;
        examine([&] {
            made = call();
            return std::wstring(made ? L"a process" : L"null");
        });
        if (made) {
            release(made);
        }
    }
};

class Recipe_createProcessAsUserN_started final : public LaunchRecipe {
    void perform() override {
        tolerates({"LookupPrivilegeValueA", "AdjustTokenPrivileges", "OpenProcessToken"}, systemDecides);
        alwaysLeaks("CreateProcessAsUserW", "the handle of the child's primary thread is never closed");
        mustLeak("DuplicateTokenEx", 1, "a launch that fails keeps the token that it made");
        launch(5, [&] { return launchUser(); });
    }
};
class Recipe_createProcessAsUserSession_started final : public LaunchRecipe {
    void perform() override {
        launch(3, [&] { return launchSession(); });
    }
};
[[maybe_unused]] const bool launchesAdded =
    addRecipe<Recipe_createProcessAsUserN_started>("createProcessAsUserN", "started") &&
    addRecipe<Recipe_createProcessAsUserSession_started>("createProcessAsUserSession", "started");

HANDLE someEvent() {
    return CreateEventW(nullptr, TRUE, TRUE, nullptr);
}

RECIPE(ProcessTest, closeHandle, ofACell) {
    const jlong cell = ownedCell(someEvent());
    examine([&] { NATIVE(closeHandle)(cell); });
}

RECIPE(ProcessTest, unloadUserProfile, ofAnAccount) {
    const auto unload = system().answer("UnloadUserProfile", TRUE);
    const jlong token = ownedCell(someEvent());
    const jlong profile = ownedCell(nullptr);
    HANDLE handle = Ledger::fakeHandle();
    *reinterpret_cast<HANDLE*>(profile) = handle;
    tolerates({"UnloadUserProfile"}, nothingLeftToDo);
    examine([&] { NATIVE(unloadUserProfile)(token, profile); });
}

RECIPE(ProcessTest, waitForSingleObject, ofOneThatEnded) {
    TestHandle event(someEvent());
    waits("WaitForSingleObject", forItsEnd);
    examine([&] { return NATIVE(waitForSingleObject)(borrowedCell(event.handle)); });
}

RECIPE(ProcessTest, exitValue, ofARunningProcess) {
    HANDLE self = GetCurrentProcess();
    examine([&] { return NATIVE(exitValue)(borrowedCell(self)); });
}

RECIPE(ProcessTest, endProcess, ofAChild) {
    const auto end = system().answer("TerminateProcess", TRUE);
    HANDLE self = GetCurrentProcess();
    examine([&] { NATIVE(endProcess)(borrowedCell(self)); });
}

RECIPE(ProcessTest, readHandle, ofAPipe) {
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    CreatePipe(&read, &write, nullptr, 0);
    const TestHandle reading(read);
    const TestHandle writing(write);
    DWORD count = 0;
    WriteFile(write, "content", 7, &count, nullptr);
    answersInstead("ReadFile", L"2", shortTransfer);
    examine(
        [&] { return NATIVE(readHandle)(borrowedCell(read), java.byteArray(std::vector<jbyte>(4)), 0, 4); });
}

RECIPE(ProcessTest, setPriority, ofItself) {
    const auto set = system().answer("SetPriorityClass", TRUE);
    examine([&] { return NATIVE(setPriority)(); });
}

RECIPE(ProcessTest, getSessionId, ofItself) {
    const auto query = REPLACE(ProcessIdToSessionId, [](DWORD, DWORD* session) {
        *session = 42;
        return TRUE;
    });
    examine([&] { return NATIVE(getSessionId)(); });
}

// Two processes of the process' own user.
class ProcessListTest : public ProcessTest {
protected:
    ProcessListTest() {
        java.defineConstructor("java/util/ArrayList", "()V");
        java.defineMethod("java/util/ArrayList", "add", "(Ljava/lang/Object;)Z", [this](const Arguments& a) {
            added.push_back(a[0].object().arguments()[0].text());
            return true;
        });
    }

    BOOL give(LPPROCESSENTRY32W entry) {
        if (next_ == 2) {
            SetLastError(ERROR_NO_MORE_FILES);
            return FALSE;
        }
        entry->th32ProcessID = GetCurrentProcessId();
        wcscpy_s(entry->szExeFile, MAX_PATH, next_++ == 0 ? L"one.exe" : L"two.exe");
        return TRUE;
    }

    std::vector<std::wstring> added;

private:
    int next_ = 0;
    Replacement snapshot_ =
        REPLACE(CreateToolhelp32Snapshot, [](DWORD, DWORD) { return Ledger::fakeHandle(); });
    Replacement first_ =
        REPLACE(Process32FirstW, [this](HANDLE, LPPROCESSENTRY32W entry) { return give(entry); });
    Replacement following_ =
        REPLACE(Process32NextW, [this](HANDLE, LPPROCESSENTRY32W entry) { return give(entry); });
};

class ProcessListRecipe : public RecipeOn<ProcessListTest> {
protected:
    template <class Name>
    void list(Name executable) {
        leavesOut({"OpenProcess", "OpenProcessToken", "GetTokenInformation", "LookupAccountSidW",
                   "ProcessIdToSessionId", "HeapAlloc"},
                  leftOut);
        leavesOut({"Process32NextW"}, listEnds);
        mayAnswer(L"null");
        examine([&] { return std::wstring(NATIVE(getProcessInfo)(executable) ? L"a list" : L"null"); });
        for (const std::wstring& name : added) {
            note(name);
        }
    }
};

class Recipe_getProcessInfo_ofTwoProcesses final : public ProcessListRecipe {
    void perform() override { list(nullptr); }
};
class Recipe_getProcessInfo_ofOneThatIsClosed final : public ProcessListRecipe {
    void perform() override {
        const auto refused = system().failCall("OpenProcess", 1, ERROR_ACCESS_DENIED);
        list(nullptr);
    }
};
class Recipe_getProcessInfo_ofOneWithoutAToken final : public ProcessListRecipe {
    void perform() override {
        const auto refused = system().failCall("OpenProcessToken", 1, ERROR_ACCESS_DENIED);
        list(nullptr);
    }
};
class Recipe_getProcessInfo_ofOneName final : public ProcessListRecipe {
    void perform() override { list(L"two.exe"); }
};
class Recipe_getProcessInfo_ofAnyName final : public ProcessListRecipe {
    void perform() override { list(L""); }
};
[[maybe_unused]] const bool processListsAdded =
    addRecipe<Recipe_getProcessInfo_ofTwoProcesses>("getProcessInfo", "ofTwoProcesses") &&
    addRecipe<Recipe_getProcessInfo_ofOneThatIsClosed>("getProcessInfo", "ofOneThatIsClosed") &&
    addRecipe<Recipe_getProcessInfo_ofOneWithoutAToken>("getProcessInfo", "ofOneWithoutAToken") &&
    addRecipe<Recipe_getProcessInfo_ofOneName>("getProcessInfo", "ofOneName") &&
    addRecipe<Recipe_getProcessInfo_ofAnyName>("getProcessInfo", "ofAnyName");

// A process whose blocks are those of this one.
class OwnMemoryTest : public ProcessTest {
protected:
    Replacement opening_ = REPLACE(OpenProcess, [](DWORD, BOOL, DWORD) { return Ledger::fakeHandle(); });
    Replacement query_ = system().replace<NTSTATUS(HANDLE, int, PVOID, ULONG, PULONG)>(
        "NtQueryInformationProcess", [this](HANDLE, int, PVOID information, ULONG, PULONG) -> NTSTATUS {
            static_cast<PROCESS_BASIC_INFORMATION*>(information)->PebBaseAddress = &block_;
            return 0;
        });
    Replacement read_ =
        REPLACE(ReadProcessMemory, [](HANDLE, LPCVOID from, LPVOID to, SIZE_T size, SIZE_T*) -> BOOL {
            std::memcpy(to, from, size);
            return TRUE;
        });

    OwnMemoryTest() {
        const auto set = [](UNICODE_STRING& to, std::wstring& text) {
            to.Length = static_cast<USHORT>(text.size() * sizeof(wchar_t));
            to.MaximumLength = to.Length;
            to.Buffer = text.data();
        };
        set(parameters_.ImagePathName, image_);
        set(parameters_.CommandLine, command_);
        block_.ProcessParameters = &parameters_;
    }

private:
    std::wstring image_ = L"C:\\a.exe";
    std::wstring command_ = L"a.exe \u4e2d\U0001F600";
    RTL_USER_PROCESS_PARAMETERS parameters_ = {};
    PEB block_ = {};
};

RECIPE(OwnMemoryTest, getProcessCommandLineArguments, ofAProcess) {
    examine([&] { return NATIVE(getProcessCommandLineArguments)(1234, false); });
}

constexpr char notPrinted[] = "a line that cannot be printed";

RECIPE(OwnMemoryTest, getProcessCommandLineArguments, verbosely) {
    tolerates({"malloc"}, notPrinted);
    tolerates({"WideCharToMultiByte"}, standsIn);
    examine([&] { return NATIVE(getProcessCommandLineArguments)(1234, true); });
}

RECIPE(OwnMemoryTest, getProcessCommandLineArguments, verboselyInACodePageThatLacksSome) {
    const auto console = system().answer("GetConsoleOutputCP", 1252);
    tolerates({"malloc"}, notPrinted);
    tolerates({"WideCharToMultiByte"}, standsIn);
    examine([&] { return NATIVE(getProcessCommandLineArguments)(1234, true); });
}

class TerminationTest : public ProcessTest {
protected:
    Replacement opening_ = REPLACE(OpenProcess, [](DWORD, BOOL, DWORD) { return Ledger::fakeHandle(); });
    Replacement ending_ = system().answer("TerminateProcess", TRUE);
    Replacement waiting_ = system().answer("WaitForSingleObject", WAIT_OBJECT_0);
    Replacement code_ = REPLACE(GetExitCodeProcess, [](HANDLE, LPDWORD code) {
        *code = 0;
        return TRUE;
    });
};

RECIPE(TerminationTest, terminateProcessByProcessID, thatEnds) {
    waits("WaitForSingleObject", forItsEnd);
    tolerates({"WaitForSingleObject"}, nothingLeftToDo);
    examine([&] { return NATIVE(terminateProcessByProcessID)(1234, false); });
}

RECIPE(TerminationTest, terminateProcessByProcessID, verbosely) {
    waits("WaitForSingleObject", forItsEnd);
    tolerates({"WaitForSingleObject"}, nothingLeftToDo);
    tolerates({"malloc"}, notPrinted);
    examine([&] { return NATIVE(terminateProcessByProcessID)(1234, true); });
}

class ServiceTest : public ProcessTest {
protected:
    Replacement manager_ = REPLACE(OpenSCManagerW, [](LPCWSTR, LPCWSTR, DWORD) {
        return reinterpret_cast<SC_HANDLE>(Ledger::fakeHandle());
    });
    Replacement service_ = REPLACE(OpenServiceW, [](SC_HANDLE, LPCWSTR, DWORD) {
        return reinterpret_cast<SC_HANDLE>(Ledger::fakeHandle());
    });
    Replacement query_ =
        REPLACE(QueryServiceStatusEx, [](SC_HANDLE, SC_STATUS_TYPE, LPBYTE buffer, DWORD, LPDWORD) {
            reinterpret_cast<SERVICE_STATUS_PROCESS*>(buffer)->dwCurrentState = SERVICE_RUNNING;
            return TRUE;
        });
};

RECIPE(ServiceTest, isServiceRunning, thatRuns) {
    examine([&] { return NATIVE(isServiceRunning)(L"Some"); });
}

}  // namespace
