// Memory that ends right before a page nobody may touch: one byte too far faults.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <type_traits>

namespace testbed {

class GuardedBuffer {
public:
    GuardedBuffer() = default;

    // Filled with zeros. The label names the buffer in the report of a fault.
    GuardedBuffer(std::size_t size, std::string label);
    explicit GuardedBuffer(std::span<const std::byte> content, std::string label = "guarded buffer");
    GuardedBuffer(GuardedBuffer&& other) noexcept;
    GuardedBuffer& operator=(GuardedBuffer&& other) noexcept;
    ~GuardedBuffer();

    // For an empty buffer, the address of the guard page.
    std::byte* data() const { return data_; }
    std::size_t size() const { return size_; }
    std::span<std::byte> bytes() const { return {data_, size_}; }

    template <class T>
    T* as() const {
        static_assert(std::is_trivially_copyable_v<T>);
        return reinterpret_cast<T*>(data_);
    }

private:
    void* pages_ = nullptr;
    std::byte* data_ = nullptr;
    std::size_t size_ = 0;
};

// The label of the buffer whose guard page an address lies in; empty when there is none.
std::string guardedBufferBefore(const void* address);

}  // namespace testbed
