#include "text.h"

#include <cstdio>

namespace testbed {

std::string hex(std::uint64_t value) {
    char digits[2 + 2 * sizeof value + 1];
    std::snprintf(digits, sizeof digits, "0x%llx", static_cast<unsigned long long>(value));
    return digits;
}

std::string toUtf8(std::wstring_view text) {
    const auto length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string converted(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, converted.data(), size, nullptr, nullptr);
    return converted;
}

std::wstring toWide(std::string_view utf8) {
    const auto length = static_cast<int>(utf8.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring converted(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, converted.data(), size);
    return converted;
}

std::wstring systemText(DWORD code) {
    wchar_t* text = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        code, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    const std::wstring copy(text == nullptr ? L"" : text, length);
    LocalFree(text);
    return copy;
}

std::wstring errorMessage(std::wstring_view tag, DWORD code) {
    const std::wstring text = systemText(code);
    return L"[" + std::wstring(tag) + L"] (" + std::to_wstring(static_cast<int>(code)) + L") " +
           (text.empty() ? L"Failed to obtain error message" : text);
}

}  // namespace testbed
