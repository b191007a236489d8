#include "guard_pages.h"

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <utility>

namespace testbed {

namespace {

constexpr std::size_t pageSize = 4096;

// Every allocator aligns its blocks so, and code that is checked for alignment relies on it. Otherwise a
// block ends where the guard page begins, to the byte.
constexpr std::size_t blockAlignment = 16;
const bool aligned = std::getenv("WINUTIL_ALIGNED_BLOCKS") != nullptr;

std::mutex labelsMutex;

// By the address of the guard page.
std::map<std::uintptr_t, std::string>& labels() {
    static std::map<std::uintptr_t, std::string> all;
    return all;
}

std::uintptr_t pageOf(const void* address) {
    return reinterpret_cast<std::uintptr_t>(address) / pageSize * pageSize;
}

}  // namespace

GuardedBuffer::GuardedBuffer(std::size_t size, std::string label) : size_(size) {
    const std::size_t used = (size + pageSize - 1) / pageSize * pageSize;
    // The last page is reserved but never committed.
    pages_ = VirtualAlloc(nullptr, used + pageSize, MEM_RESERVE, PAGE_NOACCESS);
    if (pages_ == nullptr || (used > 0 && !VirtualAlloc(pages_, used, MEM_COMMIT, PAGE_READWRITE))) {
        throw std::bad_alloc();
    }
    std::byte* guard = static_cast<std::byte*>(pages_) + used;
    data_ = guard - (aligned ? (size + blockAlignment - 1) / blockAlignment * blockAlignment : size);
    const std::lock_guard lock(labelsMutex);
    labels()[pageOf(guard)] = std::move(label);
}

GuardedBuffer::GuardedBuffer(std::span<const std::byte> content, std::string label)
    : GuardedBuffer(content.size(), std::move(label)) {
    if (!content.empty()) {
        std::memcpy(data_, content.data(), content.size());
    }
}

GuardedBuffer::GuardedBuffer(GuardedBuffer&& other) noexcept
    : pages_(std::exchange(other.pages_, nullptr)),
      data_(std::exchange(other.data_, nullptr)),
      size_(std::exchange(other.size_, 0)) {}

GuardedBuffer& GuardedBuffer::operator=(GuardedBuffer&& other) noexcept {
    std::swap(pages_, other.pages_);
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    return *this;
}

GuardedBuffer::~GuardedBuffer() {
    if (pages_ != nullptr) {
        {
            const std::lock_guard lock(labelsMutex);
            labels().erase(pageOf(data_ + size_));
        }
        VirtualFree(pages_, 0, MEM_RELEASE);
    }
}

std::string guardedBufferBefore(const void* address) {
    const std::lock_guard lock(labelsMutex);
    const auto found = labels().find(pageOf(address));
    return found == labels().end() ? "" : found->second;
}

}  // namespace testbed
