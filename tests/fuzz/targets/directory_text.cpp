// Names of domains and groups, as paths and filters of the directory.
#include <vector>

#include "account/ldap_filter.h"
#include "account/ldap_path.h"
#include "target.h"

namespace {

using namespace winutil::account;

// Within a filter a name must not open or close anything.
void requireBalanced(std::wstring_view filter) {
    int open = 0;
    for (const wchar_t character : filter) {
        open += character == L'(' ? 1 : 0;
        open -= character == L')' ? 1 : 0;
        fuzz::require(character != L'*', "a name in a filter stands for any");
    }
    fuzz::require(open == 0, "a name changes how a filter is read");
}

}  // namespace

void fuzz::examine(hostile::Input& input) {
    const ExactCopy data(input.rest());
    const std::wstring_view name(data.as<wchar_t>(), data.bytes().size() / sizeof(wchar_t));
    LdapFilter filter;
    if (nameFilter(L"(&(objectClass=group)(cn=", name, filter)) {
        requireBalanced(filter);
    }
    std::vector<wchar_t> domain(name.begin(), name.end());
    domain.push_back(L'\0');
    LdapPath path;
    domainLdapPath(domain.data(), path);
    require(wcsnlen(path, ldapPathCapacity) < ldapPathCapacity, "a path of the directory has no end");
    require(path[0] == L'\0' || std::wcsncmp(path, L"LDAP://", 7) == 0, "a path is none of the directory");
}
