#pragma once

#include <cstdint>

#include "bridge/credentials.h"
#include "bridge/errors.h"

namespace winutil::account {

// What a check of credentials comes to. Restricted: name and password are right, but the account may not log
// on.
enum class Verdict : std::uint8_t { accepted, restricted, refused };

// Checks credentials and keeps no logon: by a handshake, by a logon and, for a domain other than the
// computer's own, by a connection to it. The message tells why they were not accepted.
Verdict validateUser(const Credentials& account, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::account
