// Reparse data buffers, byte by byte.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace testbed {

using Bytes = std::vector<std::byte>;

// The fields of a buffer; where a test says nothing, they describe `path` as the substitute name.
struct ReparseBytes {
    DWORD tag = IO_REPARSE_TAG_MOUNT_POINT;
    std::wstring path = L"\\??\\C:\\data";
    int nameOffset = 0;
    int nameLength = -1;  // bytes
    int dataLength = -1;  // bytes behind the first eight

    Bytes build() const {
        Bytes bytes;
        const auto word = [&bytes](std::size_t value) {
            bytes.push_back(static_cast<std::byte>(value & 0xFF));
            bytes.push_back(static_cast<std::byte>(value >> 8 & 0xFF));
        };
        const std::size_t pathBytes = path.size() * sizeof(wchar_t);
        const std::size_t fixed = tag == IO_REPARSE_TAG_SYMLINK ? 12 : 8;
        word(tag & 0xFFFF);
        word(tag >> 16);
        word(dataLength < 0 ? fixed + pathBytes : static_cast<std::size_t>(dataLength));
        word(0);
        word(static_cast<std::size_t>(nameOffset));
        word(nameLength < 0 ? pathBytes : static_cast<std::size_t>(nameLength));
        word(0);
        word(0);
        if (tag == IO_REPARSE_TAG_SYMLINK) {
            word(0);
            word(0);
        }
        for (const wchar_t unit : path) {
            word(unit);
        }
        return bytes;
    }
};

}  // namespace testbed
