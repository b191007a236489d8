#pragma once

#include <windows.h>

#include "bridge/errors.h"

namespace winutil::account {

// Turns a message into "message tag (code) system text", cut where the buffer ends: an empty one begins with
// a blank then, and a second failure is told behind the first.
void appendSystemMessage(ErrorBuffer& errorBuffer, const wchar_t* tag, DWORD code) noexcept;

// Cuts a message at the 255 characters that the account methods raise; the access checks raise a longer one
// whole.
void cutMessage(ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::account
