#include "account/logon.h"

#include "account/system_message.h"
#include "bridge/owners.h"
#include "bridge/privileges.h"

namespace winutil::account {

namespace {

// The blank at the end belongs to it.
constexpr wchar_t impersonateTag[] =
    L"[WindowsUtil:SystemPrivilege:impersonateUser:ImpersonateLoggedOnUser] ";

}  // namespace

void enableLogonPrivileges() noexcept {
    setPrivilege("SeTcbPrivilege", TRUE);
    setPrivilege("SeChangeNotifyPrivilege", TRUE);
    setPrivilege("SeImpersonatePrivilege", TRUE);
}

bool logonAndImpersonate(const NarrowCredentials& account, ErrorBuffer& errorBuffer) noexcept {
    enableLogonPrivileges();
    KernelHandle token;
    // Required: modified UTF-8 for an ANSI call, because the Java side passes ASCII, which is the same in
    // both.
    if (!LogonUserA(account.user, account.domain, account.password, LOGON32_LOGON_INTERACTIVE,
                    LOGON32_PROVIDER_DEFAULT, token.receive())) {
        appendSystemMessage(errorBuffer, logonTag, GetLastError());
        return false;
    }
    if (!ImpersonateLoggedOnUser(token.get())) {
        appendSystemMessage(errorBuffer, impersonateTag, GetLastError());
        return false;
    }
    return true;
}

bool impersonateToSelf(ErrorBuffer& errorBuffer) noexcept {
    if (!RevertToSelf()) {
        appendSystemMessage(errorBuffer, L"", GetLastError());
        return false;
    }
    return true;
}

void networkAuthenticate(const Credentials& account) noexcept {
    KernelHandle token;
    // Required: what became of it is not looked at, because the Java side presents credentials with this and
    // does not test them.
    LogonUserW(account.user, account.domain, account.password, LOGON32_LOGON_NETWORK_CLEARTEXT,
               LOGON32_PROVIDER_DEFAULT, token.receive());
}

SelfAtEnd::~SelfAtEnd() {
    const DWORD error = GetLastError();
    RevertToSelf();
    SetLastError(error);
}

}  // namespace winutil::account
