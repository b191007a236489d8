// Logging accounts on, and acting as one of them on the calling thread.
#pragma once

#include <windows.h>

#include <span>

namespace winutil::account {

// What the ANSI logon takes, as it is.
struct NarrowCredentials {
    const char* domain;
    const char* user;
    const char* password;
};

// What the Unicode calls take.
struct Credentials {
    const wchar_t* domain;
    const wchar_t* user;
    const wchar_t* password;
};

// Switches on, for the whole process and for good, the privileges that a logon may take.
void enableLogonPrivileges() noexcept;

// Logs an account on and lets the calling thread act as it. When either fails the thread acts as before, and
// the reason is appended to `message`.
bool logonAndImpersonate(const NarrowCredentials& account, std::span<wchar_t> message) noexcept;

// Lets the calling thread act as the process again; when that fails the reason is appended to `message`.
bool impersonateToSelf(std::span<wchar_t> message) noexcept;

// Presents credentials to the network. Whether they are accepted is not told, deliberately: this is not a
// test of them.
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
