// What the layout of a disk says of its partitions.
#pragma once

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winioctl.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>

namespace winutil::volume {

// Basic data, as the partition table of a GPT disk calls it.
inline constexpr GUID basicDataPartition = {
    0xEBD0A0A2, 0xB9E5, 0x4433, {0x87, 0xC0, 0x68, 0xB6, 0xB7, 0x26, 0x99, 0xC7}};

// Returns the entries of a layout that lies at the start of `size` bytes: no more than these hold, whatever
// the layout's own count says.
inline std::span<const PARTITION_INFORMATION_EX> partitionEntries(const DRIVE_LAYOUT_INFORMATION_EX& layout,
                                                                  std::size_t size) noexcept {
    constexpr std::size_t headerSize = offsetof(DRIVE_LAYOUT_INFORMATION_EX, PartitionEntry);
    const std::size_t room = (std::max(size, headerSize) - headerSize) / sizeof(PARTITION_INFORMATION_EX);
    return {layout.PartitionEntry, std::min<std::size_t>(layout.PartitionCount, room)};
}

// Returns whether a partition may hold NTFS: on an MBR disk one of the IFS type, which exFAT has too, on a
// GPT disk one for basic data. `style` is that of the disk; the entry's own is not asked.
inline bool isDataPartition(DWORD style, const PARTITION_INFORMATION_EX& entry) noexcept {
    if (entry.PartitionLength.QuadPart < 1) {
        return false;
    }
    switch (style) {
        case PARTITION_STYLE_MBR:
            return entry.Mbr.RecognizedPartition && entry.Mbr.PartitionType == PARTITION_IFS;
        case PARTITION_STYLE_GPT:
            return std::memcmp(&entry.Gpt.PartitionType, &basicDataPartition, sizeof(GUID)) == 0;
        default:
            return false;
    }
}

static_assert(PARTITION_STYLE_MBR == 0 && PARTITION_STYLE_GPT == 1 && PARTITION_IFS == 0x07);

}  // namespace winutil::volume
