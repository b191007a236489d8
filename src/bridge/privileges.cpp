#include "bridge/privileges.h"

#include "bridge/errors.h"
#include "bridge/owners.h"

namespace winutil {

namespace {

// Required: the message is made and dropped, because callers go on without the privilege, and nothing is
// logged at load.
DWORD failed(const wchar_t* tag) noexcept {
    ErrorBuffer errorBuffer;
    errorBuffer.format(L"", tag, GetLastError());
    return ERROR_FUNCTION_FAILED;
}

}  // namespace

DWORD setPrivilege(const char* name, DWORD enable) noexcept {
    KernelHandle token;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, token.receive())) {
        return failed(L"OpenProcessToken");
    }
    TOKEN_PRIVILEGES request = {};
    static_assert(sizeof(request) == 16);
    request.PrivilegeCount = 1;
    if (!LookupPrivilegeValueA(nullptr, name, &request.Privileges[0].Luid)) {
        return failed(L"LookupPrivilegeValue");
    }
    request.Privileges[0].Attributes = enable != 0 ? SE_PRIVILEGE_ENABLED : 0;
    // Required: ERROR_NOT_ALL_ASSIGNED behind a success is not looked for, because the answer says that the
    // request was made, not that the privilege is held.
    if (!AdjustTokenPrivileges(token.get(), FALSE, &request, sizeof(request), nullptr, nullptr)) {
        return failed(L"AdjustTokenPrivileges");
    }
    return 0;
}

ScopedPrivilege::~ScopedPrivilege() {
    if (enabled_) {
        const DWORD error = GetLastError();
        setPrivilege(name_, FALSE);
        SetLastError(error);
    }
}

bool ScopedPrivilege::enable() noexcept {
    enabled_ = setPrivilege(name_, TRUE) == 0;
    return enabled_;
}

}  // namespace winutil
