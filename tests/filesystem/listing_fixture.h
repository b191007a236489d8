// Listings of directories, real ones and such that exist only for the search.
#pragma once

// windows.h comes first: the others build on it.
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <cstring>
#include <cwchar>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "winutil_fixture.h"

namespace testbed {

// What addFile was called with.
struct Entry {
    std::wstring path;
    bool directory = false;
    jlong size = 0;
    jlong lastModified = 0;
    jlong attributes = 0;
    std::wstring security;
    bool reparsePoint = false;
    bool operator==(const Entry&) const = default;
};

inline void PrintTo(const Entry& entry, std::ostream* out) {
    *out << toUtf8(entry.path) << (entry.directory ? " directory " : " file ") << entry.size << " "
         << entry.lastModified << " " << entry.attributes << " '" << toUtf8(entry.security)
         << (entry.reparsePoint ? "' reparse point" : "'");
}

inline constexpr std::uint64_t unixEpoch = 116444736000000000;

inline WIN32_FIND_DATAW foundEntry(const std::wstring& name, DWORD attributes = FILE_ATTRIBUTE_ARCHIVE,
                                   std::uint64_t size = 0, std::uint64_t time = unixEpoch) {
    WIN32_FIND_DATAW found = {};
    found.dwFileAttributes = attributes;
    found.nFileSizeHigh = static_cast<DWORD>(size >> 32);
    found.nFileSizeLow = static_cast<DWORD>(size);
    found.ftLastWriteTime = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    // Other times and another name are there too, and of no interest.
    found.ftCreationTime = {1, 1};
    found.ftLastAccessTime = {2, 2};
    std::wcscpy(found.cAlternateFileName, L"OTHER");
    // A name that fills its place has no terminator.
    name.copy(found.cFileName, std::size(found.cFileName));
    return found;
}

class ListingTest : public WinUtilTest {
protected:
    JavaObject collector() {
        return java.collector(
            "addFile", "(Ljava/lang/String;ZJJILjava/lang/String;Z)V", [this](const Arguments& a) {
                entries.push_back({a[0].text(), a[1].boolean(), a[2].number(), a[3].number(), a[4].number(),
                                   a[5].text(), a[6].boolean()});
            });
    }

    JavaObject listener() {
        return java.collector(
            "fireFileErrorEvent", "(Ljava/lang/String;Ljava/lang/String;)V",
            [this](const Arguments& a) { events.push_back(a[0].text() + L"|" + a[1].text()); });
    }

    // Lists without security, with attributes.
    void list(const std::wstring& directory) {
        NATIVE(listWinFiles)(collector(), directory, JNI_FALSE, JNI_TRUE, nullptr, JNI_FALSE);
    }

    // Lists with security, files included.
    void listSecurity(const std::wstring& directory, const JavaObject& receiver) {
        NATIVE(listWinFiles)(collector(), directory, JNI_TRUE, JNI_TRUE, receiver, JNI_TRUE);
    }

    std::vector<std::wstring> paths() const {
        std::vector<std::wstring> result;
        for (const Entry& entry : entries) {
            result.push_back(entry.path);
        }
        return result;
    }

    std::vector<Entry> entries;
    std::vector<std::wstring> events;
};

// The search finds what `found` says, and then fails with `endCode`. The first entry must be there.
class SearchTest : public ListingTest {
protected:
    std::vector<WIN32_FIND_DATAW> found;
    DWORD endCode = ERROR_NO_MORE_FILES;
    std::vector<std::wstring> patterns;
    HANDLE search = Ledger::fakeHandle();

private:
    std::size_t position_ = 0;
    const Replacement first_ = REPLACE(FindFirstFileW, [this](LPCWSTR pattern, LPWIN32_FIND_DATAW data) {
        patterns.emplace_back(pattern);
        *data = found.at(0);
        position_ = 1;
        return search;
    });
    const Replacement next_ = REPLACE(FindNextFileW, [this](HANDLE handle, LPWIN32_FIND_DATAW data) {
        EXPECT_EQ(handle, search);
        if (position_ >= found.size()) {
            SetLastError(endCode);
            return FALSE;
        }
        *data = found[position_++];
        return TRUE;
    });
};

}  // namespace testbed
