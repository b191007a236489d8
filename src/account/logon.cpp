#include "account/logon.h"

#include "account/system_message.h"
#include "bridge/owners.h"
#include "bridge/privileges.h"

namespace winutil::account {

namespace {

// The blank at the end of each belongs to it.
constexpr wchar_t logonTag[] = L"[WindowsUtil:SystemPrivilege:impersonateUser:LogonUser] ";
constexpr wchar_t impersonateTag[] =
    L"[WindowsUtil:SystemPrivilege:impersonateUser:ImpersonateLoggedOnUser] ";

}  // namespace

void enableLogonPrivileges() noexcept {
    setPrivilege("SeTcbPrivilege", TRUE);
    setPrivilege("SeChangeNotifyPrivilege", TRUE);
    setPrivilege("SeImpersonatePrivilege", TRUE);
}

bool logonAndImpersonate(const NarrowCredentials& account, std::span<wchar_t> message) noexcept {
    enableLogonPrivileges();
    KernelHandle token;
    if (!LogonUserA(account.user, account.domain, account.password, LOGON32_LOGON_INTERACTIVE,
                    LOGON32_PROVIDER_DEFAULT, token.receive())) {
        appendSystemMessage(message, logonTag, GetLastError());
        return false;
    }
    if (!ImpersonateLoggedOnUser(token.get())) {
        appendSystemMessage(message, impersonateTag, GetLastError());
        return false;
    }
    return true;
}

bool impersonateToSelf(std::span<wchar_t> message) noexcept {
    if (!RevertToSelf()) {
        appendSystemMessage(message, L"", GetLastError());
        return false;
    }
    return true;
}

void networkAuthenticate(const Credentials& account) noexcept {
    KernelHandle token;
    LogonUserW(account.user, account.domain, account.password, LOGON32_LOGON_NETWORK_CLEARTEXT,
               LOGON32_PROVIDER_DEFAULT, token.receive());
}

SelfAtEnd::~SelfAtEnd() {
    const DWORD error = GetLastError();
    RevertToSelf();
    SetLastError(error);
}

}  // namespace winutil::account
