// The icon of a Windows library, through the shipped DLL, drawn by the system.
#include "shell_fixture.h"

namespace {

using namespace testbed;

// An icon that comes with every system.
constexpr wchar_t iconFile[] = L"shell32.dll";

class LibraryIcon : public ShellTest {
protected:
    struct Extraction {
        std::wstring file;
        int index;
        UINT count;
    };
    std::vector<Extraction> extractions;

    // Any location gives the same icon: the one that libraries have by default is not on every system.
    Replacement extraction =
        REPLACE(ExtractIconExW, [this](LPCWSTR from, int index, HICON* large, HICON* small, UINT count) {
            EXPECT_EQ(large, nullptr);
            extractions.push_back({from, index, count});
            return REAL(ExtractIconExW)(iconFile, 3, large, small, count);
        });

    LibraryIcon() { shellLibrary.icon = L"C:\\icons.dll,-7"; }

    JavaObject get() { return NATIVE(getLibraryIcon)(L"C:\\a.library-ms"); }
};

template <class T>
T valueAt(const std::vector<jbyte>& bytes, std::size_t offset) {
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof(value));
    return value;
}

TEST_F(LibraryIcon, IsABitmapFileInTheColoursOfTheScreen) {
    const JavaObject image = get();

    ASSERT_TRUE(image);
    const std::vector<jbyte>& bytes = image.bytes();
    ASSERT_EQ(bytes.size(), 1078u);
    EXPECT_EQ(valueAt<std::uint16_t>(bytes, 0), 19778);
    EXPECT_EQ(valueAt<std::uint32_t>(bytes, 2), 1078u);
    EXPECT_EQ(valueAt<std::uint32_t>(bytes, 6), 0u);
    EXPECT_EQ(valueAt<std::uint32_t>(bytes, 10), 54u);
    const auto header = valueAt<BITMAPINFOHEADER>(bytes, 14);
    EXPECT_EQ(header.biSize, 40u);
    EXPECT_EQ(header.biWidth, 16);
    EXPECT_EQ(header.biHeight, 16);
    EXPECT_EQ(header.biPlanes, 1);
    EXPECT_EQ(header.biBitCount, 32);
    EXPECT_EQ(header.biCompression, 0u);
    EXPECT_EQ(header.biSizeImage, 1024u);
    EXPECT_EQ(header.biClrUsed, 0u);
}

TEST_F(LibraryIcon, IsDrawnOnWhite) {
    // An icon that shows nothing: all of the ground is left.
    const auto draw = REPLACE(
        DrawIconEx, [](HDC, int x, int y, HICON, int width, int height, UINT step, HBRUSH brush, UINT flags) {
            EXPECT_EQ(x, 0);
            EXPECT_EQ(y, 0);
            EXPECT_EQ(width, 16);
            EXPECT_EQ(height, 16);
            EXPECT_EQ(step, 0u);
            EXPECT_EQ(brush, nullptr);
            EXPECT_EQ(flags, 3u);
            return TRUE;
        });

    const JavaObject image = get();

    ASSERT_TRUE(image);
    for (std::size_t pixel = 0; pixel < 256; ++pixel) {
        ASSERT_EQ(valueAt<std::uint32_t>(image.bytes(), 54 + 4 * pixel) & 0xFFFFFF, 0xFFFFFFu) << pixel;
    }
}

TEST_F(LibraryIcon, HoldsWhatTheIconShows) {
    const JavaObject image = get();

    ASSERT_TRUE(image);
    std::size_t drawn = 0;
    for (std::size_t pixel = 0; pixel < 256; ++pixel) {
        drawn += (valueAt<std::uint32_t>(image.bytes(), 54 + 4 * pixel) & 0xFFFFFF) != 0xFFFFFF ? 1 : 0;
    }
    EXPECT_GT(drawn, 20u);
}

TEST_F(LibraryIcon, ComesFromTheLibrarysOwnLocation) {
    get();

    ASSERT_EQ(extractions.size(), 1u);
    EXPECT_EQ(extractions[0].file, L"C:\\icons.dll");
    EXPECT_EQ(extractions[0].index, -7);
    EXPECT_EQ(extractions[0].count, 1u);
}

TEST_F(LibraryIcon, ComesFromTheSystemWhenTheLibraryHasNone) {
    shellLibrary.icon.clear();

    EXPECT_TRUE(get());

    ASSERT_EQ(extractions.size(), 1u);
    EXPECT_EQ(extractions[0].file, L"imageres.dll");
    EXPECT_EQ(extractions[0].index, -1001);
}

TEST_F(LibraryIcon, GivesTheLibraryBackAndEndsCom) {
    get();

    EXPECT_EQ(events, (Events{"initialize", "release item", "release library", "uninitialize"}));
}

