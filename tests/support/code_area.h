// Executable memory for the few machine instructions that stand between the DLL under test and the system.
#pragma once

#include <windows.h>

#include <cstddef>
#include <span>

namespace testbed {

class CodeArea {
public:
    CodeArea() = default;

    // Memory at any address.
    static CodeArea anywhere(std::size_t size);

    // Memory behind a loaded module and within the reach of a 32-bit offset from its base, as an export table
    // needs.
    static CodeArea behind(HMODULE module, std::size_t size);

    CodeArea(CodeArea&& other) noexcept;
    CodeArea& operator=(CodeArea&& other) noexcept;
    ~CodeArea();

    bool hasRoomFor(std::size_t size) const { return used_ + size <= size_; }

    // Copies code into the area and gives its address there.
    const void* add(std::span<const unsigned char> code);

private:
    CodeArea(void* memory, std::size_t size);

    unsigned char* memory_ = nullptr;
    std::size_t size_ = 0;
    std::size_t used_ = 0;
};

}  // namespace testbed
