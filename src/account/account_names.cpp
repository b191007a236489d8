#include "account/account_names.h"

#include <cstddef>
#include <cstdio>
#include <iterator>

#include "bridge/token_user.h"

namespace winutil::account {

namespace {

constexpr std::size_t accountNameCapacity = 1024;  // characters, the terminator included
constexpr DWORD domainCapacity = 128;

// Writes "domain\user", or the user alone. False when the name does not fit: a cut one may be another's.
bool joinAccountName(const wchar_t* domain, const wchar_t* user,
                     wchar_t (&name)[accountNameCapacity]) noexcept {
    const bool bare = domain[0] == L'\0';
    return _snwprintf_s(name, std::size(name), _TRUNCATE, L"%s%s%s", bare ? L"" : domain, bare ? L"" : L"\\",
                        user) >= 0;
}

bool lookUpAccount(const wchar_t* name, void* sid, DWORD& sidSize) noexcept {
    wchar_t domain[domainCapacity];
    DWORD domainSize = domainCapacity;
    SID_NAME_USE use = SidTypeUnknown;
    return LookupAccountNameW(nullptr, name, sid, &sidSize, domain, &domainSize, &use) != FALSE;
}

}  // namespace

bool userName(UserName& name) noexcept {
    DWORD size = userNameCapacity;
    return GetUserNameW(name, &size) != FALSE;
}

bool currentUserDomain(AnsiDomain& domain) noexcept {
    const ProcessHeapMemory<TOKEN_USER> user = currentTokenUser();
    char name[ansiNameCapacity];
    DWORD nameSize = ansiNameCapacity;
    DWORD domainSize = ansiNameCapacity;
    SID_NAME_USE use = SidTypeUnknown;
    return user &&
           LookupAccountSidA(nullptr, user.get()->User.Sid, name, &nameSize, domain, &domainSize, &use);
}

WideString netBiosComputerName() noexcept {
    DWORD size = 0;
    if (GetComputerNameExW(ComputerNamePhysicalNetBIOS, nullptr, &size) ||
        GetLastError() != ERROR_MORE_DATA) {
        return {};
    }
    WideString name = allocate<wchar_t>(std::size_t{size} + 1);
    if (name && !GetComputerNameExW(ComputerNamePhysicalNetBIOS, name.get(), &size)) {
        name.reset();
    }
    return name;
}

bool currentUserSid(SidText& text) noexcept {
    const ProcessHeapMemory<TOKEN_USER> user = currentTokenUser();
    DWORD size = sidTextCapacity;
    return user && sidToText(user.get()->User.Sid, text, size);
}

// Required: nobody is told why there is no SID, because callers ask with names that may not be there.
std::optional<bool> accountSid(const wchar_t* domain, const wchar_t* user, SidText& text) noexcept {
    wchar_t name[accountNameCapacity];
    if (!joinAccountName(domain, user, name) || name[0] == L'\0') {
        return false;
    }
    DWORD size = 0;
    if (!lookUpAccount(name, nullptr, size) && GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return false;
    }
    const DWORD sidSize = size;
    // Required: twice the size that the system asks for, because one that then writes more than it said stays
    // within the block.
    const HeapMemory<std::byte> sid = allocate<std::byte>(2 * std::size_t{sidSize});
    if (!sid) {
        return std::nullopt;
    }
    DWORD textSize = sidTextCapacity;
    return lookUpAccount(name, sid.get(), size) && isSidWithin(sid.get(), sid.get(), sidSize) &&
           sidToText(sid.get(), text, textSize);
}

}  // namespace winutil::account
