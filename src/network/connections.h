// Connecting and disconnecting network shares, and what is asked about a single connection.
#pragma once

#include <windows.h>

namespace winutil::network {

// Connects to a share, without a local device, and cancels what connection there was before. The connection
// stays open. Returns a Win32 code, 0 for success; a share that is connected or remembered already is one.
DWORD connectShare(const wchar_t* user, const wchar_t* password, const wchar_t* remoteName) noexcept;

// Ends a connection, by local device or remote name, unless files on it are open. Returns a Win32 code, by
// the same rules.
DWORD disconnectShare(const wchar_t* name) noexcept;

// Characters of the user of a connection, the terminator included.
inline constexpr DWORD connectionUserCapacity = 256;
using ConnectionUser = wchar_t[connectionUserCapacity];

// Writes the user that a connection was made with, or an empty text. Returns a Win32 code, 0 for success.
DWORD readConnectionUser(const wchar_t* name, ConnectionUser& user) noexcept;

// Returns whether the machine is connected by modem, local network or proxy; false when that cannot be told.
bool isConnected() noexcept;

}  // namespace winutil::network
