#include "bridge/standard_output.h"

#include <cstdio>
#include <cwchar>

namespace winutil {

void printText(const wchar_t* text) noexcept {
    std::fputws(text, stdout);
    std::fflush(stdout);
}

void printText(const char* text) noexcept {
    std::fputs(text, stdout);
    std::fflush(stdout);
}

}  // namespace winutil
