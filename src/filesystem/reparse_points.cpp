#include "filesystem/reparse_points.h"

#include <winioctl.h>

#include <algorithm>
#include <cstddef>

#include "fileio/open.h"

namespace winutil::filesystem {

std::optional<DWORD> readReparseKind(const wchar_t* path, LinkTarget& target, DWORD attributes) noexcept {
    target[0] = L'\0';
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return linkKindNone;
    }
    const FileCell cell =
        fileio::createFileWithRetry(path, SYNCHRONIZE | FILE_READ_ATTRIBUTES, FILE_SHARE_READ, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (!cell) {
        return std::nullopt;
    }
    if (*cell.get() == INVALID_HANDLE_VALUE) {
        return linkKindNone;
    }
    ReparseBuffer buffer = {};
    DWORD returned = 0;
    if (!DeviceIoControl(*cell.get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, buffer.bytes, sizeof(buffer),
                         &returned, nullptr)) {
        return linkKindNone;
    }
    return parseReparseData({buffer.bytes, std::min<std::size_t>(returned, sizeof(buffer))}, attributes,
                            target);
}

}  // namespace winutil::filesystem
