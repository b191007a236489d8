#include "fileio/sector_size.h"

#include <utility>

namespace winutil::fileio {

namespace {

constexpr std::wstring_view shadowCopyPrefix = L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy";
static_assert(shadowCopyPrefix.size() == 46);

// Returns the length up to and with the next backslash at or behind `from`; 0 when there is none.
std::size_t lengthWithBackslash(std::wstring_view path, std::size_t from) noexcept {
    const std::size_t found = path.find(L'\\', from);
    return found == std::wstring_view::npos ? 0 : found + 1;
}

}  // namespace

std::size_t volumeRootLength(std::wstring_view path) noexcept {
    if (path.size() >= 2 && path[1] == L':') {
        return 2;
    }
    if (path.starts_with(shadowCopyPrefix)) {
        return lengthWithBackslash(path, shadowCopyPrefix.size());
    }
    if (path.starts_with(L"\\\\")) {
        const std::size_t server = lengthWithBackslash(path, 2);
        return server == 0 ? 0 : lengthWithBackslash(path, server);
    }
    return 0;
}

DWORD sectorSize(wchar_t* path) noexcept {
    const std::size_t length = volumeRootLength(path);
    if (length == 0) {
        return 0;
    }
    DWORD sectorsPerCluster = 0;
    DWORD bytesPerSector = 0;
    DWORD freeClusters = 0;
    DWORD totalClusters = 0;
    const wchar_t cut = std::exchange(path[length], L'\0');
    GetDiskFreeSpaceW(path, &sectorsPerCluster, &bytesPerSector, &freeClusters, &totalClusters);
    path[length] = cut;
    return bytesPerSector;
}

DWORD pageSize() noexcept {
    SYSTEM_INFO information;
    GetSystemInfo(&information);
    return information.dwPageSize;
}

}  // namespace winutil::fileio
