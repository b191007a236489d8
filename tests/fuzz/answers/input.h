// The bytes of one input, taken from the front by what answers in the system's place.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <type_traits>

namespace hostile {

class Input {
public:
    explicit Input(std::span<const std::byte> bytes) : left_(bytes) {}

    std::span<const std::byte> bytes(std::size_t count) {
        const std::span<const std::byte> taken = left_.first(std::min(count, left_.size()));
        left_ = left_.subspan(taken.size());
        return taken;
    }
    std::span<const std::byte> rest() { return bytes(left_.size()); }

    // A number, or any plain structure; zero as far as there are no bytes for it.
    template <class T>
    T value() {
        static_assert(std::is_trivially_copyable_v<T>);
        T taken = {};
        copyTo(&taken, sizeof(taken));
        return taken;
    }

    // Fills memory with the next bytes and leaves what they do not reach; returns how many they were.
    std::size_t copyTo(void* memory, std::size_t size) {
        const std::span<const std::byte> taken = bytes(size);
        if (!taken.empty()) {
            std::memcpy(memory, taken.data(), taken.size());
        }
        return taken.size();
    }

    bool empty() const { return left_.empty(); }

private:
    std::span<const std::byte> left_;
};

// What a call fails with. Success comes first: an input that has come to its end has only that to give.
template <std::size_t size, class Code>
Code chooseCode(Input& input, const Code (&codes)[size]) {
    return codes[input.value<unsigned char>() % size];
}

// What lies in memory that nobody has written. Nothing that comes of an input may depend on it.
inline int poison = 0xCD;

}  // namespace hostile
