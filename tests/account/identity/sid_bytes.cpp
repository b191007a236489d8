#include "sid_bytes.h"

#include <sddl.h>

#include <cstring>

namespace testbed {

std::string sidBytes(const Authority& authority, const std::vector<DWORD>& subAuthorities, int claimedCount,
                     BYTE revision) {
    std::string bytes;
    bytes += static_cast<char>(revision);
    bytes += static_cast<char>(claimedCount < 0 ? static_cast<int>(subAuthorities.size()) : claimedCount);
    bytes.append(authority.begin(), authority.end());
    bytes.append(reinterpret_cast<const char*>(subAuthorities.data()), subAuthorities.size() * sizeof(DWORD));
    return bytes;
}

std::string systemSidText(PSID sid) {
    char* text = nullptr;
    if (!ConvertSidToStringSidA(sid, &text)) {
        throw std::runtime_error("no SID");
    }
    std::string copy = text;
    LocalFree(text);
    return copy;
}

std::string processUserSid() {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
        throw std::runtime_error("the process has no token");
    }
    alignas(TOKEN_USER) std::byte user[256];
    DWORD size = 0;
    const BOOL read = GetTokenInformation(token, TokenUser, user, sizeof(user), &size);
    CloseHandle(token);
    if (!read) {
        throw std::runtime_error("the token has no user");
    }
    return systemSidText(reinterpret_cast<TOKEN_USER*>(user)->User.Sid);
}

GuardedProcessHeap::GuardedProcessHeap(SystemCalls& system)
    : allocate_(system.replace<decltype(::HeapAlloc)>("HeapAlloc",
                                                      [this](HANDLE heap, DWORD, SIZE_T size) -> void* {
                                                          EXPECT_EQ(heap, GetProcessHeap());
                                                          GuardedBuffer block(size,
                                                                              "block of the process heap");
                                                          void* address = block.data();
                                                          blocks_[address] = std::move(block);
                                                          return address;
                                                      })),
      free_(system.replace<decltype(::HeapFree)>("HeapFree", [this](HANDLE heap, DWORD, void* block) -> BOOL {
          EXPECT_EQ(heap, GetProcessHeap());
          return blocks_.erase(block) != 0;
      })) {}

TokenOfUser::TokenOfUser(SystemCalls& system, std::string sid)
    : sid_(std::move(sid)),
      heap_(system),
      information_(system.replace<decltype(::GetTokenInformation)>(
          "GetTokenInformation",
          [this](HANDLE, TOKEN_INFORMATION_CLASS information, void* buffer, DWORD length, DWORD* needed) {
              EXPECT_EQ(information, TokenUser);
              return answer(buffer, length, needed);
          })) {}

BOOL TokenOfUser::answer(void* buffer, DWORD length, DWORD* needed) {
    queries_.push_back({buffer != nullptr, length});
    *needed = static_cast<DWORD>(sizeof(TOKEN_USER) + sid_.size());
    if (length < *needed) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::byte* place = static_cast<std::byte*>(buffer) + sizeof(TOKEN_USER);
    const TOKEN_USER user = {{place, 0}};
    std::memcpy(buffer, &user, sizeof(user));
    std::memcpy(place, sid_.data(), sid_.size());
    return TRUE;
}

}  // namespace testbed
