#include "modified_utf8.h"

namespace testbed {

std::string toModifiedUtf8(std::wstring_view text) {
    std::string bytes;
    for (const wchar_t unit : text) {
        if (unit >= 0x01 && unit <= 0x7F) {
            bytes += static_cast<char>(unit);
        } else if (unit <= 0x7FF) {
            bytes += static_cast<char>(0xC0 | (unit >> 6));
            bytes += static_cast<char>(0x80 | (unit & 0x3F));
        } else {
            bytes += static_cast<char>(0xE0 | (unit >> 12));
            bytes += static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
            bytes += static_cast<char>(0x80 | (unit & 0x3F));
        }
    }
    return bytes;
}

std::wstring fromModifiedUtf8(std::string_view bytes) {
    std::wstring text;
    const auto byteAt = [&](std::size_t index) {
        return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0u;
    };
    const auto continues = [&](std::size_t index) { return (byteAt(index) & 0xC0) == 0x80; };
    for (std::size_t i = 0; i < bytes.size();) {
        const unsigned lead = byteAt(i);
        if ((lead & 0xE0) == 0xC0 && continues(i + 1)) {
            text += static_cast<wchar_t>((lead & 0x1F) << 6 | (byteAt(i + 1) & 0x3F));
            i += 2;
        } else if ((lead & 0xF0) == 0xE0 && continues(i + 1) && continues(i + 2)) {
            text += static_cast<wchar_t>((lead & 0x0F) << 12 | (byteAt(i + 1) & 0x3F) << 6 |
                                         (byteAt(i + 2) & 0x3F));
            i += 3;
        } else {
            text += static_cast<wchar_t>(lead);
            i += 1;
        }
    }
    return text;
}

}  // namespace testbed
