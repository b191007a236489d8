// The users of tokens.
#pragma once

#include <windows.h>

#include <cstddef>

#include "bridge/owners.h"

namespace winutil {

// Returns whether a SID ends where its memory does, or before: its own count of sub-authorities says how long
// it is, and whoever compares or prints it believes that count.
bool isSidWithin(const void* sid, const void* memory, std::size_t size) noexcept;

// Returns the user of a token, none on any failure, with its reason in the last error
// (ERROR_NOT_ENOUGH_MEMORY where it is the library's memory). Its SID lies within the memory that comes back.
ProcessHeapMemory<TOKEN_USER> tokenUser(HANDLE token) noexcept;

// Returns the user that the thread acts as, by the same rules: the impersonated one, or that of the process.
ProcessHeapMemory<TOKEN_USER> currentTokenUser() noexcept;

}  // namespace winutil
