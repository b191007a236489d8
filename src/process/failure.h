#pragma once

#include <windows.h>

#include "bridge/errors.h"

namespace winutil::process {

// Leaves why a step failed, as "message  (code) system text". Returns false, as the step does. The message is
// made by wsprintfW, which shows a null text as "(null)" and cuts what runs past 1024 characters.
template <class... Values>
bool failed(ErrorBuffer& errorBuffer, DWORD code, const wchar_t* format, Values... values) noexcept {
    // One character more: not every system terminates what it cuts.
    wchar_t message[1024 + 1] = {};
    wsprintfW(message, format, values...);
    errorBuffer.format(message, L"", code);
    return false;
}

}  // namespace winutil::process
