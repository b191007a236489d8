#include "guarded_heap.h"

#include <algorithm>
#include <cstdlib>

namespace testbed {

GuardedHeap::GuardedHeap(SystemCalls& system, std::byte filling) : filling_(filling) {
    auto* realFree = system.real<decltype(std::free)>("free");
    replacements_.push_back(system.replace<decltype(std::malloc)>(
        "malloc", [this](std::size_t size) { return allocate(size, filling_); }));
    replacements_.push_back(system.replace<decltype(std::calloc)>(
        "calloc",
        [this](std::size_t count, std::size_t size) { return allocate(count * size, std::byte{0}); }));
    replacements_.push_back(system.replace<decltype(std::free)>("free", [this, realFree](void* block) {
        if (!release(block)) {
            realFree(block);
        }
    }));
}

void* GuardedHeap::allocate(std::size_t size, std::byte filling) {
    GuardedBuffer buffer(size, "a block of " + std::to_string(size) + " bytes that the library allocated");
    std::ranges::fill(buffer.bytes(), filling);
    void* block = buffer.data();
    const std::lock_guard lock(mutex_);
    blocks_.emplace(block, std::move(buffer));
    return block;
}

bool GuardedHeap::release(void* block) {
    const std::lock_guard lock(mutex_);
    return blocks_.erase(block) != 0;
}

}  // namespace testbed
