// Connections for tests of the listing: containers with batches of resources, handed out as the system does.
#pragma once

#include <windows.h>

#include <winnetwk.h>

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "system_calls.h"

namespace testbed {

// The resource that most tests need; each changes what matters to it.
NETRESOURCEW share(const wchar_t* remoteName);
NETRESOURCEW container(const wchar_t* remoteName);

// What one call for an enumeration was given.
struct OpenedEnumeration {
    DWORD scope;
    DWORD type;
    DWORD usage;
    std::wstring parent = {};  // its remote name, or "" for none
    bool operator==(const OpenedEnumeration&) const = default;
};

// What one call for entries was given.
struct AskedEntries {
    DWORD count;
    DWORD size;
    bool zeroed;
    bool operator==(const AskedEntries&) const = default;
};

// Stands in for the enumeration calls until it goes out of scope.
class FakeNetwork {
public:
    explicit FakeNetwork(SystemCalls& system);

    // What a call for entries answers: these entries, or a code.
    struct Batch {
        std::vector<NETRESOURCEW> entries = {};
        DWORD code = NO_ERROR;
        DWORD size = 0;   // what the call leaves in the size, unless 0
        DWORD count = 0;  // how many entries it claims, unless 0
    };

    // What the container of that remote name answers, call by call; "" is the outermost. Behind the last
    // batch it has no more items.
    void give(const std::wstring& parent, std::vector<Batch> batches);

    // Lets a container not be opened, or not be closed.
    void failToOpen(const std::wstring& parent, DWORD code) { openCodes_[parent] = code; }
    void failToClose(const std::wstring& parent, DWORD code) { closeCodes_[parent] = code; }

    std::vector<OpenedEnumeration> opened;
    std::vector<AskedEntries> asked;
    std::vector<std::wstring> closed;  // the parents, in the order of closing

private:
    DWORD open(DWORD scope, DWORD type, DWORD usage, const NETRESOURCEW* parent, HANDLE* enumeration);
    DWORD read(HANDLE enumeration, DWORD* count, void* buffer, DWORD* size);
    DWORD close(HANDLE enumeration);

    std::map<std::wstring, std::deque<Batch>> batches_;
    std::map<std::wstring, DWORD> openCodes_;
    std::map<std::wstring, DWORD> closeCodes_;
    std::map<HANDLE, std::wstring> parents_;
    std::vector<Replacement> replacements_;
};

}  // namespace testbed
