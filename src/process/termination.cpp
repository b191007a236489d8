#include "process/termination.h"

#include "process/progress.h"

namespace winutil::process {

bool terminate(std::int64_t processId, bool verbose, ErrorBuffer& errorBuffer) noexcept {
    const Progress progress(L"[WindowsUtil:terminateProcessByProcessID]", verbose);
    const ProcessId id(processId);
    progress.print(L"%s Open process (%lld)\n", id.number());
    constexpr DWORD access = SYNCHRONIZE | PROCESS_QUERY_INFORMATION | PROCESS_TERMINATE;
    static_assert(access == 0x100401);
    const KernelHandle process = id.open(access);
    if (!process) {
        const DWORD code = GetLastError();
        const ProcessMessage message(L"Failed to open process (%lld)\n", id);
        return progress.fail(errorBuffer, code, message.get());
    }
    progress.print(L"%s Terminate process (%lld)\n", id.number());
    if (!TerminateProcess(process.get(), 0)) {
        const DWORD code = GetLastError();
        const ProcessMessage message(L"Failed to Terminate Process %lld\n", id);
        return progress.fail(errorBuffer, code, message.get());
    }
    const DWORD wait = WaitForSingleObject(process.get(), INFINITE);
    progress.print(L"%s Process (%lld) terminated, wait=%x\n", id.number(), static_cast<unsigned>(wait));
    return true;
}

}  // namespace winutil::process
