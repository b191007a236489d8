#include "bridge/paths.h"

#include <algorithm>
#include <cwchar>

#include "bridge/java_times.h"

namespace winutil {

namespace {

constexpr std::wstring_view longPrefix = L"\\\\?\\";
constexpr std::wstring_view longNetworkPrefix = L"\\\\?\\UNC\\";
constexpr std::wstring_view devicePrefix = L"\\\\.\\";
constexpr std::wstring_view networkPrefix = L"\\\\";

// The longest prefix and the terminator: what a long form may have beyond the path.
constexpr std::size_t longFormRoom = 15;

HANDLE openForTimes(const wchar_t* path) noexcept {
    constexpr DWORD flags = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT | FILE_ATTRIBUTE_NORMAL;
    static_assert(flags == 0x2200080);
    return CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, flags,
                       nullptr);
}

// Required: the attributes stay cleared when the delete fails, because its contract says so.
bool clearAndDelete(const wchar_t* path) noexcept {
    SetFileAttributesW(path, FILE_ATTRIBUTE_NORMAL);
    return DeleteFileW(path) != FALSE;
}

}  // namespace

bool beginsWith(std::wstring_view path, std::wstring_view prefix) noexcept {
    return path.starts_with(prefix);
}

bool hasLongPrefix(std::wstring_view path) noexcept {
    return path.starts_with(longPrefix);
}

bool beginsAsNetworkPath(std::wstring_view path) noexcept {
    return path.starts_with(networkPrefix);
}

WideString toLongPath(const wchar_t* path, std::size_t extra) noexcept {
    const std::wstring_view given(path);
    const std::size_t capacity = given.size() + longFormRoom + extra;
    WideString result = allocate<wchar_t>(capacity);
    if (!result) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return result;
    }
    if (hasLongPrefix(given) || beginsWith(given, devicePrefix)) {
        wcscpy_s(result.get(), capacity, path);
        return result;
    }
    const bool network = beginsAsNetworkPath(given);
    wcscpy_s(result.get(), capacity, network ? longNetworkPrefix.data() : longPrefix.data());
    wcscat_s(result.get(), capacity, network ? path + networkPrefix.size() : path);
    std::replace(result.get(), result.get() + std::wcslen(result.get()), L'/', L'\\');
    return result;
}

bool readAttributeData(const wchar_t* path, void* data) noexcept {
    return GetFileAttributesExW(path, GetFileExInfoStandard, data) != FALSE;
}

std::optional<bool> readAttributeDataWithRetry(const wchar_t* path,
                                               WIN32_FILE_ATTRIBUTE_DATA& data) noexcept {
    return callWithRetry(path,
                         [&](const wchar_t* tried) noexcept { return readAttributeData(tried, &data); });
}

const wchar_t* readablePath(const wchar_t* path, WideString& longForm) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (readAttributeData(path, &data)) {
        return path;
    }
    longForm = toLongPath(path);
    return longForm.get();
}

bool makeDirectory(const wchar_t* path) noexcept {
    const auto make = [](const wchar_t* tried) noexcept { return CreateDirectoryW(tried, nullptr) != FALSE; };
    return callWithRetry(path, make).value_or(false);
}

std::optional<bool> setLastModifiedTime(const wchar_t* path, std::int64_t milliseconds) noexcept {
    HANDLE file = INVALID_HANDLE_VALUE;
    const std::optional<bool> opened = callWithRetry(path, [&](const wchar_t* tried) noexcept {
        file = openForTimes(tried);
        return file != INVALID_HANDLE_VALUE;
    });
    if (!opened) {
        return std::nullopt;
    }
    const FILETIME lastWrite = fromJavaTime(milliseconds);
    const bool done = *opened && SetFileTime(file, nullptr, nullptr, &lastWrite);
    const DWORD error = GetLastError();
    // Required: closed without an owner, because the invalid handle of a failed open is closed too; the
    // system shrugs at it.
    CloseHandle(file);
    SetLastError(error);
    return done;
}

std::optional<std::int64_t> lastModifiedTime(const wchar_t* path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data;
    const std::optional<bool> read = readAttributeDataWithRetry(path, data);
    if (!read) {
        return std::nullopt;
    }
    return *read ? toJavaTime(data.ftLastWriteTime) : 0;
}

std::optional<bool> deleteFile(const wchar_t* path) noexcept {
    return callWithRetry(path, clearAndDelete);
}

std::optional<bool> isDirectoryPath(const wchar_t* path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data;
    const std::optional<bool> read = readAttributeDataWithRetry(path, data);
    if (!read) {
        return std::nullopt;
    }
    return *read && (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::optional<bool> pathExists(const wchar_t* path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return readAttributeDataWithRetry(path, data);
}

bool renamePath(const wchar_t* from, const wchar_t* to) noexcept {
    if (MoveFileW(from, to)) {
        return true;
    }
    const DWORD code = GetLastError();
    if (hasLongPrefix(from) && hasLongPrefix(to)) {
        return false;
    }
    const WideString longFrom = toLongPath(from);
    const WideString longTo = toLongPath(to);
    if (!longFrom || !longTo) {
        // A system was seen to take a null new name for the wish to delete the file.
        SetLastError(code);
        return false;
    }
    return MoveFileW(longFrom.get(), longTo.get()) != FALSE;
}

CallText expandShortNames(const wchar_t* path) noexcept {
    constexpr DWORD firstCapacity = 512;
    CallText expanded{allocate<wchar_t>(firstCapacity)};
    if (!expanded.text) {
        return {};
    }
    const DWORD length = GetLongPathNameW(path, expanded.text.get(), firstCapacity);
    if (length == 0) {
        return {};
    }
    if (length <= firstCapacity) {
        expanded.length = std::wcslen(expanded.text.get());
        return expanded;
    }
    expanded.text = allocate<wchar_t>(length);
    if (!expanded.text) {
        return {};
    }
    expanded.length = GetLongPathNameW(path, expanded.text.get(), length);
    if (expanded.length == 0 || expanded.length > length) {
        return {};
    }
    return expanded;
}

CallText expandEnvironmentVariables(const wchar_t* text) noexcept {
    constexpr DWORD firstCapacity = 4096;
    DWORD capacity = firstCapacity;
    CallText expanded{allocate<wchar_t>(capacity)};
    DWORD needed = expanded.text ? ExpandEnvironmentStringsW(text, expanded.text.get(), capacity) : 0;
    if (needed > capacity) {
        capacity = needed;
        expanded.text = allocate<wchar_t>(capacity);
        needed = expanded.text ? ExpandEnvironmentStringsW(text, expanded.text.get(), capacity) : 0;
    }
    if (!expanded.text) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return {};
    }
    if (needed == 0) {
        return {};
    }
    if (needed > capacity) {
        // A variable grew between the two calls.
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return {};
    }
    expanded.length = needed - 1;
    return expanded;
}

}  // namespace winutil
