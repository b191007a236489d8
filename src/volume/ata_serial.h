#pragma once

#include <cstddef>
#include <span>

namespace winutil::volume {

// Bytes of the serial number of an ATA drive, the terminator included.
inline constexpr std::size_t ataSerialCapacity = 21;
using AtaSerial = char[ataSerialCapacity];

// The answer of a drive to IDENTIFY DEVICE: 256 words.
using IdentifyData = std::span<const std::byte, 512>;

// Copies the serial number out of identify data, where each of its words has its two characters swapped. The
// blanks that drives put around it stay.
inline void copySerial(IdentifyData data, AtaSerial& serial) noexcept {
    constexpr std::size_t first = 20;  // words 10 to 19
    for (std::size_t i = 0; i + 1 < ataSerialCapacity; i += 2) {
        serial[i] = static_cast<char>(data[first + i + 1]);
        serial[i + 1] = static_cast<char>(data[first + i]);
    }
    serial[ataSerialCapacity - 1] = '\0';
}

// Asks the drive itself for its serial number; empty when it cannot be had. Returns false when there was no
// memory for asking.
bool ataIdentifySerial(const char* devicePath, AtaSerial& serial) noexcept;

}  // namespace winutil::volume
