#include "fileio/open.h"

#include <cwchar>
#include <optional>

#include "bridge/paths.h"
#include "bridge/privileges.h"
#include "fileio/preallocation.h"

namespace winutil::fileio {

namespace {

constexpr int sharingRetries = 10;
constexpr DWORD sharingRetryDelay = 500;  // milliseconds

// Tries the path and its long form. Returns the handle or INVALID_HANDLE_VALUE; none, with
// ERROR_NOT_ENOUGH_MEMORY as the last error, without memory for the long form.
std::optional<HANDLE> openOnce(const wchar_t* path, DWORD access, DWORD share, DWORD disposition,
                               DWORD flags) noexcept {
    HANDLE file = CreateFileW(path, access, share, nullptr, disposition, flags, nullptr);
    if (file != INVALID_HANDLE_VALUE || hasLongPrefix(path)) {
        return file;
    }
    const WideString longForm = toLongPath(path);
    if (!longForm) {
        return std::nullopt;
    }
    return CreateFileW(longForm.get(), access, share, nullptr, disposition, flags, nullptr);
}

// Leaves the message of a failed open unless the call that failed has left one. Returns no record.
OpenFileRecord* failed(const wchar_t* tag, DWORD code, ErrorBuffer& errorBuffer) noexcept {
    if (errorBuffer.empty()) {
        errorBuffer.format(tag, code);
    }
    return nullptr;
}

// Moves a cell with an open handle and a copy of the path into a new record that begins as `fields`.
OpenFileRecord* makeRecord(const wchar_t* tag, const wchar_t* path, FileCell cell,
                           const OpenFileRecord& fields, ErrorBuffer& errorBuffer) noexcept {
    WideString pathCopy = copyText(path, std::wcslen(path));
    HeapMemory<OpenFileRecord> record = allocate<OpenFileRecord>(1);
    if (!pathCopy || !record) {
        cell.reset();
        return failed(tag, ERROR_NOT_ENOUGH_MEMORY, errorBuffer);
    }
    OpenFileRecord* made = record.release();
    *made = fields;
    made->path = pathCopy.release();
    made->handleCell = cell.release();
    LARGE_INTEGER size;
    if (GetFileSizeEx(made->handle(), &size)) {
        made->fileSize = size.QuadPart;
    } else {
        errorBuffer.format(L"GetFileSizeEx", GetLastError());
    }
    return made;
}

}  // namespace

FileCell createFileWithRetry(const wchar_t* path, DWORD access, DWORD share, DWORD disposition, DWORD flags,
                             ErrorBuffer* errorBuffer) noexcept {
    FileCell cell(allocate<HANDLE>(1).release());
    if (!cell) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return cell;
    }
    *cell.get() = INVALID_HANDLE_VALUE;
    for (int retries = 0;; ++retries) {
        const std::optional<HANDLE> file = openOnce(path, access, share, disposition, flags);
        if (!file) {
            return {};
        }
        *cell.get() = *file;
        if (isOpen(cell)) {
            return cell;
        }
        const DWORD code = GetLastError();
        if (code == ERROR_SHARING_VIOLATION && retries < sharingRetries) {
            Sleep(sharingRetryDelay);
            continue;
        }
        if (errorBuffer != nullptr) {
            errorBuffer->format(L"CreateFileW", code);
        }
        SetLastError(code);
        return cell;
    }
}

OpenFileRecord* createFile(const wchar_t* path, DWORD access, DWORD disposition, DWORD flags,
                           std::int64_t size, ErrorBuffer& errorBuffer) noexcept {
    constexpr wchar_t tag[] = L"createFileN";
    ScopedPrivilege manageVolume("SeManageVolumePrivilege");
    DWORD openAccess = access;
    if (size > 0) {
        openAccess |= GENERIC_WRITE;
        manageVolume.enable();
    }
    FileCell cell = createFileWithRetry(path, openAccess, FILE_SHARE_READ | FILE_SHARE_WRITE, disposition,
                                        flags, &errorBuffer);
    if (!isOpen(cell)) {
        return failed(tag, GetLastError(), errorBuffer);
    }
    if (size > 0) {
        const std::optional<DWORD> failure = extendFile(*cell.get(), size, manageVolume.enabled());
        if (failure) {
            cell.reset();
            return failed(tag, *failure, errorBuffer);
        }
    }
    const OpenFileRecord fields{.flags = flags, .access = access, .preallocatedSize = size};
    return makeRecord(tag, path, std::move(cell), fields, errorBuffer);
}

OpenFileRecord* openFile(const wchar_t* path, ErrorBuffer& errorBuffer) noexcept {
    constexpr wchar_t tag[] = L"openFile";
    FileCell cell = openForReading(path, 0, 0);
    if (!isOpen(cell)) {
        return failed(tag, GetLastError(), errorBuffer);
    }
    return makeRecord(tag, path, std::move(cell), {}, errorBuffer);
}

void closeFile(OpenFileRecord* record) noexcept {
    const HeapMemory<OpenFileRecord> owner(record);
    const WideString path(record->path);
    const FileCell cell(record->handleCell);
    if (record->preallocatedSize > 0) {
        SetEndOfFile(record->handle());
    }
}

}  // namespace winutil::fileio
