// Security identifiers as text.
#pragma once

#include <windows.h>

#include <cstddef>

namespace winutil::account {

// Bytes of a SID's text, the terminator included: room for eight sub-authorities. The text of a longer SID is
// not made.
inline constexpr DWORD sidTextCapacity = 128;
using SidText = char[sidTextCapacity];

// Returns whether a SID ends where its memory does, or before: its own count of sub-authorities says how long
// it is, and whoever compares or prints it believes that count.
bool isSidWithin(const void* sid, const void* memory, std::size_t size) noexcept;

// Writes the text of a SID. Returns false for what is no SID, and, with ERROR_INSUFFICIENT_BUFFER and the
// bytes that it takes in `size`, when the buffer is too small. All of the SID must be readable.
bool sidToText(PSID sid, char* buffer, DWORD& size) noexcept;

}  // namespace winutil::account
