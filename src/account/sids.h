// Security identifiers as text.
#pragma once

#include <windows.h>

namespace winutil::account {

// Bytes of a SID's text, the terminator included: room for eight sub-authorities. The text of a longer SID is
// not made.
inline constexpr DWORD sidTextCapacity = 128;
using SidText = char[sidTextCapacity];

// Writes the text of a SID. Returns false for what is no SID, and, with ERROR_INSUFFICIENT_BUFFER and the
// bytes that it takes in `size`, when the buffer is too small. All of the SID must be readable.
bool sidToText(PSID sid, char* buffer, DWORD& size) noexcept;

}  // namespace winutil::account
