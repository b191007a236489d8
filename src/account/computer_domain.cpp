#include "account/computer_domain.h"

#include <windows.h>

#include <cwchar>

namespace winutil::account {

bool computerDnsDomain(ComputerName& domain) noexcept {
    domain[0] = L'\0';
    DWORD size = computerNameCapacity;
    if (!GetComputerNameExW(ComputerNameDnsFullyQualified, domain, &size)) {
        domain[0] = L'\0';
        return false;
    }
    if (const wchar_t* dot = std::wcschr(domain, L'.')) {
        std::wmemmove(domain, dot + 1, std::wcslen(dot + 1) + 1);
    }
    return true;
}

}  // namespace winutil::account
