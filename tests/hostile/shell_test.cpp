// Screens of any depth.
#include "answers/bitmaps.h"
#include "hostile_test.h"
#include "shell_fixture.h"

namespace testbed {

namespace {

using HostileScreen = HostileTest<ShellTest>;

TEST_F(HostileScreen, HasBitmapsOfAnyDepth) {
    shellLibrary.icon = L"C:\\icons.dll,-7";
    const auto extraction = REPLACE(ExtractIconExW, [](LPCWSTR, int, HICON* large, HICON* small, UINT count) {
        return REAL(ExtractIconExW)(L"shell32.dll", 3, large, small, count);
    });
    forEachInput("icon_image", [&](hostile::Input& input) {
        const hostile::Bitmaps bitmaps(input);
        const auto shape = REPLACE(
            GetObjectA, [&](HANDLE, int size, LPVOID buffer) { return bitmaps.giveShape(buffer, size); });
        const auto pixels =
            REPLACE(GetDIBits, [](HDC, HBITMAP, UINT, UINT lines, LPVOID bits, LPBITMAPINFO info, UINT) {
                return hostile::Bitmaps::givePixels(lines, bits, info);
            });
        note(NATIVE(getLibraryIcon)(L"C:\\a.library-ms"));
    });
}

}  // namespace

}  // namespace testbed
