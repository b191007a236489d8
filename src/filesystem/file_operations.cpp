#include "filesystem/file_operations.h"

#include <cwchar>

#include "bridge/errors.h"
#include "bridge/paths.h"

namespace winutil::filesystem {

namespace {

// A share may take this long to show a directory that was just made.
constexpr DWORD shareDelay = 2000;  // milliseconds

// Returns "[createDir] (code) system text, 'path'", as long as the path makes it.
WideString describeFailure(const wchar_t* path, DWORD code) noexcept {
    const std::size_t capacity = ErrorBuffer::capacity + std::wcslen(path) + 4;
    WideString message = allocate<wchar_t>(capacity);
    if (message) {
        formatWin32Error(L"createDir", code, message.get(), ErrorBuffer::capacity);
        wcscat_s(message.get(), capacity, L", '");
        wcscat_s(message.get(), capacity, path);
        wcscat_s(message.get(), capacity, L"'");
    }
    return message;
}

}  // namespace

bool makeDirectory(JNIEnv* env, const wchar_t* path) noexcept {
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
    const WideString message = describeFailure(path, code);
    const wchar_t* text = message ? message.get() : noSystemText;
    if (code == ERROR_DISK_FULL) {
        throwDiskFullException(env, text);
    } else {
        throwSecurityException(env, text);
    }
    return false;
}

std::optional<bool> deleteExistingFile(const wchar_t* path) noexcept {
    const std::optional<bool> exists = pathExists(path);
    return exists.value_or(false) ? deleteFile(path) : exists;
}

}  // namespace winutil::filesystem
