// A file system that keeps any security descriptor, and their conversion to text.
#pragma once

#include <windows.h>

#include <cwchar>

#include "answers/input.h"

namespace hostile {

class Descriptors {
public:
    explicit Descriptors(Input& input) : input_(input) {}

    // GetFileSecurityW. What it needs may be less than it was given, and change from call to call.
    BOOL give(PSECURITY_DESCRIPTOR descriptor, DWORD size, LPDWORD needed) {
        constexpr DWORD results[] = {ERROR_SUCCESS, ERROR_INSUFFICIENT_BUFFER, ERROR_ACCESS_DENIED};
        const DWORD result = chooseCode(input_, results);
        *needed = input_.value<WORD>();
        if (result == ERROR_SUCCESS) {
            input_.copyTo(descriptor, std::min<DWORD>(input_.value<BYTE>(), size));
        }
        SetLastError(result);
        return result == ERROR_SUCCESS ? TRUE : FALSE;
    }

    // The length of a descriptor's text: as much is there, and nothing behind it.
    ULONG textLength() { return input_.value<BYTE>() % 64; }
    void giveText(wchar_t* text, ULONG length) {
        std::wmemset(text, L'x', length);
        input_.copyTo(text, length * sizeof(wchar_t));
    }

private:
    Input& input_;
};

}  // namespace hostile
