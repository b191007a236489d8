// Drivers that answer with anything.
#pragma once

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winioctl.h>

#include <cstring>

#include "answers/input.h"

namespace hostile {

class Devices {
public:
    explicit Devices(Input& input) : input_(input) {}

    // DeviceIoControl. A driver gives no more than there is room for and says how much it was.
    BOOL control(HANDLE, DWORD code, LPVOID, DWORD, LPVOID out, DWORD room, LPDWORD returned, LPOVERLAPPED) {
        constexpr DWORD results[] = {ERROR_SUCCESS, ERROR_INSUFFICIENT_BUFFER, ERROR_MORE_DATA,
                                     ERROR_INVALID_FUNCTION};
        const DWORD result = chooseCode(input_, results);
        const auto size = std::min<DWORD>(input_.value<WORD>(), room);
        if (code == FSCTL_GET_REPARSE_POINT) {
            // The only answer without a form of its own: its end is known from its size alone.
            std::memset(out, poison, room);
        }
        *returned = static_cast<DWORD>(input_.copyTo(out, size));
        SetLastError(result);
        return result == ERROR_SUCCESS ? TRUE : FALSE;
    }

private:
    Input& input_;
};

}  // namespace hostile
