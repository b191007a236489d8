#pragma once

#include <windows.h>

#include <cstddef>
#include <string_view>

namespace winutil::fileio {

// Returns how many characters of a path name the root that its volume is asked by; 0 where the path has none.
std::size_t volumeRootLength(std::wstring_view path) noexcept;

// Returns the bytes per sector of the volume that holds `path`, 0 when it cannot be found. The path is cut
// for the length of the call and restored.
DWORD sectorSize(wchar_t* path) noexcept;

DWORD pageSize() noexcept;

}  // namespace winutil::fileio
