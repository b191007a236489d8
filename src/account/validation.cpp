#include "account/validation.h"

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winnetwk.h>

#include <cstdio>
#include <iterator>

#include "account/computer_domain.h"
#include "account/handshake.h"
#include "account/logon.h"
#include "account/system_message.h"
#include "bridge/owners.h"
#include "bridge/paths.h"

namespace winutil::account {

namespace {

constexpr std::size_t remoteNameCapacity = 1024;

// Checks credentials against another domain by connecting to it; no connection remains.
Verdict validateByNetworkConnection(const Credentials& account, ErrorBuffer& errorBuffer) noexcept {
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
    if (code == NO_ERROR) {
        return Verdict::accepted;
    }
    errorBuffer.format(L"WNetUseConnectionW", code);
    return Verdict::refused;
}

bool logonSucceeds(const Credentials& account) noexcept {
    enableLogonPrivileges();
    KernelHandle token;
    return LogonUserW(account.user, account.domain, account.password, LOGON32_LOGON_INTERACTIVE,
                      LOGON32_PROVIDER_DEFAULT, token.receive()) != FALSE;
}

// Case is ignored as Windows does in names, whatever the characters.
bool isOwnDomain(const wchar_t* domain) noexcept {
    ComputerName ownDomain;
    computerDnsDomain(ownDomain);
    return CompareStringOrdinal(domain, -1, ownDomain, -1, TRUE) == CSTR_EQUAL;
}

}  // namespace

Verdict validateUser(const Credentials& account, ErrorBuffer& errorBuffer) noexcept {
    if (validateWithSspi(account) || logonSucceeds(account)) {
        return Verdict::accepted;
    }
    const DWORD code = GetLastError();
    appendSystemMessage(errorBuffer, L"", code);
    if (code == ERROR_SUCCESS) {
        // Required: no refusal, because callers are told of one by its code.
        return Verdict::accepted;
    }
    // Required: the last error is read again behind the message, because the class of the exception that
    // callers know goes by this reading.
    const bool restricted = GetLastError() == ERROR_ACCOUNT_RESTRICTION;
    const DWORD normalisedCode = restricted ? ERROR_ACCOUNT_RESTRICTION : ERROR_LOGON_FAILURE;
    if (normalisedCode != code) {
        appendSystemMessage(errorBuffer, L"", normalisedCode);
    }
    if (!isOwnDomain(account.domain)) {
        return validateByNetworkConnection(account, errorBuffer);
    }
    cutMessage(errorBuffer);
    return restricted ? Verdict::restricted : Verdict::refused;
}

}  // namespace winutil::account
