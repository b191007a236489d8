#include "account/token_user.h"

#include "account/sids.h"

namespace winutil::account {

ProcessHeapMemory<TOKEN_USER> tokenUser(HANDLE token) noexcept {
    DWORD size = 0;
    if (GetTokenInformation(token, TokenUser, nullptr, 0, &size) ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER || size < sizeof(TOKEN_USER)) {
        return {};
    }
    ProcessHeapMemory<TOKEN_USER> user(
        static_cast<TOKEN_USER*>(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size)));
    DWORD written = 0;
    if (!user || !GetTokenInformation(token, TokenUser, user.get(), size, &written) ||
        !isSidWithin(user.get()->User.Sid, user.get(), size)) {
        return {};
    }
    return user;
}

ProcessHeapMemory<TOKEN_USER> currentTokenUser() noexcept {
    KernelHandle token;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.receive()) &&
        (GetLastError() != ERROR_NO_TOKEN ||
         !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.receive()))) {
        return {};
    }
    return tokenUser(token.get());
}

}  // namespace winutil::account
