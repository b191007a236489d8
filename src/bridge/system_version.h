#pragma once

#include <windows.h>

namespace winutil {

// Reads the Windows version that the system shows this process. Returns false when it cannot be told.
bool readSystemVersion(OSVERSIONINFOA& version) noexcept;

}  // namespace winutil
