#pragma once

#include <windows.h>

#include "bridge/owners.h"

namespace winutil::account {

// Returns the user of a token, none on any failure. Its SID lies within the memory that comes back.
ProcessHeapMemory<TOKEN_USER> tokenUser(HANDLE token) noexcept;

// Returns the user that the thread acts as, by the same rules: the impersonated one, or that of the process.
ProcessHeapMemory<TOKEN_USER> currentTokenUser() noexcept;

}  // namespace winutil::account
