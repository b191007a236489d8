// Security identifiers, as a token and as the authority of an account give them.
#include "account/account_names.h"
#include "account/sids.h"
#include "answers/accounts.h"
#include "target.h"
#include "windows/system.h"

namespace {

hostile::Accounts* accounts = nullptr;

void requireText(const winutil::account::SidText& text) {
    fuzz::require(strnlen(text, sizeof(text)) < sizeof(text), "the text of a SID has no end");
    fuzz::require(std::strncmp(text, "S-1-", 4) == 0, "the text of a SID begins as none does");
}

}  // namespace

extern "C" {
WINBOOL WINAPI OpenThreadToken(HANDLE, DWORD, WINBOOL, PHANDLE token) {
    *token = fuzz::fakeHandle();
    return TRUE;
}
WINBOOL WINAPI GetTokenInformation(HANDLE, TOKEN_INFORMATION_CLASS, LPVOID buffer, DWORD size,
                                   PDWORD needed) {
    return accounts->giveTokenUser(buffer, size, needed);
}
WINBOOL WINAPI LookupAccountNameW(LPCWSTR, LPCWSTR, PSID sid, LPDWORD size, LPWSTR, LPDWORD, PSID_NAME_USE) {
    return accounts->giveSid(sid, size);
}
HANDLE WINAPI GetCurrentThread() {
    return fuzz::fakeHandle();
}
}

void fuzz::examine(hostile::Input& input) {
    hostile::Accounts answers(input);
    accounts = &answers;
    winutil::account::SidText text;
    if (input.value<BYTE>() % 2 == 0) {
        if (winutil::account::currentUserSid(text)) {
            requireText(text);
        }
    } else if (winutil::account::accountSid(L"domain", L"user", text).value_or(false)) {
        requireText(text);
    }
}
