// A screen of any depth.
#pragma once

#include <windows.h>

#include <cstring>

#include "answers/input.h"

namespace hostile {

class Bitmaps {
public:
    // The bitmap is of the library's own making: only what the screen has is the system's to say.
    explicit Bitmaps(Input& input)
        : shape_{.bmType = 0,
                 .bmWidth = 1 + input.value<BYTE>() % 32,
                 .bmHeight = 1 + input.value<BYTE>() % 32,
                 .bmWidthBytes = 0,
                 .bmPlanes = static_cast<WORD>(input.value<BYTE>() % 5),
                 .bmBitsPixel = static_cast<WORD>(input.value<BYTE>() % 65),
                 .bmBits = nullptr} {}

    const BITMAP& shape() const { return shape_; }

    // GetObjectA
    int giveShape(LPVOID buffer, int size) const {
        std::memcpy(buffer, &shape_, sizeof(shape_));
        return size;
    }

    // GetDIBits writes a table of colours for up to eight bits, and lines of whole 32-bit words.
    static int givePixels(UINT lines, LPVOID pixels, LPBITMAPINFO info) {
        const BITMAPINFOHEADER& header = info->bmiHeader;
        if (header.biBitCount <= 8) {
            std::memset(info->bmiColors, 0x55, sizeof(RGBQUAD) << header.biBitCount);
        }
        const std::size_t line = (static_cast<std::size_t>(header.biWidth) * header.biBitCount + 31) / 32 * 4;
        std::memset(pixels, 0xAA, line * lines);
        return static_cast<int>(lines);
    }

private:
    BITMAP shape_;
};

}  // namespace hostile
