#include "network/connections.h"

#include <wininet.h>
#include <winnetwk.h>

namespace winutil::network {

namespace {

constexpr DWORD accessNameCapacity = 1024;  // characters, the terminator included

DWORD tolerateExisting(DWORD code) noexcept {
    const bool existing = code == ERROR_ALREADY_ASSIGNED || code == ERROR_DEVICE_ALREADY_REMEMBERED;
    return existing ? NO_ERROR : code;
}

}  // namespace

DWORD connectShare(const wchar_t* user, const wchar_t* password, const wchar_t* remoteName) noexcept {
    NETRESOURCEW resource = {};
    resource.dwType = RESOURCETYPE_DISK;
    // Only read by the call, which does not say so.
    resource.lpRemoteName = const_cast<wchar_t*>(remoteName);
    // A connection with other credentials would block the new one; whether there was one does not matter.
    WNetCancelConnectionW(remoteName, FALSE);
    wchar_t accessName[accessNameCapacity];
    DWORD size = accessNameCapacity;
    DWORD result = 0;
    return tolerateExisting(
        WNetUseConnectionW(nullptr, &resource, password, user, 0, accessName, &size, &result));
}

DWORD disconnectShare(const wchar_t* name) noexcept {
    return tolerateExisting(WNetCancelConnectionW(name, FALSE));
}

DWORD readConnectionUser(const wchar_t* name, ConnectionUser& user) noexcept {
    DWORD size = connectionUserCapacity;
    const DWORD code = WNetGetUserW(name, user, &size);
    if (code != NO_ERROR) {
        user[0] = L'\0';
    }
    return code;
}

bool isConnected() noexcept {
    constexpr DWORD connected =
        INTERNET_CONNECTION_MODEM | INTERNET_CONNECTION_LAN | INTERNET_CONNECTION_PROXY;
    static_assert(connected == 7);
    DWORD flags = 0;
    return InternetGetConnectedState(&flags, 0) && (flags & connected) != 0;
}

}  // namespace winutil::network
