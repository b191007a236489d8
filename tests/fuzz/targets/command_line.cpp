// The parameters and the command line in another process's memory.
#include "process/command_line.h"
#include "answers/processes.h"
#include "target.h"
#include "windows/system.h"

namespace {

hostile::Processes* processes = nullptr;

NTSTATUS NTAPI query(HANDLE, int, PVOID information, ULONG size, PULONG) {
    return processes->query(information, size);
}

}  // namespace

extern "C" {
HANDLE WINAPI OpenProcess(DWORD, WINBOOL, DWORD) {
    return fuzz::fakeHandle();
}
WINBOOL WINAPI ReadProcessMemory(HANDLE process, LPCVOID address, LPVOID buffer, SIZE_T size, SIZE_T* read) {
    return processes->read(process, address, buffer, size, read);
}
}

void fuzz::examine(hostile::Input& input) {
    hostile::Processes answers(input);
    processes = &answers;
    winutil::fuzzedFunctions().ntQueryInformationProcess = query;
    winutil::process::ForeignText commandLine;
    winutil::ErrorBuffer errorBuffer;
    const bool read = winutil::process::readCommandLine(4, true, commandLine, errorBuffer);
    require(read == errorBuffer.empty(), "a failure without a reason, or a reason without a failure");
    const std::wstring_view line = commandLine.view();
    require(line.size() <= commandLine.size / sizeof(wchar_t), "a command line is longer than its room");
    require(line.find(L'\0') == line.npos, "a command line goes on behind its end");
}
