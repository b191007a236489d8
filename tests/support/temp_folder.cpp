#include "temp_folder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <stdexcept>

#include "text.h"

namespace testbed {

namespace {

std::wstring longForm(const std::wstring& path) {
    return path.starts_with(L"\\\\") ? path : L"\\\\?\\" + path;
}

void removeEntry(const std::wstring& path, const WIN32_FIND_DATAW& entry);

void removeContent(const std::wstring& folder) {
    WIN32_FIND_DATAW entry;
    HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring_view name = entry.cFileName;
        if (name != L"." && name != L"..") {
            removeEntry(folder + L"\\" + entry.cFileName, entry);
        }
    } while (FindNextFileW(search, &entry));
    FindClose(search);
}

void removeEntry(const std::wstring& path, const WIN32_FIND_DATAW& entry) {
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0) {
        SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    }
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        DeleteFileW(path.c_str());
        return;
    }
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        removeContent(path);
    }
    RemoveDirectoryW(path.c_str());
}

HANDLE openOrThrow(const std::wstring& path, DWORD access, DWORD disposition) {
    const HANDLE file = CreateFileW(longForm(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("cannot open " + toUtf8(path) + ": " + toUtf8(systemText(GetLastError())));
    }
    return file;
}

void makeFolders(const std::wstring& path) {
    const std::wstring full = longForm(path);
    for (std::size_t end = full.find(L'\\', 7); end != std::wstring::npos; end = full.find(L'\\', end + 1)) {
        CreateDirectoryW(full.substr(0, end).c_str(), nullptr);
    }
}

}  // namespace

TempFolder::TempFolder() {
    static std::atomic<unsigned> number = 0;
    wchar_t base[MAX_PATH];
    if (GetTempPathW(MAX_PATH, base) == 0) {
        throw std::runtime_error("no folder for temporary files");
    }
    do {
        path_ =
            base + (L"winutil-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++number));
    } while (!CreateDirectoryW(path_.c_str(), nullptr) && GetLastError() == ERROR_ALREADY_EXISTS);
}

TempFolder::~TempFolder() {
    removeContent(longForm(path_));
    if (!RemoveDirectoryW(path_.c_str())) {
        ADD_FAILURE() << "cannot remove " << toUtf8(path_) << ": " << toUtf8(systemText(GetLastError()));
    }
}

void writeFile(const std::wstring& path, std::string_view content) {
    makeFolders(path);
    const HANDLE file = openOrThrow(path, GENERIC_WRITE, CREATE_ALWAYS);
    DWORD written = 0;
    const BOOL done = WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr);
    CloseHandle(file);
    if (!done || written != content.size()) {
        throw std::runtime_error("cannot write " + toUtf8(path));
    }
}

std::string readFile(const std::wstring& path) {
    const HANDLE file = openOrThrow(path, GENERIC_READ, OPEN_EXISTING);
    LARGE_INTEGER size = {};
    GetFileSizeEx(file, &size);
    std::string content(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    const BOOL done = ReadFile(file, content.data(), static_cast<DWORD>(content.size()), &read, nullptr);
    CloseHandle(file);
    if (!done || read != content.size()) {
        throw std::runtime_error("cannot read " + toUtf8(path));
    }
    return content;
}

bool fileExists(const std::wstring& path) {
    return GetFileAttributesW(longForm(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring builtPath(std::wstring path) {
    std::ranges::replace(path, L'/', L'\\');
    return path.starts_with(L'\\') ? L"Z:" + path : path;
}

}  // namespace testbed
