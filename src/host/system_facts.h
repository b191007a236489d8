// What kind of Windows this is.
#pragma once

#include <windows.h>

namespace winutil::host {

// Returns the version that the system shows this process; all zero when it does not tell.
OSVERSIONINFOEXA systemVersion() noexcept;

// Returns 1 for a workstation, 2 for a domain controller, 3 for another server, -1 for what is not of the NT
// family.
int productType() noexcept;

}  // namespace winutil::host
