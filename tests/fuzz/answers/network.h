// A network provider that answers with anything.
#pragma once

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winnetwk.h>

#include <utility>

#include "answers/input.h"

namespace hostile {

class Network {
public:
    explicit Network(Input& input) : input_(input) {}

    // WNetEnumResourceW. More entries may be counted than there are, but none where the names lie: no caller
    // could tell those from entries.
    DWORD giveEntries(LPDWORD count, LPVOID buffer, LPDWORD room) {
        constexpr DWORD results[] = {ERROR_NO_MORE_ITEMS, NO_ERROR, ERROR_MORE_DATA, ERROR_EXTENDED_ERROR};
        const DWORD result = chooseCode(input_, results);
        if (result != NO_ERROR) {
            return result;
        }
        // Once in an input a count beyond everything: it takes time, each counted entry is reported.
        const BYTE claimed = input_.value<BYTE>();
        const bool beyond = claimed == 0xFF && !std::exchange(counted_, true);
        *count = beyond ? MAXDWORD : claimed % 8;
        const DWORD textRoom = beyond ? 0 : *room;
        const DWORD entries = input_.value<BYTE>() % 4;
        auto* entry = static_cast<NETRESOURCEW*>(buffer);
        for (DWORD i = 0; i < entries; ++i, ++entry) {
            entry->dwScope = input_.value<BYTE>();
            entry->dwType = input_.value<BYTE>();
            entry->dwDisplayType = input_.value<DWORD>();
            entry->dwUsage = input_.value<BYTE>();
            entry->lpLocalName = placeText(buffer, textRoom);
            entry->lpRemoteName = placeText(buffer, textRoom);
            entry->lpProvider = placeText(buffer, textRoom);
        }
        return NO_ERROR;
    }

    // WNetGetUniversalNameW
    DWORD giveUniversalName(LPVOID buffer, LPDWORD room) {
        constexpr DWORD results[] = {NO_ERROR, ERROR_MORE_DATA, ERROR_NOT_CONNECTED};
        const DWORD result = chooseCode(input_, results);
        if (result == NO_ERROR && *room >= sizeof(REMOTE_NAME_INFOW)) {
            static_cast<REMOTE_NAME_INFOW*>(buffer)->lpUniversalName = placeText(buffer, *room);
        }
        if (result == ERROR_MORE_DATA) {
            *room = input_.value<WORD>();
        }
        return result;
    }

private:
    // Writes a text into the buffer, or none: behind the structures, or, with no end of its own, up to the
    // buffer's.
    wchar_t* placeText(LPVOID buffer, DWORD room) {
        const BYTE length = input_.value<BYTE>();
        if (length == 0) {
            return nullptr;
        }
        const DWORD characters = room / sizeof(wchar_t);
        const DWORD taken = std::min<DWORD>(length % 64, characters);
        auto* text = static_cast<wchar_t*>(buffer) + (characters - taken);
        input_.copyTo(text, taken * sizeof(wchar_t));
        return text;
    }

    Input& input_;
    bool counted_ = false;  // beyond everything
};

}  // namespace hostile
