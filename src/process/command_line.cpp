#include "process/command_line.h"

#include <algorithm>
#include <iterator>

#include "bridge/optional_functions.h"
#include "process/progress.h"

namespace winutil::process {

namespace {

// What a system without the query is taken to answer.
constexpr NTSTATUS procedureNotFound = static_cast<NTSTATUS>(0xC000007A);

int lengthOf(std::wstring_view text) noexcept {
    return static_cast<int>(text.size());
}

bool failWithStatus(const Progress& progress, ErrorBuffer& errorBuffer, NTSTATUS status) noexcept {
    errorBuffer.print(L"\"NTQueryInformationProcess\" returns error with NTStatus: %x\n",
                      static_cast<unsigned>(status));
    progress.print(L"%s %s\n", errorBuffer.text());
    return false;
}

template <class T>
bool readMemory(HANDLE process, const void* address, T& value) noexcept {
    return ReadProcessMemory(process, address, &value, sizeof(value), nullptr) != FALSE;
}

// Reads as much of a text as there is room for; its length is what the other process says it is.
bool readText(HANDLE process, const UNICODE_STRING& text, ForeignText& destination) noexcept {
    const auto size = std::min(std::size_t{text.Length}, ForeignText::size);
    return ReadProcessMemory(process, text.Buffer, destination.memory(), size, nullptr) != FALSE;
}

bool readParameters(HANDLE process, const Progress& progress, RTL_USER_PROCESS_PARAMETERS& parameters,
                    ErrorBuffer& errorBuffer) noexcept {
    progress.print(L"%s Get Process Basic Information\n");
    PROCESS_BASIC_INFORMATION information = {};
    const NTSTATUS status = optionalFunctions().ntQueryInformationProcess(
        process, ProcessBasicInformation, &information, sizeof(information), nullptr);
    if (status < 0) {
        return failWithStatus(progress, errorBuffer, status);
    }
    progress.print(L"%s Get PEB\n");
    PEB block;
    static_assert(sizeof(block) == 712);
    if (!readMemory(process, information.PebBaseAddress, block)) {
        return progress.fail(errorBuffer, GetLastError(), L"Failed to get PEB\n");
    }
    progress.print(L"%s Get User Process Parameters\n");
    static_assert(sizeof(parameters) == 128);
    if (!readMemory(process, block.ProcessParameters, parameters)) {
        return progress.fail(errorBuffer, GetLastError(), L"Failed to get RTL_USER_PROCESS_PARAMETERS\n");
    }
    return true;
}

bool readTexts(HANDLE process, const Progress& progress, const RTL_USER_PROCESS_PARAMETERS& parameters,
               ForeignText& imagePath, ForeignText& commandLine, ErrorBuffer& errorBuffer) noexcept {
    progress.print(L"%s Get Process Image Path\n");
    if (parameters.ImagePathName.Length > 0 && !readText(process, parameters.ImagePathName, imagePath)) {
        return progress.fail(errorBuffer, GetLastError(), L"Failed to get process image path\n");
    }
    progress.print(L"%s Get Process Command Line Arguments\n");
    if (parameters.CommandLine.Length > 0 && !readText(process, parameters.CommandLine, commandLine)) {
        return progress.fail(errorBuffer, GetLastError(), L"Failed to get process command line arguments\n");
    }
    return true;
}

}  // namespace

std::wstring_view ForeignText::view() const noexcept {
    const wchar_t* end = std::find(std::begin(text_), std::end(text_), L'\0');
    return {text_, static_cast<std::size_t>(end - text_)};
}

bool readCommandLine(std::int64_t processId, bool verbose, ForeignText& commandLine,
                     ErrorBuffer& errorBuffer) noexcept {
    const Progress progress(L"[WindowsUtil:getProcessCommandLineArguments]", verbose);
    if (optionalFunctions().ntQueryInformationProcess == nullptr) {
        return failWithStatus(progress, errorBuffer, procedureNotFound);
    }
    const ProcessId id(processId);
    progress.print(L"%s Open process (%lld)\n", id.number());
    const KernelHandle process = id.open(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ);
    if (!process) {
        const DWORD code = GetLastError();
        const ProcessMessage message(L"Failed to open process(%lld)\n", id);
        return progress.fail(errorBuffer, code, message.get());
    }
    progress.print(L"%s Get command line arguments of process (%lld)\n", id.number());
    RTL_USER_PROCESS_PARAMETERS parameters;
    ForeignText imagePath;
    if (!readParameters(process.get(), progress, parameters, errorBuffer) ||
        !readTexts(process.get(), progress, parameters, imagePath, commandLine, errorBuffer)) {
        return false;
    }
    const std::wstring_view path = imagePath.view();
    const std::wstring_view line = commandLine.view();
    progress.print(L"%s Process (%lld) exec path=%.*s, command line arguments=%.*s\n", id.number(),
                   lengthOf(path), path.data(), lengthOf(line), line.data());
    return true;
}

}  // namespace winutil::process
