// The reparse data buffer: as a link kind and a target text, and made for a junction.
#pragma once

#include <windows.h>

#include <cstddef>
#include <span>
#include <string_view>

namespace winutil::filesystem {

// Kinds of link. Any other tag is answered with the tag itself, its low byte set to 0xFF.
inline constexpr DWORD linkKindDirectory = 0;  // WinFile records only
inline constexpr DWORD linkKindFile = 2;       // WinFile records only
inline constexpr DWORD linkKindJunction = 16;
inline constexpr DWORD linkKindFileSymlink = 17;
inline constexpr DWORD linkKindDirectorySymlink = 18;
inline constexpr DWORD linkKindNone = 255;

// Characters of a target text, the terminator included.
inline constexpr std::size_t linkTargetCapacity = 2048;
using LinkTarget = wchar_t[linkTargetCapacity];

// What FSCTL_GET_REPARSE_POINT and FSCTL_SET_REPARSE_POINT transfer.
struct ReparseBuffer {
    alignas(DWORD) std::byte bytes[MAXIMUM_REPARSE_DATA_BUFFER_SIZE];
};
static_assert(sizeof(ReparseBuffer) == 16384);

// Reads the kind and the target of what FSCTL_GET_REPARSE_POINT gave. The bytes come from the disk and may be
// anything: nothing outside `data` is read, and a target that does not fit gives an empty text, never a cut
// one. `attributes` tells a symbolic link to a directory from one to a file.
DWORD parseReparseData(std::span<const std::byte> data, DWORD attributes, LinkTarget& target) noexcept;

// Writes the name by which the object manager knows a junction's target: the empty text when it does not fit.
void writeJunctionName(std::wstring_view target, LinkTarget& name) noexcept;

// Fills a zeroed buffer with the reparse point of a junction to `name`, without a name for display. Returns
// how many bytes of it are to be sent.
DWORD fillJunctionData(const LinkTarget& name, ReparseBuffer& buffer) noexcept;

}  // namespace winutil::filesystem
