#pragma once

#include <string_view>

namespace winutil::volume {

// Returns the decimal number at the end of a device path such as \\.\PHYSICALDRIVE3; -1 when the path does
// not end in a digit. A number that is too large wraps around, and may come out negative.
inline int trailingDiskNumber(std::wstring_view devicePath) noexcept {
    std::size_t first = devicePath.size();
    while (first > 0 && devicePath[first - 1] >= L'0' && devicePath[first - 1] <= L'9') {
        --first;
    }
    if (first == devicePath.size()) {
        return -1;
    }
    unsigned number = 0;
    for (std::size_t i = first; i < devicePath.size(); ++i) {
        number = number * 10 + static_cast<unsigned>(devicePath[i] - L'0');
    }
    return static_cast<int>(number);
}

}  // namespace winutil::volume
