// The tokens of tests about impersonation.
#pragma once

#include <windows.h>

namespace testbed {

// A token of the process' own user that a thread can impersonate; the caller closes it.
inline HANDLE impersonationToken() {
    HANDLE own = nullptr;
    HANDLE copy = nullptr;
    OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &own);
    DuplicateTokenEx(own, TOKEN_ALL_ACCESS, nullptr, SecurityImpersonation, TokenImpersonation, &copy);
    CloseHandle(own);
    return copy;
}

// Whether the calling thread acts as somebody.
inline bool isImpersonating() {
    HANDLE token = nullptr;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token)) {
        return false;
    }
    CloseHandle(token);
    return true;
}

}  // namespace testbed