TEST_F(LibraryIcon, IsNoneWithoutALibrary) {
    for (HRESULT* result : {&initializeResult, &parseResult, &createResult, &shellLibrary.loadResult}) {
        *result = E_FAIL;
        EXPECT_EQ(get(), nullptr);
        *result = S_OK;
    }
    EXPECT_TRUE(extractions.empty());
    EXPECT_EQ(count("initialize"), 4);
    EXPECT_EQ(count("uninitialize"), 3);
}

TEST_F(LibraryIcon, IsNoneUnlessExactlyOneWasExtracted) {
    for (const UINT extracted : {0u, 2u, 0xFFFFFFFFu}) {
        const auto extract = system().answer("ExtractIconExW", extracted);
        EXPECT_EQ(get(), nullptr);
    }
    EXPECT_EQ(system().count("GetDC"), 0u);
}

TEST_F(LibraryIcon, IsNoneWhenAStepOfTheDrawingFails) {
    for (const char* step :
         {"GetDC", "CreateCompatibleDC", "CreateCompatibleBitmap", "CreateSolidBrush", "PatBlt", "DrawIconEx",
          "GetObjectA", "GlobalAlloc", "GlobalLock", "GetDIBits"}) {
        const auto failure = system().failCall(step, 1, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_EQ(get(), nullptr) << step;
        EXPECT_EQ(failure.count(), 1u) << step;
    }
    for (const std::size_t k : {1, 2}) {
        const auto failure = system().failCall("SelectObject", k, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(get(), nullptr) << "selection " << k;
    }
    // The header, and the file behind the path.
    for (const auto& [function, k] : {std::pair("calloc", 1u), std::pair("malloc", 2u)}) {
        const auto failure = system().failCall(function, k, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(get(), nullptr) << function;
        EXPECT_EQ(failure.count(), k) << function;
    }
    EXPECT_EQ(count("initialize"), count("uninitialize") + 0) << "COM is balanced";
    EXPECT_EQ(events.empty() ? "" : events.back(), "uninitialize");
}

TEST_F(LibraryIcon, ReadsABitmapThatIsNoLongerSelected) {
    const auto pattern = system().watch("PatBlt");
    const auto select = system().watch("SelectObject");
    const auto pixels = REPLACE(GetDIBits, [&](HDC context, HBITMAP bitmap, UINT first, UINT rows,
                                               LPVOID bits, LPBITMAPINFO information, UINT usage) {
        EXPECT_EQ(first, 0u);
        EXPECT_EQ(rows, 16u);
        EXPECT_EQ(usage, 0u);
        EXPECT_EQ(select.count(), 4u) << "two selections and their ends";
        return REAL(GetDIBits)(context, bitmap, first, rows, bits, information, usage);
    });

    EXPECT_TRUE(get());

    ASSERT_EQ(pattern.count(), 1u);
    EXPECT_EQ(pattern.calls()[0].argument<int>(1), 0);
    EXPECT_EQ(pattern.calls()[0].argument<int>(2), 0);
    EXPECT_EQ(pattern.calls()[0].argument<int>(3), 16);
    EXPECT_EQ(pattern.calls()[0].argument<int>(4), 16);
    EXPECT_EQ(pattern.calls()[0].argument<DWORD>(5), 0xF00021u);
    EXPECT_EQ(system().count("GlobalLock"), system().count("GlobalUnlock"));
}

TEST_F(LibraryIcon, HasAColourTableOnAScreenWithSixteenBits) {
    const auto shape = REPLACE(GetObjectA, [](HANDLE object, int size, LPVOID out) {
        const int written = GetObjectA(object, size, out);
        static_cast<BITMAP*>(out)->bmBitsPixel = 16;
        return written;
    });

    const JavaObject image = get();

    ASSERT_TRUE(image);
    EXPECT_EQ(image.bytes().size(), 14u + 40 + 262144 + 512);
    EXPECT_EQ(valueAt<std::uint32_t>(image.bytes(), 10), 14u + 40 + 262144);
}

TEST_F(LibraryIcon, HoldsTheLinesOfAOneBitScreen) {
    const auto shape = REPLACE(GetObjectA, [](HANDLE object, int size, LPVOID out) {
        const int written = GetObjectA(object, size, out);
        static_cast<BITMAP*>(out)->bmBitsPixel = 1;
        return written;
    });
    const auto memory = system().watch("GlobalAlloc");

    const JavaObject image = get();

    ASSERT_TRUE(image);
    EXPECT_EQ(image.bytes().size(), 14u + 40 + 8 + 32);
    ASSERT_EQ(memory.count(), 1u);
    EXPECT_GE(memory.calls()[0].argument<SIZE_T>(1), 64u) << "sixteen lines of four bytes";
}

TEST_F(LibraryIcon, IsNoneWhenTheJvmHasNoMemory) {
    java.failCall("NewByteArray");

    EXPECT_EQ(get(), nullptr);

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
}

TEST_F(LibraryIcon, IsDrawnOnAThreadOfTheOtherMode) {
    initializeResult = RPC_E_CHANGED_MODE;

    EXPECT_TRUE(get());
    EXPECT_EQ(count("uninitialize"), 0);
}

}  // namespace
