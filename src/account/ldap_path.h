#pragma once

#include <cstddef>

namespace winutil::account {

// Characters of a directory path, the terminator included.
inline constexpr std::size_t ldapPathCapacity = 4096;
using LdapPath = wchar_t[ldapPathCapacity];

// Writes the directory path of a DNS domain: of "corp.example.com" it makes
// "LDAP://corp.example.com/dc=corp,dc=example,dc=com". A path that does not fit stays empty.
void domainLdapPath(const wchar_t* dnsDomain, LdapPath& path) noexcept;

}  // namespace winutil::account
