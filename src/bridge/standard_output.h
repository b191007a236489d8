#pragma once

namespace winutil {

// Prints a text to the process's standard output, where the few diagnostics of the library go. It is there
// when the call returns, whatever becomes of the process.
void printText(const wchar_t* text) noexcept;
void printText(const char* text) noexcept;

}  // namespace winutil
