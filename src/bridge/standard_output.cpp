#include "bridge/standard_output.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <iterator>

namespace winutil {

namespace {

// What the standard output is read in: the console's code page, or where there is no console the system's.
UINT outputCodePage() noexcept {
    const UINT console = GetConsoleOutputCP();
    return console != 0 ? console : GetACP();
}

// Writes one character (one or two units), as \uXXXX where the code page lacks it.
void printCharacter(UINT codePage, const wchar_t* units, int count) noexcept {
    if (units[0] <= L'\x7F') {
        std::fputc(static_cast<char>(units[0]), stdout);
        return;
    }
    char bytes[8];
    BOOL missing = FALSE;
    // Of UTF-8 it must not be asked what is missing; nothing is, but half of a pair.
    const bool everything = codePage == CP_UTF8;
    const int size = WideCharToMultiByte(codePage, everything ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS,
                                         units, count, bytes, static_cast<int>(std::size(bytes)), nullptr,
                                         everything ? nullptr : &missing);
    if (size > 0 && !missing) {
        std::fwrite(bytes, 1, static_cast<std::size_t>(size), stdout);
        return;
    }
    for (int i = 0; i < count; ++i) {
        char escape[8];
        _snprintf_s(escape, std::size(escape), _TRUNCATE, "\\u%04X", static_cast<unsigned>(units[i]));
        std::fputs(escape, stdout);
    }
}

}  // namespace

// The C runtime's own wide functions end a line at the first character that its locale lacks.
void printText(const wchar_t* text) noexcept {
    const UINT codePage = outputCodePage();
    while (*text != L'\0') {
        const int count = IS_HIGH_SURROGATE(text[0]) && IS_LOW_SURROGATE(text[1]) ? 2 : 1;
        printCharacter(codePage, text, count);
        text += count;
    }
    std::fflush(stdout);
}

void printText(const char* text) noexcept {
    std::fputs(text, stdout);
    std::fflush(stdout);
}

}  // namespace winutil
