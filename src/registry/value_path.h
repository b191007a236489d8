#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace winutil::registry {

// A full value path, ROOT\key path\value name, taken apart. False for no path, for one without a backslash,
// and for one of 1024 characters or more, which is not cut: it would name another value.
template <class Char>
class ValuePath {
public:
    explicit ValuePath(const Char* path) noexcept {
        if (path == nullptr) {
            return;
        }
        constexpr Char backslash = '\\';
        const std::basic_string_view<Char> text(path);
        const std::size_t last = text.rfind(backslash);
        if (text.size() >= std::size(text_) || last == text.npos) {
            return;
        }
        const std::size_t first = std::min(text.find(backslash), last);
        std::copy_n(path, text.size() + 1, text_);
        text_[first] = 0;
        text_[last] = 0;
        // With a single backslash the key path is the empty text that ends the root.
        keyPath_ = first == last ? text_ + first : text_ + first + 1;
        valueName_ = text_ + last + 1;
    }
    ValuePath(const ValuePath&) = delete;
    ValuePath& operator=(const ValuePath&) = delete;
    ~ValuePath() = default;

    explicit operator bool() const noexcept { return valueName_ != nullptr; }
    const Char* root() const noexcept { return text_; }
    const Char* keyPath() const noexcept { return keyPath_; }
    const Char* valueName() const noexcept { return valueName_; }

private:
    Char text_[1024];
    const Char* keyPath_ = nullptr;
    const Char* valueName_ = nullptr;
};

}  // namespace winutil::registry
