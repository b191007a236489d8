// Icons as image files.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

#include "bridge/owners.h"

namespace winutil::filesystem {

using Icon = Resource<HICON, DestroyIcon>;

// The bytes of a BMP file, or none.
struct ImageFile {
    HeapMemory<std::byte> bytes;
    std::size_t size = 0;
};

// How a bitmap lies in a BMP file: a file header, the header with its colour table, and the pixels.
struct ImageLayout {
    BITMAPINFOHEADER header;
    std::uint32_t headerLength;  // bytes, the colour table included
    std::uint32_t imageSize;     // bytes of pixels
};

// Computes the layout of a bitmap. The lengths are 32-bit numbers, in which the table of 2^32 colours is
// empty; that of 2^16 colours is there in full, though no reader of the file looks at it.
ImageLayout layOutImage(const BITMAP& bitmap) noexcept;

// Fills the header in front of everything.
BITMAPFILEHEADER makeFileHeader(const ImageLayout& layout) noexcept;

// Draws an icon in 16 x 16 pixels on white and returns it as a BMP file in the colours of the screen; none
// without an icon and when a step fails.
ImageFile renderIcon(Icon icon) noexcept;

}  // namespace winutil::filesystem
