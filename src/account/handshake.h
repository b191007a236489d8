#pragma once

#include "bridge/credentials.h"

namespace winutil::account {

// Checks credentials by an NTLM handshake that the library plays against itself, as client and as server.
// True when they were accepted and are not merely good for the guest account; no logon is kept.
bool validateWithSspi(const Credentials& account) noexcept;

}  // namespace winutil::account
