#include "child_process.h"

#include <filesystem>
#include <stdexcept>

#include "text.h"

namespace testbed {

namespace {

// Beside this program.
std::wstring violationsFile() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return (std::filesystem::path(path).parent_path() / L"support_violations.exe").wstring();
}

std::string readToEnd(HANDLE pipe) {
    std::string text;
    char part[4096];
    DWORD size = 0;
    while (ReadFile(pipe, part, sizeof part, &size, nullptr) && size > 0) {
        text.append(part, size);
    }
    return text;
}

}  // namespace

ChildResult runViolations(const std::string& filter, const std::string& arguments) {
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    CreatePipe(&reading, &writing, &inheritable, 0);
    SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);

    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = writing;
    PROCESS_INFORMATION child = {};
    std::wstring commandLine = L'"' + violationsFile() + L"\" --gtest_filter=" + toWide(filter + arguments);
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &child)) {
        throw std::runtime_error("cannot start the violations");
    }
    CloseHandle(writing);
    ChildResult result{0, readToEnd(reading)};
    WaitForSingleObject(child.hProcess, INFINITE);
    GetExitCodeProcess(child.hProcess, &result.exitCode);
    CloseHandle(reading);
    CloseHandle(child.hThread);
    CloseHandle(child.hProcess);
    return result;
}

}  // namespace testbed
