#pragma once

#include "bridge/text.h"

namespace winutil::network {

// Returns the path with the share in front that its drive letter stands for; none when it is on no network
// drive, or when that cannot be told.
WideString universalNameOf(const wchar_t* path) noexcept;

}  // namespace winutil::network
