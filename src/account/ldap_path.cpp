#include "account/ldap_path.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace winutil::account {

void domainLdapPath(const wchar_t* dnsDomain, LdapPath& path) noexcept {
    int length = _snwprintf_s(path, ldapPathCapacity, _TRUNCATE, L"LDAP://%s/", dnsDomain);
    std::wstring_view rest = dnsDomain;
    const wchar_t* separator = L"";
    for (bool more = true; more && length >= 0; separator = L",") {
        const std::size_t end = std::min(rest.find(L'.'), rest.size());
        wchar_t* behind = path + length;
        const std::size_t room = ldapPathCapacity - static_cast<std::size_t>(length);
        const int added = _snwprintf_s(behind, room, _TRUNCATE, L"%sdc=%.*s", separator,
                                       static_cast<int>(end), rest.data());
        length = added < 0 ? added : length + added;
        more = end < rest.size();
        rest.remove_prefix(more ? end + 1 : end);
    }
    if (length < 0) {
        path[0] = L'\0';
    }
}

}  // namespace winutil::account
