// Names and SIDs of the user that the thread acts as, of the computer, and of named accounts.
#pragma once

#include <windows.h>

#include <optional>

#include "account/sids.h"
#include "bridge/text.h"

namespace winutil::account {

// Characters of a user's name, the terminator included.
inline constexpr DWORD userNameCapacity = 1024;
using UserName = wchar_t[userNameCapacity];

// Writes the name of the user that the thread acts as, without domain. Returns false when it cannot be had.
bool userName(UserName& name) noexcept;

// Bytes of an account's or a domain's name in the active code page, the terminator included.
inline constexpr DWORD ansiNameCapacity = 256;
using AnsiDomain = char[ansiNameCapacity];

// Writes the domain of the user that the thread acts as. Returns false when it cannot be had.
bool currentUserDomain(AnsiDomain& domain) noexcept;

// Returns the computer's physical NetBIOS name, or none.
WideString netBiosComputerName() noexcept;

// Writes the SID of the user that the thread acts as. Returns false when it cannot be had.
bool currentUserSid(SidText& text) noexcept;

// Writes the SID of a named account; `domain` may be empty. Returns false when there is none to be had, and
// none when memory is exhausted.
std::optional<bool> accountSid(const wchar_t* domain, const wchar_t* user, SidText& text) noexcept;

}  // namespace winutil::account
