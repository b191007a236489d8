// Logging accounts on, and acting as one of them on the calling thread.
#pragma once

#include <windows.h>

#include "bridge/credentials.h"
#include "bridge/errors.h"

namespace winutil::account {

// What a failed logon is told under; the blank at the end belongs to it.
inline constexpr wchar_t logonTag[] = L"[WindowsUtil:SystemPrivilege:impersonateUser:LogonUser] ";

// Switches on, for the whole process and for good, the privileges that a logon may take.
void enableLogonPrivileges() noexcept;

// Logs an account on and lets the calling thread act as it. When either fails the thread acts as before, and
// the reason is appended to the message.
bool logonAndImpersonate(const NarrowCredentials& account, ErrorBuffer& errorBuffer) noexcept;

// Lets the calling thread act as the process again; when that fails the reason is appended to the message.
bool impersonateToSelf(ErrorBuffer& errorBuffer) noexcept;

// Presents credentials to the network. Whether they are accepted is not told.
void networkAuthenticate(const Credentials& account) noexcept;

// Lets the calling thread act as the process again at the end of a scope, whoever it was made to act as.
class SelfAtEnd {
public:
    SelfAtEnd() noexcept = default;
    SelfAtEnd(const SelfAtEnd&) = delete;
    SelfAtEnd& operator=(const SelfAtEnd&) = delete;
    ~SelfAtEnd();
};

}  // namespace winutil::account
