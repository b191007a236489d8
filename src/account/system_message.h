#pragma once

#include <windows.h>

#include <cstddef>
#include <span>

namespace winutil::account {

// Characters of the message that an account method collects for its exception, the terminator included.
inline constexpr std::size_t messageCapacity = 256;

// Turns a message into "message tag (code) system text", cut where the buffer ends: an empty one begins with
// a blank then, and a second failure is told behind the first.
void appendSystemMessage(std::span<wchar_t> message, const wchar_t* tag, DWORD code) noexcept;

}  // namespace winutil::account
