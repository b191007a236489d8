// The system's texts for codes, as a test wants them.
#pragma once

#include <windows.h>

#include <cstring>
#include <string>

#include "system_calls.h"

namespace testbed {

// The system has this text for every code.
inline Replacement setSystemText(SystemCalls& system, const std::wstring& text) {
    return system.replace<decltype(FormatMessageW)>(
        "FormatMessageW", [text](DWORD, LPCVOID, DWORD, DWORD, LPWSTR buffer, DWORD, va_list*) {
            const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
            auto* copy = static_cast<wchar_t*>(LocalAlloc(LMEM_FIXED, bytes));
            std::memcpy(copy, text.c_str(), bytes);
            *reinterpret_cast<wchar_t**>(buffer) = copy;
            return static_cast<DWORD>(text.size());
        });
}

}  // namespace testbed
