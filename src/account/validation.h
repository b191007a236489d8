#pragma once

#include <jni.h>

#include "account/logon.h"

namespace winutil::account {

// Checks credentials and keeps no logon: by a handshake, by a logon and, for a domain other than the
// computer's own, by a connection to it. Credentials that none of them accepts leave an
// AccountRestrictionException or an IOException pending.
void validateUser(JNIEnv* env, const Credentials& account) noexcept;

}  // namespace winutil::account
