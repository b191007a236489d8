// Java time: milliseconds since 1970-01-01 UTC.
#pragma once

#include <windows.h>

#include <cstdint>

namespace winutil {

// Division truncates toward zero before the epochs are moved.
std::int64_t toJavaTime(const FILETIME& time) noexcept;

// A time out of FILETIME's range wraps around.
FILETIME fromJavaTime(std::int64_t milliseconds) noexcept;

}  // namespace winutil
