#pragma once

#include <windows.h>

namespace winutil::account {

// Returns whether a token is that of this computer's built-in guest account; false when that cannot be told.
bool isGuestToken(HANDLE token) noexcept;

}  // namespace winutil::account
