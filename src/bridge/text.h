// Texts in memory, without Java.
#pragma once

#include <windows.h>

#include <cstddef>

#include "bridge/owners.h"

namespace winutil {

// Zero-terminated UTF-16 text in memory from malloc.
using WideString = HeapMemory<wchar_t>;

// Returns a copy of the first `length` characters of `text`, with room for `extra` more; none when memory is
// exhausted.
WideString copyText(const wchar_t* text, std::size_t length, std::size_t extra = 0) noexcept;

// Converts `source` from the active ANSI code page; does nothing when either pointer is null.
// `capacity` counts wide characters of `destination`, the terminator included.
void ansiToWide(wchar_t* destination, const char* source, int capacity) noexcept;

// Returns a text in the active ANSI code page, the empty text when it cannot be converted; none when memory
// is exhausted.
HeapMemory<char> wideToAnsi(const wchar_t* source) noexcept;

}  // namespace winutil
