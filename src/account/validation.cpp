#include "account/validation.h"

#include <winnetwk.h>

#include <cstdio>
#include <cwchar>
#include <iterator>

#include "account/computer_domain.h"
#include "account/handshake.h"
#include "account/system_message.h"
#include "bridge/errors.h"
#include "bridge/owners.h"
#include "bridge/paths.h"

namespace winutil::account {

namespace {

constexpr std::size_t remoteNameCapacity = 1024;

// Checks credentials against another domain by connecting to it; no connection remains.
void validateByNetworkConnection(JNIEnv* env, const Credentials& account) noexcept {
    wchar_t remoteName[remoteNameCapacity];
    _snwprintf_s(remoteName, std::size(remoteName), _TRUNCATE, L"%s%s",
                 beginsAsNetworkPath(account.domain) ? L"" : L"\\\\", account.domain);
    NETRESOURCEW resource = {};
    resource.dwType = RESOURCETYPE_DISK;
    resource.lpRemoteName = remoteName;
    WNetCancelConnectionW(remoteName, FALSE);
    wchar_t accessName[remoteNameCapacity];
    auto accessNameSize = static_cast<DWORD>(std::size(accessName));
    DWORD result = 0;
    const DWORD code = WNetUseConnectionW(nullptr, &resource, account.password, account.user, CONNECT_PROMPT,
                                          accessName, &accessNameSize, &result);
    WNetCancelConnectionW(remoteName, FALSE);
    if (code != NO_ERROR) {
        ErrorBuffer message;
        formatWin32Error(L"WNetUseConnectionW", code, message.text(), ErrorBuffer::capacity);
        throwIOException(env, message.text());
    }
}

bool logonSucceeds(const Credentials& account) noexcept {
    enableLogonPrivileges();
    KernelHandle token;
    return LogonUserW(account.user, account.domain, account.password, LOGON32_LOGON_INTERACTIVE,
                      LOGON32_PROVIDER_DEFAULT, token.receive()) != FALSE;
}

}  // namespace

void validateUser(JNIEnv* env, const Credentials& account) noexcept {
    if (validateWithSspi(account) || logonSucceeds(account)) {
        return;
    }
    const DWORD code = GetLastError();
    wchar_t message[messageCapacity] = {};
    appendSystemMessage(message, L"", code);
    if (code == ERROR_SUCCESS) {
        return;
    }
    // Read again behind the message, deliberately: this one decides the class of the exception.
    const bool restricted = GetLastError() == ERROR_ACCOUNT_RESTRICTION;
    const DWORD normalisedCode = restricted ? ERROR_ACCOUNT_RESTRICTION : ERROR_LOGON_FAILURE;
    if (normalisedCode != code) {
        appendSystemMessage(message, L"", normalisedCode);
    }
    ComputerName ownDomain;
    computerDnsDomain(ownDomain);
    if (_wcsicmp(account.domain, ownDomain) != 0) {
        validateByNetworkConnection(env, account);
    } else if (restricted) {
        throwAccountRestrictionException(env, message);
    } else {
        throwIOException(env, message);
    }
}

}  // namespace winutil::account
