// Account databases and security authorities that answer with anything.
#pragma once

#include <windows.h>

#include <cstring>

#include "answers/input.h"

namespace hostile {

class Accounts {
public:
    explicit Accounts(Input& input) : input_(input) {}

    // GetTokenInformation of TokenUser: the size, then a SID somewhere in the block, or beside it.
    BOOL giveTokenUser(LPVOID buffer, DWORD room, PDWORD needed) {
        if (room == 0) {
            *needed = input_.value<BYTE>() % 64U * sizeof(DWORD);
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return FALSE;
        }
        const auto offset = input_.value<signed char>();
        auto* bytes = static_cast<char*>(buffer);
        input_.copyTo(bytes, room);
        reinterpret_cast<TOKEN_USER*>(buffer)->User.Sid = bytes + offset;
        return TRUE;
    }

    // LookupAccountNameW: the same for the SID of a name.
    BOOL giveSid(PSID sid, LPDWORD size) {
        if (sid == nullptr) {
            *size = input_.value<BYTE>() % 64U * sizeof(DWORD);
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return FALSE;
        }
        input_.copyTo(sid, *size);
        return TRUE;
    }

private:
    Input& input_;
};

// The buffer of NetUserGetGroups and its like: pointers to names, and the names, to the last byte.
class GroupArray {
public:
    explicit GroupArray(Input& input) : input_(input) {}

    std::size_t size() const { return count_ * (sizeof(wchar_t*) + (length_ + 1) * sizeof(wchar_t)); }
    DWORD count() const { return count_; }

    // Lays the array out in a block of its size.
    void place(void* block) {
        std::memset(block, 0, size());
        auto** pointers = static_cast<wchar_t**>(block);
        auto* name = reinterpret_cast<wchar_t*>(pointers + count_);
        for (DWORD i = 0; i < count_; ++i, name += length_ + 1) {
            pointers[i] = input_.copyTo(name, length_ * sizeof(wchar_t)) == 0 ? nullptr : name;
        }
    }

private:
    Input& input_;
    DWORD count_ = input_.value<BYTE>() % 32U;
    std::size_t length_ = input_.value<BYTE>() % 32U;
};

}  // namespace hostile
