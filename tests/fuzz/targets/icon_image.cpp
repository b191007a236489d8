// Bitmaps of any depth as the screen may have them, and their layout as a file.
#include "filesystem/icon_image.h"
#include "answers/bitmaps.h"
#include "target.h"
#include "windows/system.h"

namespace {

using winutil::filesystem::ImageLayout;

hostile::Bitmaps* bitmaps = nullptr;

// A handle of one of GDI's objects.
template <class Handle>
Handle fake() {
    return static_cast<Handle>(fuzz::fakeHandle());
}

}  // namespace

extern "C" {
HDC WINAPI GetDC(HWND) {
    return fake<HDC>();
}
int WINAPI ReleaseDC(HWND, HDC) {
    return 1;
}
HDC WINAPI CreateCompatibleDC(HDC) {
    return fake<HDC>();
}
WINBOOL WINAPI DeleteDC(HDC) {
    return TRUE;
}
HBITMAP WINAPI CreateCompatibleBitmap(HDC, int, int) {
    return fake<HBITMAP>();
}
HBRUSH WINAPI CreateSolidBrush(COLORREF) {
    return fake<HBRUSH>();
}
HGDIOBJ WINAPI SelectObject(HDC, HGDIOBJ) {
    return fuzz::fakeHandle();
}
WINBOOL WINAPI DeleteObject(HGDIOBJ) {
    return TRUE;
}
WINBOOL WINAPI PatBlt(HDC, int, int, int, int, DWORD) {
    return TRUE;
}
WINBOOL WINAPI DrawIconEx(HDC, int, int, HICON, int, int, UINT, HBRUSH, UINT) {
    return TRUE;
}
WINBOOL WINAPI DestroyIcon(HICON) {
    return TRUE;
}
int WINAPI GetObjectA(HANDLE, int size, LPVOID buffer) {
    return bitmaps->giveShape(buffer, size);
}
int WINAPI GetDIBits(HDC, HBITMAP, UINT, UINT lines, LPVOID bits, LPBITMAPINFO info, UINT) {
    return hostile::Bitmaps::givePixels(lines, bits, info);
}
}

void fuzz::examine(hostile::Input& input) {
    hostile::Bitmaps answers(input);
    bitmaps = &answers;
    const ImageLayout layout = winutil::filesystem::layOutImage(answers.shape());
    const BITMAPFILEHEADER header = winutil::filesystem::makeFileHeader(layout);
    require(header.bfSize == sizeof(header) + layout.headerLength + layout.imageSize,
            "a file of another size");
    const auto file = winutil::filesystem::renderIcon(winutil::filesystem::Icon(fake<HICON>()));
    require(file.size == header.bfSize, "an image of another size than its layout");
    const ExactCopy copy({file.bytes.get(), file.size});
}
