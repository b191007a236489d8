#include "fileio/preallocation.h"

#include <cstdio>
#include <cwchar>

#include "bridge/errors.h"
#include "bridge/optional_functions.h"
#include "bridge/paths.h"
#include "bridge/privileges.h"
#include "fileio/open.h"

namespace winutil::fileio {

namespace {

// FileEndOfFileInformation of FILE_INFORMATION_CLASS, which the user-mode headers leave out.
constexpr int fileEndOfFileInformation = 20;

constexpr std::int64_t probeSize = std::int64_t{1024} * 1024;

constexpr DWORD readOnlyFlags = FILE_FLAG_BACKUP_SEMANTICS | FILE_ATTRIBUTE_READONLY;
static_assert(readOnlyFlags == 0x2000001);

bool moveTo(HANDLE file, std::int64_t position) noexcept {
    LARGE_INTEGER distance;
    distance.QuadPart = position;
    return SetFilePointerEx(file, distance, nullptr, FILE_BEGIN) != FALSE;
}

HandleCell openPreallocated(const wchar_t* path, std::int64_t length, std::int64_t start) noexcept {
    ScopedPrivilege manageVolume("SeManageVolumePrivilege");
    manageVolume.enable();
    HandleCell cell =
        createFileWithRetry(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            OPEN_EXISTING, readOnlyFlags, nullptr);
    if (!cell || *cell.get() == INVALID_HANDLE_VALUE ||
        extendFile(*cell.get(), length, manageVolume.enabled()) || !moveTo(*cell.get(), start)) {
        cell.reset();
    }
    return cell;
}

}  // namespace

bool preallocatingOpenOff = false;

std::optional<DWORD> extendFile(HANDLE file, std::int64_t size, bool validData) noexcept {
    if (!moveTo(file, size) || !SetEndOfFile(file)) {
        return GetLastError();
    }
    if (validData) {
        SetFileValidData(file, size);
    }
    moveTo(file, 0);
    return std::nullopt;
}

HandleCell openForReading(const wchar_t* path, std::int64_t length, std::int64_t start) noexcept {
    if (length > 0 && !preallocatingOpenOff) {
        HandleCell cell = openPreallocated(path, length, start);
        if (cell) {
            return cell;
        }
    }
    return createFileWithRetry(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING,
                               readOnlyFlags, nullptr);
}

bool canExtendFile(const wchar_t* path) noexcept {
    ScopedPrivilege manageVolume("SeManageVolumePrivilege");
    if (!manageVolume.enable()) {
        return false;
    }
    HandleCell cell = createFileWithRetry(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          CREATE_ALWAYS, FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (!cell || *cell.get() == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool extended = moveTo(*cell.get(), probeSize) && SetEndOfFile(*cell.get()) &&
                          SetFileValidData(*cell.get(), probeSize);
    cell.reset();
    deleteFile(path);
    return extended;
}

bool setEndOfFileInformation(JNIEnv* env, const OpenFileRecord* record, std::int64_t endOfFile) noexcept {
    const auto setInformation = optionalFunctions().ntSetInformationFile;
    if (setInformation == nullptr) {
        return false;
    }
    ErrorBuffer message;
    if (record == nullptr) {
        formatWin32Error(L"setFileEndOfFileInfo", ERROR_INVALID_HANDLE, message.text(),
                         ErrorBuffer::capacity);
        throwIOException(env, message.text());
        return false;
    }
    IO_STATUS_BLOCK status = {};
    LARGE_INTEGER end;
    end.QuadPart = endOfFile;
    static_assert(sizeof(end) == 8);
    const NTSTATUS result =
        setInformation(record->handle(), &status, &end, sizeof(end), fileEndOfFileInformation);
    if (result >= 0) {
        return true;
    }
    _snwprintf_s(message.text(), ErrorBuffer::capacity, _TRUNCATE,
                 L"[WindowsUtil.setFileEndOfFileInfo] Failed to set the end of file position to %d",
                 static_cast<int>(endOfFile));
    const std::size_t length = std::wcslen(message.text());
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_FROM_HMODULE, ntdllModule(),
                   static_cast<DWORD>(result), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                   message.text() + length, static_cast<DWORD>(ErrorBuffer::capacity - length), nullptr);
    throwIOException(env, message.text());
    return false;
}

}  // namespace winutil::fileio
