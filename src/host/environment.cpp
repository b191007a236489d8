#include "host/environment.h"

#include <shlobj.h>

#include <cstdlib>
#include <cwchar>

namespace winutil::host {

namespace {

// Characters from which on a name is no variable's: the C runtime ends the process over one.
constexpr std::size_t nameLimit = 32767;

}  // namespace

std::optional<WideString> environmentVariable(const wchar_t* name) noexcept {
    if (std::wcslen(name) >= nameLimit) {
        return WideString();
    }
    // The size tells more than the result, which not every runtime sets alike.
    std::size_t size = 0;
    _wgetenv_s(&size, nullptr, 0, name);
    if (size == 0) {
        return WideString();
    }
    WideString value = allocateZeroed<wchar_t>(size);
    if (!value) {
        return std::nullopt;
    }
    if (_wgetenv_s(&size, value.get(), size, name) != 0) {
        value.reset();
    }
    return value;
}

std::optional<DWORD> setEnvironmentVariable(const wchar_t* name, const wchar_t* value) noexcept {
    if (!SetEnvironmentVariableW(name, value)) {
        return GetLastError();
    }
    return std::nullopt;
}

bool specialFolder(int folderId, FolderPath& path) noexcept {
    std::wmemset(path, L'\0', folderPathCapacity);
    return SHGetFolderPathW(nullptr, folderId, nullptr, SHGFP_TYPE_CURRENT, path) == S_OK;
}

}  // namespace winutil::host
