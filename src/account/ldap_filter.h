#pragma once

#include <cstddef>
#include <string_view>

namespace winutil::account {

// Characters of a filter of the directory, the terminator included: as it would be without escapes, and with
// one of three characters for each of its own.
inline constexpr std::size_t ldapFilterLimit = 1024;
inline constexpr std::size_t ldapFilterCapacity = 3 * ldapFilterLimit;
using LdapFilter = wchar_t[ldapFilterCapacity];

// Writes a filter for the objects of a name: `head`, which opens two parentheses, and the name in such a form
// that none of its characters means anything in a filter. Returns false for a name beyond the limit: cut, it
// would be another's.
bool nameFilter(std::wstring_view head, std::wstring_view name, LdapFilter& filter) noexcept;

}  // namespace winutil::account
