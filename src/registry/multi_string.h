#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace winutil::registry {

// Takes the next string off the data of a REG_MULTI_SZ. The list ends at its first empty string, or where the
// data ends: neither a string nor the list needs its zero.
inline std::string_view takeString(std::string_view& list) noexcept {
    const std::size_t length = std::min(list.find('\0'), list.size());
    const std::string_view text(list.data(), length);
    list.remove_prefix(std::min(length + 1, list.size()));
    return text;
}

inline std::size_t countStrings(std::string_view list) noexcept {
    std::size_t count = 0;
    while (!takeString(list).empty()) {
        ++count;
    }
    return count;
}

}  // namespace winutil::registry
