#include "process/command_line.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "bridge/java_strings.h"
#include "bridge/optional_functions.h"
#include "process/progress.h"

namespace winutil::process {

namespace {

constexpr wchar_t tag[] = L"[WindowsUtil:getProcessCommandLineArguments]";

// What a system without the query is taken to answer.
constexpr NTSTATUS procedureNotFound = static_cast<NTSTATUS>(0xC000007A);

constexpr std::size_t textSize = 4096;  // bytes

// A text of the other process. Its end is not sure to be marked: that process wrote it.
using ForeignText = wchar_t[textSize / sizeof(wchar_t)];

// Zero to begin with: an odd length ends in half a character.
struct ForeignTexts {
    ForeignText imagePath = {};
    ForeignText commandLine = {};
};
static_assert(sizeof(ForeignTexts) == 8192);

std::wstring_view viewOf(const ForeignText& text) noexcept {
    const wchar_t* end = std::find(std::begin(text), std::end(text), L'\0');
    return {text, static_cast<std::size_t>(end - text)};
}

int lengthOf(std::wstring_view text) noexcept {
    return static_cast<int>(text.size());
}

bool failWithStatus(const Progress& progress, ErrorBuffer& failure, NTSTATUS status) noexcept {
    _snwprintf_s(failure.text(), ErrorBuffer::capacity, _TRUNCATE,
                 L"\"NTQueryInformationProcess\" returns error with NTStatus: %x\n",
                 static_cast<unsigned>(status));
    progress.print(L"%s %s\n", failure.text());
    return false;
}

template <class T>
bool readMemory(HANDLE process, const void* address, T& value) noexcept {
    return ReadProcessMemory(process, address, &value, sizeof(value), nullptr) != FALSE;
}

// Reads as much of a text as there is room for; its length is what the other process says it is.
bool readText(HANDLE process, const UNICODE_STRING& text, ForeignText& destination) noexcept {
    const auto size = std::min(std::size_t{text.Length}, textSize);
    return ReadProcessMemory(process, text.Buffer, destination, size, nullptr) != FALSE;
}

bool readParameters(HANDLE process, const Progress& progress, RTL_USER_PROCESS_PARAMETERS& parameters,
                    ErrorBuffer& failure) noexcept {
    progress.print(L"%s Get Process Basic Information\n");
    PROCESS_BASIC_INFORMATION information = {};
    const NTSTATUS status = optionalFunctions().ntQueryInformationProcess(
        process, ProcessBasicInformation, &information, sizeof(information), nullptr);
    if (status < 0) {
        return failWithStatus(progress, failure, status);
    }
    progress.print(L"%s Get PEB\n");
    PEB block;
    static_assert(sizeof(block) == 712);
    if (!readMemory(process, information.PebBaseAddress, block)) {
        return progress.fail(failure, GetLastError(), L"Failed to get PEB\n");
    }
    progress.print(L"%s Get User Process Parameters\n");
    static_assert(sizeof(parameters) == 128);
    if (!readMemory(process, block.ProcessParameters, parameters)) {
        return progress.fail(failure, GetLastError(), L"Failed to get RTL_USER_PROCESS_PARAMETERS\n");
    }
    return true;
}

bool readTexts(HANDLE process, const Progress& progress, const RTL_USER_PROCESS_PARAMETERS& parameters,
               ForeignTexts& texts, ErrorBuffer& failure) noexcept {
    progress.print(L"%s Get Process Image Path\n");
    if (parameters.ImagePathName.Length > 0 &&
        !readText(process, parameters.ImagePathName, texts.imagePath)) {
        return progress.fail(failure, GetLastError(), L"Failed to get process image path\n");
    }
    progress.print(L"%s Get Process Command Line Arguments\n");
    if (parameters.CommandLine.Length > 0 && !readText(process, parameters.CommandLine, texts.commandLine)) {
        return progress.fail(failure, GetLastError(), L"Failed to get process command line arguments\n");
    }
    return true;
}

bool inspect(DWORD processId, const Progress& progress, ForeignTexts& texts, ErrorBuffer& failure) noexcept {
    if (optionalFunctions().ntQueryInformationProcess == nullptr) {
        return failWithStatus(progress, failure, procedureNotFound);
    }
    const auto number = static_cast<int>(processId);
    progress.print(L"%s Open process (%d)\n", number);
    const KernelHandle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, processId));
    if (!process) {
        const DWORD code = GetLastError();
        const ProcessMessage message(L"Failed to open process(%d)\n", processId);
        return progress.fail(failure, code, message.get());
    }
    progress.print(L"%s Get command line arguments of process (%d)\n", number);
    RTL_USER_PROCESS_PARAMETERS parameters;
    return readParameters(process.get(), progress, parameters, failure) &&
           readTexts(process.get(), progress, parameters, texts, failure);
}

}  // namespace

jstring processCommandLine(JNIEnv* env, DWORD processId, bool verbose) noexcept {
    const Progress progress(tag, verbose);
    ForeignTexts texts;
    ErrorBuffer failure;
    if (!inspect(processId, progress, texts, failure)) {
        throwIOException(env, failure.text());
        return nullptr;
    }
    const std::wstring_view path = viewOf(texts.imagePath);
    const std::wstring_view commandLine = viewOf(texts.commandLine);
    progress.print(L"%s Process (%d) exec path=%.*s, command line arguments=%.*s\n",
                   static_cast<int>(processId), lengthOf(path), path.data(), lengthOf(commandLine),
                   commandLine.data());
    return newJavaString(env, commandLine);
}

}  // namespace winutil::process
