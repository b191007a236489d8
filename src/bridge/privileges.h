#pragma once

#include <windows.h>

namespace winutil {

// Turns a privilege of the process token on (any non-zero value) or off, for every thread of the process.
// Returns 0 or ERROR_FUNCTION_FAILED; 0 says that the request was made, not that the privilege is held.
DWORD setPrivilege(const char* name, DWORD enable) noexcept;

// Holds a privilege of the process token for a scope and switches it off again at its end if it could be
// enabled.
class ScopedPrivilege {
public:
    explicit ScopedPrivilege(const char* name) noexcept : name_(name) {}
    ScopedPrivilege(const ScopedPrivilege&) = delete;
    ScopedPrivilege& operator=(const ScopedPrivilege&) = delete;
    ~ScopedPrivilege();

    // Returns whether the request succeeded.
    bool enable() noexcept;
    bool enabled() const noexcept { return enabled_; }

private:
    const char* name_;
    bool enabled_ = false;
};

}  // namespace winutil
