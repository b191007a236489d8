// What a fuzz target consists of.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "answers/input.h"
#include "windows/finding.h"

namespace fuzz {

// The one parser of the program, with one input. Each target defines it.
void examine(hostile::Input& input);

// A copy of the bytes in a block of exactly their size: one byte too far is seen.
class ExactCopy {
public:
    explicit ExactCopy(std::span<const std::byte> bytes)
        : block_(new std::byte[bytes.size()]), size_(bytes.size()) {
        std::copy(bytes.begin(), bytes.end(), block_.get());
    }
    std::span<const std::byte> bytes() const { return {block_.get(), size_}; }
    template <class T>
    const T* as() const {
        return reinterpret_cast<const T*>(block_.get());
    }

private:
    std::unique_ptr<std::byte[]> block_;
    std::size_t size_;
};

}  // namespace fuzz
