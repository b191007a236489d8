// Reading and writing single values. A path of one argument is a full value path, ROOT\key path\value name.
// Narrow paths go to the ANSI calls, with their root compared exactly; wide ones to the Unicode calls, with
// the root compared without regard to case. A null path is that of no value.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <span>

#include "bridge/text.h"

namespace winutil::registry {

// Writes a value, making its key when it is missing. `size` counts bytes.
bool writeValue(const char* path, DWORD type, const void* data, std::size_t size) noexcept;
bool writeValue(const wchar_t* path, DWORD type, const void* data, std::size_t size) noexcept;

// Returns a REG_DWORD, or -1.
std::int64_t readDword(const char* path) noexcept;

// Returns a REG_SZ or REG_EXPAND_SZ of up to 1024 bytes, unexpanded; none when there is no such value.
WideString readText(const char* path) noexcept;

// The same for a key, ROOT\key path, and the name of a value in it.
WideString readText(const char* key, const char* valueName) noexcept;

// Returns the data of a value of any size as text; none also for one whose size never holds still. The value
// must have the expected type; REG_SZ stands for REG_EXPAND_SZ, too. `extraAccess` is joined to the access
// for reading.
WideString readText(const wchar_t* path, REGSAM extraAccess, DWORD expectedType) noexcept;

// The data of a value of any type; empty when there is none or it has more than 1024 bytes.
class SmallValue {
public:
    explicit SmallValue(const char* path) noexcept;
    std::span<const std::byte> bytes() const noexcept { return {data_, size_}; }

private:
    std::byte data_[1024];
    std::size_t size_ = 0;
};

}  // namespace winutil::registry
