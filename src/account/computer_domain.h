#pragma once

#include <cstddef>

namespace winutil::account {

// Characters of a computer's DNS name, the terminator included.
inline constexpr std::size_t computerNameCapacity = 1024;
using ComputerName = wchar_t[computerNameCapacity];

// Writes the computer's DNS domain: its fully qualified name behind the first dot, or the whole name when
// there is no dot. An empty text and false when the name cannot be read.
bool computerDnsDomain(ComputerName& domain) noexcept;

}  // namespace winutil::account
