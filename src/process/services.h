#pragma once

#include "bridge/errors.h"

namespace winutil::process {

inline constexpr wchar_t serviceTag[] = L"[WindowsUtil:getServiceStatus]";

// Returns whether a service is running; false, with the reason in `errorBuffer`, when that cannot be told.
bool isServiceRunning(const wchar_t* name, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::process
