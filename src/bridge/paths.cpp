#include "bridge/paths.h"

#include <algorithm>
#include <cwchar>

#include "bridge/java_strings.h"

namespace winutil {

namespace {

constexpr std::wstring_view longPrefix = L"\\\\?\\";
constexpr std::wstring_view longNetworkPrefix = L"\\\\?\\UNC\\";
constexpr std::wstring_view devicePrefix = L"\\\\.\\";
constexpr std::wstring_view networkPrefix = L"\\\\";

// The longest prefix and the terminator: what a long form may have beyond the path.
constexpr std::size_t longFormRoom = 15;

constexpr std::int64_t fileTimeUnitsPerMillisecond = 10000;
// From 1601-01-01, where FILETIME counts from, to 1970-01-01.
constexpr std::int64_t millisecondsBetweenEpochs = 11644473600000;

HANDLE openForTimes(const wchar_t* path) noexcept {
    constexpr DWORD flags = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT | FILE_ATTRIBUTE_NORMAL;
    static_assert(flags == 0x2200080);
    return CreateFileW(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, flags,
                       nullptr);
}

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
    if (hasLongPrefix(given) || beginsWith(given, devicePrefix)) {
        return copyText(path, given.size(), longFormRoom + extra);
    }
    const bool network = beginsAsNetworkPath(given);
    const std::wstring_view prefix = network ? longNetworkPrefix : longPrefix;
    const wchar_t* rest = network ? path + networkPrefix.size() : path;
    const std::size_t capacity = given.size() + longFormRoom + extra;
    WideString result = allocate<wchar_t>(capacity);
    if (result) {
        wcscpy_s(result.get(), capacity, prefix.data());
        wcscat_s(result.get(), capacity, rest);
        std::replace(result.get(), result.get() + std::wcslen(result.get()), L'/', L'\\');
    }
    return result;
}

std::int64_t toJavaTime(const FILETIME& time) noexcept {
    const auto units =
        static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
    return units / fileTimeUnitsPerMillisecond - millisecondsBetweenEpochs;
}

FILETIME fromJavaTime(std::int64_t milliseconds) noexcept {
    // Unsigned, so that a time out of range wraps around instead of being undefined.
    const std::uint64_t units =
        (static_cast<std::uint64_t>(milliseconds) + static_cast<std::uint64_t>(millisecondsBetweenEpochs)) *
        static_cast<std::uint64_t>(fileTimeUnitsPerMillisecond);
    return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

bool readAttributeData(const wchar_t* path, void* data) noexcept {
    return GetFileAttributesExW(path, GetFileExInfoStandard, data) != FALSE;
}

bool readAttributeDataWithRetry(const wchar_t* path, WIN32_FILE_ATTRIBUTE_DATA& data) noexcept {
    return readAttributeData(path, &data) || readAttributeData(toLongPath(path).get(), &data);
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
    return CreateDirectoryW(path, nullptr) || CreateDirectoryW(toLongPath(path).get(), nullptr);
}

bool setLastModifiedTime(const wchar_t* path, std::int64_t milliseconds) noexcept {
    HANDLE file = openForTimes(path);
    if (file == INVALID_HANDLE_VALUE) {
        file = openForTimes(toLongPath(path).get());
    }
    const FILETIME lastWrite = fromJavaTime(milliseconds);
    const bool done = file != INVALID_HANDLE_VALUE && SetFileTime(file, nullptr, nullptr, &lastWrite);
    const DWORD error = GetLastError();
    // Without an owner on purpose: the invalid handle of a failed open is closed too, which is harmless.
    CloseHandle(file);
    SetLastError(error);
    return done;
}

std::int64_t lastModifiedTime(const wchar_t* path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return readAttributeDataWithRetry(path, data) ? toJavaTime(data.ftLastWriteTime) : 0;
}

bool deleteFile(const wchar_t* path) noexcept {
    return clearAndDelete(path) || clearAndDelete(toLongPath(path).get());
}

bool isDirectoryPath(const wchar_t* path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return readAttributeDataWithRetry(path, data) && (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool pathExists(const wchar_t* path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return readAttributeDataWithRetry(path, data);
}

bool renamePath(const wchar_t* from, const wchar_t* to) noexcept {
    if (MoveFileW(from, to)) {
        return true;
    }
    if (hasLongPrefix(from) && hasLongPrefix(to)) {
        return false;
    }
    return MoveFileW(toLongPath(from).get(), toLongPath(to).get()) != FALSE;
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
