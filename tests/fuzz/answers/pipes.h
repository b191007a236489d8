// The other end of a pipe, which may be a stranger's.
#pragma once

#include <windows.h>

#include "answers/input.h"

namespace hostile {

class Pipe {
public:
    explicit Pipe(Input& input) : input_(input) {}

    // ReadFile: a message, a part of one, or none.
    BOOL read(LPVOID buffer, DWORD room, LPDWORD count) {
        constexpr DWORD results[] = {ERROR_BROKEN_PIPE, ERROR_SUCCESS, ERROR_MORE_DATA};
        const DWORD result = chooseCode(input_, results);
        *count = static_cast<DWORD>(input_.copyTo(buffer, std::min<DWORD>(input_.value<WORD>(), room)));
        SetLastError(result);
        return result == ERROR_SUCCESS ? TRUE : FALSE;
    }

private:
    Input& input_;
};

}  // namespace hostile
