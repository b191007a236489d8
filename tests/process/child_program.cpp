#include "child_program.h"

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <vector>

namespace testbed {

namespace {

// No child stays for ever when its test is ended by force.
constexpr DWORD longestWait = 90'000;

constexpr wchar_t marker[] = L" as-child ";

void writeAll(HANDLE stream, const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        DWORD written = 0;
        if (!WriteFile(stream, bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &written,
                       nullptr)) {
            ExitProcess(90);
        }
        done += written;
    }
}

void flood(std::size_t size) {
    constexpr std::size_t chunk = 10'000;
    for (std::size_t place = 0; place < size; place += chunk) {
        for (const bool isError : {false, true}) {
            std::string bytes;
            for (std::size_t i = place; i < std::min(place + chunk, size); ++i) {
                bytes += floodByte(i, isError);
            }
            writeAll(GetStdHandle(isError ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE), bytes);
        }
    }
}

void waitForEvent(const wchar_t* name) {
    const HANDLE event = OpenEventW(SYNCHRONIZE, FALSE, name);
    WaitForSingleObject(event, longestWait);
}

std::string pipeHandles() {
    std::string lines;
    for (std::uintptr_t value = 4; value < 0x2000; value += 4) {
        if (GetFileType(reinterpret_cast<HANDLE>(value)) == FILE_TYPE_PIPE) {
            lines += std::to_string(value) + "\n";
        }
    }
    return lines;
}

std::string surroundings() {
    char profile[MAX_PATH] = {};
    GetEnvironmentVariableA("USERPROFILE", profile, sizeof(profile));
    char folder[MAX_PATH] = {};
    GetCurrentDirectoryA(sizeof(folder), folder);
    return std::string(profile) + "\n" + folder + "\n";
}

UINT work(const std::vector<std::wstring>& job) {
    const auto number = [&](std::size_t i) { return std::wcstoul(job.at(i).c_str(), nullptr, 10); };
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    if (job.at(0) == L"flood") {
        flood(number(1));
        return number(2);
    }
    if (job.at(0) == L"exit") {
        return number(1);
    }
    if (job.at(0) == L"silent") {
        CloseHandle(output);
        CloseHandle(GetStdHandle(STD_ERROR_HANDLE));
        waitForEvent(job.at(1).c_str());
        return number(2);
    }
    if (job.at(0) == L"speak") {
        writeAll(output, "ready");
        waitForEvent(job.at(1).c_str());
        return number(2);
    }
    if (job.at(0) == L"handles") {
        writeAll(output, pipeHandles());
    } else if (job.at(0) == L"tell") {
        writeAll(output, surroundings());
    } else if (job.at(0) == L"wait") {
        SetEvent(beginningOf(GetCurrentProcessId()));
        Sleep(longestWait);
    }
    return 0;
}

// Before main, and before the tests: a child never gets that far.
[[maybe_unused]] const bool isParent = [] {
    const wchar_t* found = std::wcsstr(GetCommandLineW(), marker);
    if (found == nullptr) {
        return true;
    }
    std::vector<std::wstring> job(1);
    for (const wchar_t* at = found + std::size(marker) - 1; *at != L'\0'; ++at) {
        if (*at == L' ') {
            job.emplace_back();
        } else {
            job.back() += *at;
        }
    }
    ExitProcess(work(job));
}();

}  // namespace

std::wstring childProgram() {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

std::wstring childCommandLine(const std::wstring& job) {
    return L"\"" + childProgram() + L"\"" + marker + job;
}

HANDLE beginningOf(DWORD processId) {
    return CreateEventW(nullptr, TRUE, FALSE, (L"winutil-child-begun-" + std::to_wstring(processId)).c_str());
}

char floodByte(std::size_t place, bool isError) {
    return static_cast<char>((isError ? 'A' : 'a') + place % 23);
}

}  // namespace testbed
