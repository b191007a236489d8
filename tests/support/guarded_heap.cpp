#include "guarded_heap.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace testbed {

GuardedHeap::GuardedHeap(SystemCalls& system, std::byte filling) : filling_(filling) {
    auto* realFree = system.real<decltype(std::free)>("free");
    auto* realResize = system.real<decltype(std::realloc)>("realloc");
    const auto owns = [this](void* block) {
        const std::lock_guard lock(mutex_);
        return block == nullptr || blocks_.contains(block);
    };
    replacements_.push_back(system.replace<decltype(std::malloc)>(
        "malloc", [this](std::size_t size) { return allocate(size, filling_); }));
    replacements_.push_back(system.replace<decltype(std::calloc)>(
        "calloc",
        [this](std::size_t count, std::size_t size) { return allocate(count * size, std::byte{0}); }));
    replacements_.push_back(system.replace<decltype(std::realloc)>(
        "realloc", [this, owns, realResize](void* block, std::size_t size) {
            return owns(block) ? resize(block, size) : realResize(block, size);
        }));
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

void* GuardedHeap::resize(void* block, std::size_t size) {
    void* made = allocate(size, filling_);
    if (block != nullptr) {
        const std::lock_guard lock(mutex_);
        const auto old = blocks_.find(block);
        std::memcpy(made, block, std::min(size, old->second.size()));
        blocks_.erase(old);
    }
    return made;
}

bool GuardedHeap::release(void* block) {
    const std::lock_guard lock(mutex_);
    return blocks_.erase(block) != 0;
}

}  // namespace testbed
