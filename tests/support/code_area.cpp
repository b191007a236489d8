#include "code_area.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace testbed {

namespace {

constexpr std::uintptr_t allocationGranularity = 0x10000;
constexpr std::size_t codeAlignment = 16;

std::uintptr_t alignedUp(std::uintptr_t value, std::uintptr_t alignment) {
    return (value + alignment - 1) / alignment * alignment;
}

}  // namespace

CodeArea::CodeArea(void* memory, std::size_t size)
    : memory_(static_cast<unsigned char*>(memory)), size_(memory == nullptr ? 0 : size) {
    if (memory == nullptr) {
        throw std::runtime_error("no memory for code");
    }
}

CodeArea CodeArea::anywhere(std::size_t size) {
    return CodeArea(VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_EXECUTE_READWRITE), size);
}

CodeArea CodeArea::behind(HMODULE module, std::size_t size) {
    const auto base = reinterpret_cast<std::uintptr_t>(module);
    const std::uintptr_t limit = base + UINT32_MAX - alignedUp(size, allocationGranularity);
    for (std::uintptr_t place = base; place < limit;) {
        MEMORY_BASIC_INFORMATION region = {};
        VirtualQuery(reinterpret_cast<const void*>(place), &region, sizeof region);
        const auto begin = alignedUp(place, allocationGranularity);
        const auto end = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
        if (region.State == MEM_FREE && begin + size <= end) {
            void* memory = VirtualAlloc(reinterpret_cast<void*>(begin), size, MEM_RESERVE | MEM_COMMIT,
                                        PAGE_EXECUTE_READWRITE);
            if (memory != nullptr) {
                return CodeArea(memory, size);
            }
        }
        place = end;
    }
    throw std::runtime_error("no memory for code behind the module");
}

CodeArea::CodeArea(CodeArea&& other) noexcept
    : memory_(std::exchange(other.memory_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      used_(std::exchange(other.used_, 0)) {}

CodeArea& CodeArea::operator=(CodeArea&& other) noexcept {
    std::swap(memory_, other.memory_);
    std::swap(size_, other.size_);
    std::swap(used_, other.used_);
    return *this;
}

CodeArea::~CodeArea() {
    if (memory_ != nullptr) {
        VirtualFree(memory_, 0, MEM_RELEASE);
    }
}

const void* CodeArea::add(std::span<const unsigned char> code) {
    unsigned char* place = memory_ + used_;
    std::memcpy(place, code.data(), code.size());
    used_ += alignedUp(code.size(), codeAlignment);
    return place;
}

}  // namespace testbed
