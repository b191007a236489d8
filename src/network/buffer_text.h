#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <span>
#include <string_view>

namespace winutil::network {

// Returns a text that a network provider put into a buffer, at most `limit` characters of it: in there it
// ends with the buffer at the latest, whether or not the provider ended it. Any other ends at its zero.
inline std::wstring_view textIn(std::span<const std::byte> buffer, const wchar_t* text,
                                std::size_t limit) noexcept {
    const auto offset =
        reinterpret_cast<std::uintptr_t>(text) - reinterpret_cast<std::uintptr_t>(buffer.data());
    if (offset <= buffer.size()) {
        limit = std::min(limit, (buffer.size() - offset) / sizeof(wchar_t));
    }
    return {text, wcsnlen(text, limit)};
}

}  // namespace winutil::network
