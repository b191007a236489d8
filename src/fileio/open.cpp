#include "fileio/open.h"

#include <cwchar>

#include "bridge/errors.h"
#include "bridge/java_strings.h"
#include "bridge/paths.h"
#include "bridge/privileges.h"
#include "fileio/preallocation.h"

namespace winutil::fileio {

namespace {

constexpr int sharingRetries = 10;
constexpr DWORD sharingRetryDelay = 500;  // milliseconds

HANDLE openOnce(const wchar_t* path, DWORD access, DWORD share, DWORD disposition, DWORD flags) noexcept {
    HANDLE file = CreateFileW(path, access, share, nullptr, disposition, flags, nullptr);
    if (file == INVALID_HANDLE_VALUE && !hasLongPrefix(path)) {
        file = CreateFileW(toLongPath(path).get(), access, share, nullptr, disposition, flags, nullptr);
    }
    return file;
}

// Raises the exception of a failed open; formats its message unless a worker has left one.
OpenFileRecord* failOpen(JNIEnv* env, const wchar_t* tag, DWORD code, ErrorBuffer& message) noexcept {
    if (message.empty()) {
        formatWin32Error(tag, code, message.text(), ErrorBuffer::capacity);
    }
    throwOpenError(env, code, message.text());
    return nullptr;
}

// Moves a cell with an open handle and a copy of the path into a new record that begins as `fields`, and
// hands it out. Where the size cannot be read, the record is given up as it is, handle, cell, path copy and
// all: that leak is accepted.
OpenFileRecord* makeRecord(JNIEnv* env, const wchar_t* tag, const wchar_t* path, HandleCell cell,
                           const OpenFileRecord& fields) noexcept {
    WideString pathCopy = copyText(path, std::wcslen(path));
    HeapMemory<OpenFileRecord> record = allocate<OpenFileRecord>(1);
    ErrorBuffer message;
    if (!pathCopy || !record) {
        cell.reset();
        return failOpen(env, tag, ERROR_NOT_ENOUGH_MEMORY, message);
    }
    OpenFileRecord* made = record.release();
    *made = fields;
    made->path = pathCopy.release();
    made->handleCell = cell.release();
    LARGE_INTEGER size;
    if (!GetFileSizeEx(made->handle(), &size)) {
        // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): given up on purpose, see above
        formatWin32Error(L"GetFileSizeEx", GetLastError(), message.text(), ErrorBuffer::capacity);
        throwIOException(env, message.text());
        return nullptr;
    }
    made->fileSize = size.QuadPart;
    return made;
}

}  // namespace

HandleCell createFileWithRetry(const wchar_t* path, DWORD access, DWORD share, DWORD disposition, DWORD flags,
                               wchar_t* errorBuffer) noexcept {
    HandleCell cell(allocate<HANDLE>(1).release());
    if (!cell) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return cell;
    }
    for (int retries = 0;; ++retries) {
        *cell.get() = openOnce(path, access, share, disposition, flags);
        if (*cell.get() != INVALID_HANDLE_VALUE) {
            return cell;
        }
        const DWORD code = GetLastError();
        if (code == ERROR_SHARING_VIOLATION && retries < sharingRetries) {
            Sleep(sharingRetryDelay);
            continue;
        }
        if (errorBuffer != nullptr) {
            formatWin32Error(L"CreateFileW", code, errorBuffer, ErrorBuffer::capacity);
        }
        SetLastError(code);
        return cell;
    }
}

OpenFileRecord* createFile(JNIEnv* env, const wchar_t* path, DWORD access, DWORD disposition, DWORD flags,
                           std::int64_t size) noexcept {
    ErrorBuffer message;
    ScopedPrivilege manageVolume("SeManageVolumePrivilege");
    DWORD openAccess = access;
    if (size > 0) {
        openAccess |= GENERIC_WRITE;
        manageVolume.enable();
    }
    HandleCell cell = createFileWithRetry(path, openAccess, FILE_SHARE_READ | FILE_SHARE_WRITE, disposition,
                                          flags, message.text());
    if (!cell || *cell.get() == INVALID_HANDLE_VALUE) {
        const DWORD code = GetLastError();
        cell.reset();
        return failOpen(env, L"createFileN", code, message);
    }
    if (size > 0) {
        const std::optional<DWORD> failure = extendFile(*cell.get(), size, manageVolume.enabled());
        if (failure) {
            cell.reset();
            return failOpen(env, L"createFileN", *failure, message);
        }
    }
    const OpenFileRecord fields{.flags = flags, .access = access, .preallocatedSize = size};
    return makeRecord(env, L"createFileN", path, std::move(cell), fields);
}

OpenFileRecord* openFile(JNIEnv* env, const wchar_t* path) noexcept {
    ErrorBuffer message;
    HandleCell cell = openForReading(path, 0, 0);
    if (!cell || *cell.get() == INVALID_HANDLE_VALUE) {
        const DWORD code = GetLastError();
        cell.reset();
        return failOpen(env, L"openFile", code, message);
    }
    return makeRecord(env, L"openFile", path, std::move(cell), {});
}

void closeFile(OpenFileRecord* record) noexcept {
    const HeapMemory<OpenFileRecord> owner(record);
    const WideString path(record->path);
    const HandleCell cell(record->handleCell);
    if (record->preallocatedSize > 0) {
        SetEndOfFile(record->handle());
    }
}

}  // namespace winutil::fileio
