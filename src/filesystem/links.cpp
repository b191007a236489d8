#include "filesystem/links.h"

#include <winioctl.h>

#include "bridge/optional_functions.h"
#include "fileio/open.h"
#include "filesystem/file_records.h"

namespace winutil::filesystem {

namespace {

// Turns an open directory into a junction, or returns false with the reason in the thread's last error.
bool setJunction(HANDLE directory, const LinkTarget& name) noexcept {
    if (name[0] == L'\0') {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return false;
    }
    ReparseBuffer buffer = {};
    const DWORD length = fillJunctionData(name, buffer);
    DWORD returned = 0;
    return DeviceIoControl(directory, FSCTL_SET_REPARSE_POINT, buffer.bytes, length, nullptr, 0, &returned,
                           nullptr) != FALSE;
}

bool createSymbolicLink(const wchar_t* link, const wchar_t* target, DWORD flags) noexcept {
    const auto create = optionalFunctions().createSymbolicLink;
    if (create == nullptr) {
        SetLastError(ERROR_CALL_NOT_IMPLEMENTED);
        return false;
    }
    // The result is a single byte: what stands above it in the register means nothing.
    return create(link, target, flags) != FALSE;
}

}  // namespace

bool createJunctionPoint(const wchar_t* link, const wchar_t* target) noexcept {
    if (!CreateDirectoryW(link, nullptr)) {
        return false;
    }
    LinkTarget name;
    writeJunctionName(target, name);
    const fileio::HandleCell cell =
        fileio::createFileWithRetry(link, GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    return cell && *cell.get() != INVALID_HANDLE_VALUE && setJunction(*cell.get(), name);
}

bool createDirectorySymbolicLink(const wchar_t* link, const wchar_t* target) noexcept {
    return createSymbolicLink(link, target, SYMBOLIC_LINK_FLAG_DIRECTORY);
}

bool createFileSymbolicLink(const wchar_t* link, const wchar_t* target) noexcept {
    return createSymbolicLink(link, target, 0);
}

DWORD linkType(const wchar_t* path, LinkTarget& target) noexcept {
    // Unreadable attributes have every bit set, so that the path is still opened.
    return readReparseKind(path, target, getFileAttr(path));
}

bool isLink(const wchar_t* path) noexcept {
    LinkTarget target;
    const DWORD kind = linkType(path, target) & 0xFF;
    return kind == linkKindJunction || kind == linkKindFileSymlink || kind == linkKindDirectorySymlink;
}

bool isDirectoryJunction(const wchar_t* path) noexcept {
    constexpr DWORD directoryLink = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    static_assert(directoryLink == 0x410);
    const DWORD attributes = getFileAttr(path);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & directoryLink) != directoryLink) {
        return false;
    }
    LinkTarget target;
    return readReparseKind(path, target, attributes) == linkKindJunction;
}

}  // namespace winutil::filesystem
