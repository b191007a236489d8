// A number that two lists of entries share when they hold the same entries, in whatever order. The Java side
// computes the same one (Digest.java): equal digests say that two contenders did the same work.
#pragma once

#include <cstdint>
#include <string_view>

namespace bench {

// What a digest covers beside the names.
enum Field : int {
    fieldDirectory = 1,
    fieldSize = 2,
    fieldTime = 4,
    fieldAttributes = 8,
    fieldSecurity = 16,
};

class EntryDigest {
public:
    explicit EntryDigest(std::wstring_view name) noexcept { add(name); }

    void add(std::wstring_view text) noexcept {
        for (const wchar_t unit : text) {
            add(std::uint64_t{static_cast<std::uint16_t>(unit)});
        }
    }

    void add(std::uint64_t value) noexcept {
        hash_ = (hash_ ^ value) * 0x100000001B3U;
        hash_ ^= hash_ >> 32;
    }

    std::uint64_t get() const noexcept { return hash_; }

private:
    std::uint64_t hash_ = 0xCBF29CE484222325U;
};

}  // namespace bench
