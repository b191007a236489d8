#pragma once

#include <algorithm>
#include <string_view>

namespace winutil::volume {

// Returns the first path with a drive letter among the mount points of a volume, strings that end with a zero
// each and together with an empty one; empty when there is none. A folder below a drive letter has the form
// too.
inline std::wstring_view findDriveLetterPath(std::wstring_view mountPoints) noexcept {
    while (!mountPoints.empty() && mountPoints.front() != L'\0') {
        const std::size_t length = std::min(mountPoints.find(L'\0'), mountPoints.size());
        const std::wstring_view path(mountPoints.data(), length);
        if (path.size() >= 3 && path[1] == L':' && path[2] == L'\\') {
            return path;
        }
        mountPoints.remove_prefix(std::min(length + 1, mountPoints.size()));
    }
    return {};
}

}  // namespace winutil::volume
