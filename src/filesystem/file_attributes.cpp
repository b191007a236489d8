#include "filesystem/file_attributes.h"

#include <winioctl.h>

#include "bridge/paths.h"
#include "fileio/open.h"

namespace winutil::filesystem {

namespace {

static_assert(FSCTL_SET_COMPRESSION == 0x9C040);

bool compressFile(const wchar_t* path) noexcept {
    const FileCell cell = fileio::createFileWithRetry(path, GENERIC_ALL, FILE_SHARE_READ, OPEN_EXISTING,
                                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (!fileio::isOpen(cell)) {
        return false;
    }
    USHORT format = COMPRESSION_FORMAT_DEFAULT;
    static_assert(sizeof(format) == 2 && COMPRESSION_FORMAT_DEFAULT == 1);
    DWORD returned = 0;
    return DeviceIoControl(*cell.get(), FSCTL_SET_COMPRESSION, &format, sizeof(format), nullptr, 0, &returned,
                           nullptr) != FALSE;
}

}  // namespace

std::optional<bool> setFileAttr(const wchar_t* path, DWORD attributes, ErrorBuffer& errorBuffer) noexcept {
    WideString longForm;
    const wchar_t* target = readablePath(path, longForm);
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return false;
    }
    if (target == nullptr) {
        return std::nullopt;
    }
    if ((attributes & FILE_ATTRIBUTE_COMPRESSED) != 0 && !compressFile(target)) {
        errorBuffer.print(L"Fail to compress file: %s", path);
        return false;
    }
    const bool set = SetFileAttributesW(target, attributes) != FALSE;
    // Asked for whether or not the attributes could be set.
    if ((attributes & FILE_ATTRIBUTE_ENCRYPTED) != 0 && !EncryptFileW(target)) {
        errorBuffer.format(L"EncryptFileW", GetLastError());
    }
    return set;
}

}  // namespace winutil::filesystem
