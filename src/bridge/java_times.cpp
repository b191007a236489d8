#include "bridge/java_times.h"

namespace winutil {

namespace {

constexpr std::int64_t fileTimeUnitsPerMillisecond = 10000;
// From 1601-01-01, where FILETIME counts from, to 1970-01-01.
constexpr std::int64_t millisecondsBetweenEpochs = 11644473600000;

}  // namespace

std::int64_t toJavaTime(const FILETIME& time) noexcept {
    const auto units =
        static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
    return units / fileTimeUnitsPerMillisecond - millisecondsBetweenEpochs;
}

FILETIME fromJavaTime(std::int64_t milliseconds) noexcept {
    // Unsigned, so that a time out of range wraps around instead of being undefined.
    const std::uint64_t units =
        (static_cast<std::uint64_t>(milliseconds) + static_cast<std::uint64_t>(millisecondsBetweenEpochs)) *
        static_cast<std::uint64_t>(fileTimeUnitsPerMillisecond);
    return {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
}

}  // namespace winutil
