#include "process/termination.h"

#include "process/progress.h"

namespace winutil::process {

namespace {

constexpr wchar_t tag[] = L"[WindowsUtil:terminateProcessByProcessID]";

bool endAndWait(DWORD processId, const Progress& progress, ErrorBuffer& failure) noexcept {
    const auto number = static_cast<int>(processId);
    progress.print(L"%s Open process (%d)\n", number);
    constexpr DWORD access = SYNCHRONIZE | PROCESS_QUERY_INFORMATION | PROCESS_TERMINATE;
    static_assert(access == 0x100401);
    const KernelHandle process(OpenProcess(access, FALSE, processId));
    if (!process) {
        const DWORD code = GetLastError();
        const ProcessMessage message(L"Failed to open process (%d)\n", processId);
        return progress.fail(failure, code, message.get());
    }
    progress.print(L"%s Terminate process (%d)\n", number);
    if (!TerminateProcess(process.get(), 0)) {
        const DWORD code = GetLastError();
        const ProcessMessage message(L"Failed to Terminate Process %d\n", processId);
        return progress.fail(failure, code, message.get());
    }
    const DWORD wait = WaitForSingleObject(process.get(), INFINITE);
    progress.print(L"%s Process (%d) terminated, wait=%x\n", number, static_cast<unsigned>(wait));
    return true;
}

}  // namespace

bool terminate(JNIEnv* env, DWORD processId, bool verbose) noexcept {
    ErrorBuffer failure;
    if (!endAndWait(processId, Progress(tag, verbose), failure)) {
        throwIOException(env, failure.text());
        return false;
    }
    return true;
}

}  // namespace winutil::process
