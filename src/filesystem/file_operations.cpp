#include "filesystem/file_operations.h"

#include <cwchar>

#include "bridge/paths.h"

namespace winutil::filesystem {

namespace {

// A share may take this long to show a directory that was just made.
constexpr DWORD shareDelay = 2000;  // milliseconds

}  // namespace

bool makeDirectory(const wchar_t* path, ErrorBuffer& errorBuffer) noexcept {
    if (winutil::makeDirectory(path)) {
        return true;
    }
    const DWORD code = GetLastError();
    if (code == ERROR_ALREADY_EXISTS || code == ERROR_SUCCESS) {
        return false;
    }
    if (code == ERROR_PATH_NOT_FOUND && beginsAsNetworkPath(path)) {
        Sleep(shareDelay);
        if (pathExists(path).value_or(false)) {
            return false;
        }
    }
    errorBuffer.format(createDirTag, code);
    return false;
}

WideString nameFailure(const ErrorBuffer& errorBuffer, const wchar_t* path) noexcept {
    const std::size_t length = std::wcslen(errorBuffer.text());
    const std::size_t room = std::wcslen(path) + 4;  // ", '" and "'"
    WideString named = copyText(errorBuffer.text(), length, room);
    if (named) {
        const std::size_t capacity = length + room + 1;
        wcscat_s(named.get(), capacity, L", '");
        wcscat_s(named.get(), capacity, path);
        wcscat_s(named.get(), capacity, L"'");
    }
    return named;
}

std::optional<bool> deleteExistingFile(const wchar_t* path) noexcept {
    const std::optional<bool> exists = pathExists(path);
    return exists.value_or(false) ? deleteFile(path) : exists;
}

}  // namespace winutil::filesystem
