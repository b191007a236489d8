#include "process_fixture.h"

#include <cstdlib>

#include "child_program.h"

namespace testbed {

jlong ProcessTest::ownedCell(HANDLE handle) {
    auto* cell = static_cast<HANDLE*>(std::malloc(sizeof(HANDLE)));
    *cell = handle;
    ledger().take(Kind::memory, reinterpret_cast<std::uint64_t>(cell), "malloc", "the test");
    if (handle != nullptr) {
        ledger().take(Kind::handle, reinterpret_cast<std::uint64_t>(handle), "a launch", "the test");
    }
    return reinterpret_cast<jlong>(cell);
}

std::wstring stepMessage(const std::wstring& message, DWORD code) {
    return message + L"  (" + std::to_wstring(static_cast<int>(code)) + L") " + systemText(code);
}

std::wstring tagMessage(const std::wstring& tag, DWORD code) {
    return L" " + tag + L" (" + std::to_wstring(static_cast<int>(code)) + L") " + systemText(code);
}

RunningChild::RunningChild(const std::wstring& job) : commandLine(childCommandLine(job)) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION information = {};
    std::wstring writable = commandLine;
    if (!CreateProcessW(nullptr, writable.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &information)) {
        throw std::runtime_error("cannot start the child: " + toUtf8(systemText(GetLastError())));
    }
    CloseHandle(information.hThread);
    process.handle = information.hProcess;
    id = information.dwProcessId;
    if (job.starts_with(L"wait")) {
        // Until it has begun a process is not yet all that it will be.
        const TestHandle begun(beginningOf(id));
        const HANDLE either[] = {begun.handle, process.handle};
        WaitForMultipleObjects(2, either, FALSE, INFINITE);
    }
}

RunningChild::~RunningChild() {
    TerminateProcess(process.handle, 0);
    WaitForSingleObject(process.handle, INFINITE);
}

DWORD RunningChild::exitCode() const {
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeProcess(process.handle, &code));
    return code;
}

}  // namespace testbed
