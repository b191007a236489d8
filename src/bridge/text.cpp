#include "bridge/text.h"

#include <algorithm>
#include <cwchar>

namespace winutil {

WideString copyText(const wchar_t* text, std::size_t length, std::size_t extra) noexcept {
    WideString copy = allocate<wchar_t>(length + extra + 1);
    if (copy) {
        wcsncpy_s(copy.get(), length + 1, text, length);
        copy.get()[length] = L'\0';
    }
    return copy;
}

void ansiToWide(wchar_t* destination, const char* source, int capacity) noexcept {
    if (destination != nullptr && source != nullptr) {
        MultiByteToWideChar(CP_ACP, 0, source, -1, destination, capacity);
    }
}

HeapMemory<char> wideToAnsi(const wchar_t* source) noexcept {
    const int size = WideCharToMultiByte(CP_ACP, 0, source, -1, nullptr, 0, nullptr, nullptr);
    HeapMemory<char> text = allocate<char>(static_cast<std::size_t>(std::max(size, 1)));
    if (text &&
        (size <= 0 || WideCharToMultiByte(CP_ACP, 0, source, -1, text.get(), size, nullptr, nullptr) == 0)) {
        *text.get() = '\0';
    }
    return text;
}

}  // namespace winutil
