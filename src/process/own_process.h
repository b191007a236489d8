// The process that the library runs in.
#pragma once

#include <windows.h>

namespace winutil::process {

// Lowers the priority to "below normal". Returns what the system answered.
BOOL lowerPriority() noexcept;

// Returns the terminal-services session, 0 when it cannot be had.
DWORD ownSession() noexcept;

}  // namespace winutil::process
