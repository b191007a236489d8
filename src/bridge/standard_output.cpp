#include "bridge/standard_output.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>

#include "bridge/owners.h"

namespace winutil {

namespace {

// What the standard output is read in: the console's code page, or where there is no console the system's.
UINT outputCodePage() noexcept {
    const UINT console = GetConsoleOutputCP();
    return console != 0 ? console : GetACP();
}

// What a character (one or two units) takes at most: an escape for each unit.
constexpr std::size_t bytesOfUnit = 6;

// Appends one character in the code page, or as \uXXXX where that lacks it.
void appendCharacter(UINT codePage, const wchar_t* units, int count, char*& end) noexcept {
    if (units[0] <= L'\x7F') {
        *end++ = static_cast<char>(units[0]);
        return;
    }
    BOOL missing = FALSE;
    // Of UTF-8 it must not be asked what is missing; nothing is, but half of a pair.
    const bool everything = codePage == CP_UTF8;
    const int size =
        WideCharToMultiByte(codePage, everything ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS, units, count,
                            end, static_cast<int>(bytesOfUnit), nullptr, everything ? nullptr : &missing);
    if (size > 0 && !missing) {
        end += size;
        return;
    }
    for (int i = 0; i < count; ++i) {
        end += _snprintf_s(end, bytesOfUnit + 1, _TRUNCATE, "\\u%04X", static_cast<unsigned>(units[i]));
    }
}

}  // namespace

// The C runtime's own wide functions end a line at the first character that its locale lacks. Written at
// once, so that the lines of two threads do not mix.
void printText(const wchar_t* text) noexcept {
    const HeapMemory<char> line = allocate<char>(bytesOfUnit * std::wcslen(text) + 1);
    if (!line) {
        return;
    }
    const UINT codePage = outputCodePage();
    char* end = line.get();
    while (*text != L'\0') {
        const int count = IS_HIGH_SURROGATE(text[0]) && IS_LOW_SURROGATE(text[1]) ? 2 : 1;
        appendCharacter(codePage, text, count, end);
        text += count;
    }
    std::fwrite(line.get(), 1, static_cast<std::size_t>(end - line.get()), stdout);
    std::fflush(stdout);
}

void printText(const char* text) noexcept {
    std::fputs(text, stdout);
    std::fflush(stdout);
}

}  // namespace winutil
