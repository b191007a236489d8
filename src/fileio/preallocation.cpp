#include "fileio/preallocation.h"

#include <cwchar>

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

FileCell openPreallocated(const wchar_t* path, std::int64_t length, std::int64_t start) noexcept {
    ScopedPrivilege manageVolume("SeManageVolumePrivilege");
    manageVolume.enable();
    FileCell cell =
        createFileWithRetry(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            OPEN_EXISTING, readOnlyFlags, nullptr);
    if (!isOpen(cell) || extendFile(*cell.get(), length, manageVolume.enabled()) ||
        !moveTo(*cell.get(), start)) {
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

FileCell openForReading(const wchar_t* path, std::int64_t length, std::int64_t start) noexcept {
    if (length > 0 && !preallocatingOpenOff) {
        FileCell cell = openPreallocated(path, length, start);
        if (cell) {
            return cell;
        }
    }
    return createFileWithRetry(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING,
                               readOnlyFlags, nullptr);
}

std::optional<bool> canExtendFile(const wchar_t* path) noexcept {
    ScopedPrivilege manageVolume("SeManageVolumePrivilege");
    if (!manageVolume.enable()) {
        return false;
    }
    FileCell cell = createFileWithRetry(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        CREATE_ALWAYS, FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (!cell) {
        return std::nullopt;
    }
    if (!isOpen(cell)) {
        return false;
    }
    const bool extended = moveTo(*cell.get(), probeSize) && SetEndOfFile(*cell.get()) &&
                          SetFileValidData(*cell.get(), probeSize);
    cell.reset();
    deleteFile(path);
    return extended;
}

bool setEndOfFileInformation(const OpenFileRecord* record, std::int64_t endOfFile,
                             ErrorBuffer& errorBuffer) noexcept {
    const auto setInformation = optionalFunctions().ntSetInformationFile;
    if (setInformation == nullptr) {
        return false;
    }
    if (record == nullptr) {
        errorBuffer.format(L"setFileEndOfFileInfo", ERROR_INVALID_HANDLE);
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
    errorBuffer.print(L"[WindowsUtil.setFileEndOfFileInfo] Failed to set the end of file position to %d",
                      static_cast<int>(endOfFile));
    const std::size_t length = std::wcslen(errorBuffer.text());
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_FROM_HMODULE, ntdllModule(),
                   static_cast<DWORD>(result), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                   errorBuffer.text() + length, static_cast<DWORD>(ErrorBuffer::capacity - length), nullptr);
    return false;
}

}  // namespace winutil::fileio
