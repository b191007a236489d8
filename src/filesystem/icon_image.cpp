#include "filesystem/icon_image.h"

#include <algorithm>
#include <cstring>

namespace winutil::filesystem {

namespace {

constexpr int iconSize = 16;  // pixels

void releaseScreen(HDC screen) noexcept {
    ReleaseDC(nullptr, screen);
}

using ScreenContext = Resource<HDC, releaseScreen>;
using MemoryContext = Resource<HDC, DeleteDC>;
using Bitmap = Resource<HBITMAP, DeleteObject>;
using Brush = Resource<HBRUSH, DeleteObject>;

// Keeps an object selected into a context for a scope.
class Selection {
public:
    Selection(HDC context, HGDIOBJ object) noexcept
        : context_(context), previous_(SelectObject(context, object)) {}
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;
    ~Selection() {
        if (previous_ != nullptr) {
            SelectObject(context_, previous_);
        }
    }

    explicit operator bool() const noexcept { return previous_ != nullptr; }

private:
    HDC context_;
    HGDIOBJ previous_;
};

// The address of a moveable block for a scope.
class LockedMemory {
public:
    explicit LockedMemory(HGLOBAL block) noexcept : block_(block), address_(GlobalLock(block)) {}
    LockedMemory(const LockedMemory&) = delete;
    LockedMemory& operator=(const LockedMemory&) = delete;
    ~LockedMemory() {
        if (address_ != nullptr) {
            GlobalUnlock(block_);
        }
    }

    explicit operator bool() const noexcept { return address_ != nullptr; }
    void* get() const noexcept { return address_; }

private:
    HGLOBAL block_;
    void* address_;
};

Bitmap drawIcon(HDC screen, HICON icon) noexcept {
    const MemoryContext memory(CreateCompatibleDC(screen));
    Bitmap bitmap(CreateCompatibleBitmap(screen, iconSize, iconSize));
    if (!memory || !bitmap) {
        return {};
    }
    const Selection selectedBitmap(memory.get(), bitmap.get());
    const Brush white(CreateSolidBrush(RGB(0xFF, 0xFF, 0xFF)));
    if (!selectedBitmap || !white) {
        return {};
    }
    const Selection selectedBrush(memory.get(), white.get());
    if (!selectedBrush || !PatBlt(memory.get(), 0, 0, iconSize, iconSize, PATCOPY) ||
        !DrawIconEx(memory.get(), 0, 0, icon, iconSize, iconSize, 0, nullptr, DI_NORMAL)) {
        return {};
    }
    return bitmap;
}

// The depth that image files have for so many bits per pixel.
std::uint32_t imageDepth(std::uint32_t bits) noexcept {
    for (const std::uint32_t depth : {1U, 4U, 8U, 16U, 24U}) {
        if (bits <= depth) {
            return depth;
        }
    }
    return 32;
}

// Room for the pixels as the system writes them, each line in whole words of 32 bits: more than the layout's
// size where a line of one-bit pixels ends within one.
std::size_t pixelRoom(const ImageLayout& layout) noexcept {
    const auto bitsPerLine = static_cast<std::size_t>(layout.header.biWidth) * layout.header.biBitCount;
    const std::size_t line = (bitsPerLine + 31) / 32 * sizeof(DWORD);
    return std::max<std::size_t>(layout.imageSize, line * static_cast<std::size_t>(layout.header.biHeight));
}

// Room for the header as the system writes it: with every colour that a table can have.
std::size_t headerRoom(const ImageLayout& layout) noexcept {
    constexpr std::size_t fullTable = 256 * sizeof(RGBQUAD);
    return std::max<std::size_t>(layout.headerLength, sizeof(BITMAPINFOHEADER) + fullTable);
}

ImageFile joinFile(const ImageLayout& layout, const void* header, const void* pixels) noexcept {
    const BITMAPFILEHEADER fileHeader = makeFileHeader(layout);
    ImageFile file{allocate<std::byte>(fileHeader.bfSize), fileHeader.bfSize};
    if (!file.bytes) {
        return {};
    }
    std::memcpy(file.bytes.get(), &fileHeader, sizeof(fileHeader));
    std::memcpy(file.bytes.get() + sizeof(fileHeader), header, layout.headerLength);
    std::memcpy(file.bytes.get() + fileHeader.bfOffBits, pixels, layout.imageSize);
    return file;
}

ImageFile encodeBitmap(HDC screen, HBITMAP bitmap) noexcept {
    BITMAP shape = {};
    if (GetObjectA(bitmap, sizeof(shape), &shape) == 0) {
        return {};
    }
    const ImageLayout layout = layOutImage(shape);
    const HeapMemory<std::byte> header = allocateZeroed<std::byte>(headerRoom(layout));
    const GlobalMemory block(GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, pixelRoom(layout)));
    if (!header || !block) {
        return {};
    }
    std::memcpy(header.get(), &layout.header, sizeof(layout.header));
    const LockedMemory pixels(block.get());
    if (!pixels || GetDIBits(screen, bitmap, 0, static_cast<UINT>(layout.header.biHeight), pixels.get(),
                             reinterpret_cast<BITMAPINFO*>(header.get()), DIB_RGB_COLORS) == 0) {
        return {};
    }
    return joinFile(layout, header.get(), pixels.get());
}

}  // namespace

ImageLayout layOutImage(const BITMAP& bitmap) noexcept {
    const std::uint32_t depth = imageDepth(std::uint32_t{bitmap.bmPlanes} * bitmap.bmBitsPixel);
    const auto colours = static_cast<std::uint32_t>(std::uint64_t{1} << depth);
    const auto width = static_cast<std::uint32_t>(bitmap.bmWidth);
    const auto height = static_cast<std::uint32_t>(bitmap.bmHeight);
    ImageLayout layout = {};
    layout.imageSize = (width + 7) / 8 * height * depth;
    layout.headerLength = sizeof(BITMAPINFOHEADER);
    // Required: a table for every other depth, in 32 bits, because callers know the images by these lengths.
    if (depth != 24) {
        layout.headerLength += static_cast<std::uint32_t>(sizeof(RGBQUAD)) * colours;
    }
    layout.header.biSize = sizeof(BITMAPINFOHEADER);
    layout.header.biWidth = bitmap.bmWidth;
    layout.header.biHeight = bitmap.bmHeight;
    layout.header.biPlanes = bitmap.bmPlanes;
    layout.header.biBitCount = bitmap.bmBitsPixel;
    layout.header.biCompression = BI_RGB;
    layout.header.biSizeImage = layout.imageSize;
    layout.header.biClrUsed = depth < 24 ? colours : 0;
    return layout;
}

BITMAPFILEHEADER makeFileHeader(const ImageLayout& layout) noexcept {
    static_assert(sizeof(BITMAPFILEHEADER) == 14);
    BITMAPFILEHEADER header = {};
    header.bfType = 0x4D42;  // "BM"
    header.bfOffBits = sizeof(header) + layout.headerLength;
    header.bfSize = header.bfOffBits + layout.imageSize;
    return header;
}

ImageFile renderIcon(Icon icon) noexcept {
    if (!icon) {
        return {};
    }
    const ScreenContext screen(GetDC(nullptr));
    if (!screen) {
        return {};
    }
    const Bitmap bitmap = drawIcon(screen.get(), icon.get());
    icon.reset();
    if (!bitmap) {
        return {};
    }
    return encodeBitmap(screen.get(), bitmap.get());
}

}  // namespace winutil::filesystem
