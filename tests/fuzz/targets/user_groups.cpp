// The groups of a user, as a server lists them.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <lmaccess.h>
#include <lmerr.h>

#include "account/user_groups.h"
#include "answers/accounts.h"
#include "target.h"
#include "windows/java.h"

namespace {

hostile::Input* answers = nullptr;

NET_API_STATUS giveGroups(LPBYTE* buffer, LPDWORD count) {
    constexpr NET_API_STATUS results[] = {NERR_Success, RPC_S_SERVER_UNAVAILABLE, ERROR_MORE_DATA,
                                          NERR_UserNotFound};
    const NET_API_STATUS result = hostile::chooseCode(*answers, results);
    if (result == NERR_Success || result == ERROR_MORE_DATA) {
        hostile::GroupArray groups(*answers);
        *buffer = static_cast<LPBYTE>(std::malloc(groups.size()));
        groups.place(*buffer);
        *count = groups.count();
    }
    return result;
}

}  // namespace

extern "C" {
NET_API_STATUS WINAPI NetUserGetGroups(LPCWSTR, LPCWSTR, DWORD, LPBYTE* buffer, DWORD, LPDWORD count,
                                       LPDWORD) {
    return giveGroups(buffer, count);
}
NET_API_STATUS WINAPI NetUserGetLocalGroups(LPCWSTR, LPCWSTR, DWORD, DWORD, LPBYTE* buffer, DWORD,
                                            LPDWORD count, LPDWORD) {
    return giveGroups(buffer, count);
}
}

void fuzz::examine(hostile::Input& input) {
    answers = &input;
    Java java;
    winutil::account::addUserGroups(java.env(), L"server", L"user", java.collector());
}
