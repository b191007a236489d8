#include "account/ldap_filter.h"

#include <cwchar>

namespace winutil::account {

namespace {

// What stands for a character of a value that a filter would take for its own (RFC 4515, section 3); empty
// for any other.
std::wstring_view escapeOf(wchar_t character) noexcept {
    switch (character) {
        case L'*':
            return L"\\2a";
        case L'(':
            return L"\\28";
        case L')':
            return L"\\29";
        case L'\\':
            return L"\\5c";
        case L'\0':
            return L"\\00";
        default:
            return {};
    }
}

}  // namespace

bool nameFilter(std::wstring_view head, std::wstring_view name, LdapFilter& filter) noexcept {
    constexpr std::wstring_view tail = L"))";
    filter[0] = L'\0';
    if (head.size() + name.size() + tail.size() >= ldapFilterLimit) {
        return false;
    }
    wchar_t* end = filter;
    const auto append = [&](std::wstring_view text) noexcept {
        end = std::wmemcpy(end, text.data(), text.size()) + text.size();
    };
    append(head);
    for (const wchar_t& character : name) {
        const std::wstring_view escape = escapeOf(character);
        append(escape.empty() ? std::wstring_view(&character, 1) : escape);
    }
    append(tail);
    *end = L'\0';
    return true;
}

}  // namespace winutil::account
