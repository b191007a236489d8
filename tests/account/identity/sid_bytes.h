// Security identifiers as bytes, true and false ones, and memory that shows who believes the false ones.
#pragma once

#include <windows.h>

#include <array>
#include <map>
#include <string>
#include <vector>

#include "winutil_fixture.h"

namespace testbed {

using Authority = std::array<BYTE, 6>;
inline constexpr Authority ntAuthority = {0, 0, 0, 0, 0, 5};

// The bytes of a SID. Its count of sub-authorities says what it is told to say, whatever follows.
std::string sidBytes(const Authority& authority, const std::vector<DWORD>& subAuthorities,
                     int claimedCount = -1, BYTE revision = SID_REVISION);

// The text that the system makes of a SID.
std::string systemSidText(PSID sid);

// The SID of the account that the process runs as.
std::string processUserSid();

// Gives the DLL blocks of the process heap that end at a guard page.
class GuardedProcessHeap {
public:
    explicit GuardedProcessHeap(SystemCalls& system);

private:
    std::map<void*, GuardedBuffer> blocks_;
    Replacement allocate_;
    Replacement free_;
};

// Lets every token be that of a user with these SID bytes, which end where the memory asked for does.
class TokenOfUser {
public:
    TokenOfUser(SystemCalls& system, std::string sid);

    // How the token's information was asked for.
    struct Query {
        bool withBuffer;
        DWORD length;
    };
    const std::vector<Query>& queries() const { return queries_; }

private:
    BOOL answer(void* buffer, DWORD length, DWORD* needed);

    std::string sid_;
    std::vector<Query> queries_;
    GuardedProcessHeap heap_;
    Replacement information_;
};

}  // namespace testbed
