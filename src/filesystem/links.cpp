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
    // Required: the directory stays when a step behind this fails, because the Java side relies on it.
    LinkTarget name;
    writeJunctionName(target, name);
    const FileCell cell =
        fileio::createFileWithRetry(link, GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    return fileio::isOpen(cell) && setJunction(*cell.get(), name);
}

bool createDirectorySymbolicLink(const wchar_t* link, const wchar_t* target) noexcept {
    return createSymbolicLink(link, target, SYMBOLIC_LINK_FLAG_DIRECTORY);
}

bool createFileSymbolicLink(const wchar_t* link, const wchar_t* target) noexcept {
    return createSymbolicLink(link, target, 0);
}

std::optional<DWORD> linkType(const wchar_t* path, LinkTarget& target) noexcept {
    const std::optional<DWORD> attributes = getFileAttr(path);
    if (!attributes) {
        return std::nullopt;
    }
    // Required: unreadable attributes are passed on, because with every bit set the path is still opened.
    return readReparseKind(path, target, *attributes);
}

std::optional<bool> isLink(const wchar_t* path) noexcept {
    LinkTarget target;
    const std::optional<DWORD> type = linkType(path, target);
    if (!type) {
        return std::nullopt;
    }
    const DWORD kind = *type & 0xFF;
    return kind == linkKindJunction || kind == linkKindFileSymlink || kind == linkKindDirectorySymlink;
}

std::optional<bool> isDirectoryJunction(const wchar_t* path) noexcept {
    constexpr DWORD directoryLink = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    static_assert(directoryLink == 0x410);
    const std::optional<DWORD> attributes = getFileAttr(path);
    if (!attributes) {
        return std::nullopt;
    }
    if (*attributes == INVALID_FILE_ATTRIBUTES || (*attributes & directoryLink) != directoryLink) {
        return false;
    }
    LinkTarget target;
    const std::optional<DWORD> kind = readReparseKind(path, target, *attributes);
    if (!kind) {
        return std::nullopt;
    }
    return *kind == linkKindJunction;
}

}  // namespace winutil::filesystem
