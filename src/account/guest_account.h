#pragma once

#include <windows.h>

#include <optional>

namespace winutil::account {

// Returns whether a token is that of this computer's built-in guest account; false when that cannot be told,
// and none when it cannot for want of memory.
std::optional<bool> isGuestToken(HANDLE token) noexcept;

}  // namespace winutil::account
