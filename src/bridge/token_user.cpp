#include "bridge/token_user.h"

#include <cstdint>

namespace winutil {

bool isSidWithin(const void* sid, const void* memory, std::size_t size) noexcept {
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const auto at = reinterpret_cast<std::uintptr_t>(sid);
    constexpr std::size_t headerSize = offsetof(SID, SubAuthority);
    if (at % alignof(SID) != 0 || at < begin || at - begin > size || size - (at - begin) < headerSize) {
        return false;
    }
    return size - (at - begin) >= GetSidLengthRequired(static_cast<const SID*>(sid)->SubAuthorityCount);
}

ProcessHeapMemory<TOKEN_USER> tokenUser(HANDLE token) noexcept {
    DWORD size = 0;
    if (GetTokenInformation(token, TokenUser, nullptr, 0, &size) ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER || size < sizeof(TOKEN_USER)) {
        return {};
    }
    ProcessHeapMemory<TOKEN_USER> user(
        static_cast<TOKEN_USER*>(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size)));
    if (!user) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return user;
    }
    DWORD written = 0;
    if (!GetTokenInformation(token, TokenUser, user.get(), size, &written) ||
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

}  // namespace winutil
