#include "account/token_user.h"

#include <cstddef>
#include <cstdint>

namespace winutil::account {

namespace {

// Returns whether a SID ends where its memory does, or before: its own count of sub-authorities says how long
// it is, and whoever compares or prints it believes that count.
bool isSidWithin(const void* sid, const void* memory, std::size_t size) noexcept {
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const auto at = reinterpret_cast<std::uintptr_t>(sid);
    constexpr std::size_t headerSize = offsetof(SID, SubAuthority);
    if (at < begin || at - begin > size || size - (at - begin) < headerSize) {
        return false;
    }
    return size - (at - begin) >= GetSidLengthRequired(static_cast<const SID*>(sid)->SubAuthorityCount);
}

}  // namespace

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

}  // namespace winutil::account
