// How bitmaps of every depth lie in an image file.
#include "filesystem/icon_image.h"

#include <gtest/gtest.h>

namespace {

using namespace winutil::filesystem;

ImageLayout layOut(WORD planes, WORD bits, LONG width = 16, LONG height = 16) {
    BITMAP bitmap = {};
    bitmap.bmWidth = width;
    bitmap.bmHeight = height;
    bitmap.bmPlanes = planes;
    bitmap.bmBitsPixel = bits;
    return layOutImage(bitmap);
}

TEST(ImageLayout, HasAColourTableByDepth) {
    EXPECT_EQ(layOut(1, 1).headerLength, 40u + 4 * 2);
    EXPECT_EQ(layOut(1, 4).headerLength, 40u + 4 * 16);
    EXPECT_EQ(layOut(1, 8).headerLength, 40u + 4 * 256);
    EXPECT_EQ(layOut(1, 16).headerLength, 40u + 262144);
    EXPECT_EQ(layOut(1, 24).headerLength, 40u);
    EXPECT_EQ(layOut(1, 32).headerLength, 40u);
}

TEST(ImageLayout, RoundsTheDepthUp) {
    EXPECT_EQ(layOut(1, 2).headerLength, layOut(1, 4).headerLength);
    EXPECT_EQ(layOut(4, 1).headerLength, layOut(1, 4).headerLength);
    EXPECT_EQ(layOut(1, 15).headerLength, layOut(1, 16).headerLength);
    EXPECT_EQ(layOut(1, 17).imageSize, layOut(1, 24).imageSize);
    EXPECT_EQ(layOut(3, 8).imageSize, layOut(1, 24).imageSize);
    EXPECT_EQ(layOut(1, 25).imageSize, layOut(1, 32).imageSize);
    EXPECT_EQ(layOut(1, 64).imageSize, layOut(1, 32).imageSize);
    EXPECT_EQ(layOut(1, 0).imageSize, layOut(1, 1).imageSize);
}

TEST(ImageLayout, CountsPixelsInEights) {
    EXPECT_EQ(layOut(1, 1).imageSize, 32u);
    EXPECT_EQ(layOut(1, 8).imageSize, 256u);
    EXPECT_EQ(layOut(1, 32).imageSize, 1024u);
    EXPECT_EQ(layOut(1, 32, 17, 2).imageSize, 3u * 2 * 32);
    EXPECT_EQ(layOut(1, 24, 1, 1).imageSize, 24u);
}

TEST(ImageLayout, DescribesTheBitmapAsItIs) {
    const BITMAPINFOHEADER header = layOut(4, 1, 17, 5).header;

    EXPECT_EQ(header.biSize, 40u);
    EXPECT_EQ(header.biWidth, 17);
    EXPECT_EQ(header.biHeight, 5);
    EXPECT_EQ(header.biPlanes, 4);
    EXPECT_EQ(header.biBitCount, 1);
    EXPECT_EQ(header.biCompression, 0u);
    EXPECT_EQ(header.biSizeImage, 3u * 5 * 4);
    EXPECT_EQ(header.biXPelsPerMeter, 0);
    EXPECT_EQ(header.biClrImportant, 0u);
}

TEST(ImageLayout, NamesTheColoursBelowTwentyFourBits) {
    EXPECT_EQ(layOut(1, 1).header.biClrUsed, 2u);
    EXPECT_EQ(layOut(1, 8).header.biClrUsed, 256u);
    EXPECT_EQ(layOut(1, 16).header.biClrUsed, 65536u);
    EXPECT_EQ(layOut(1, 24).header.biClrUsed, 0u);
    EXPECT_EQ(layOut(1, 32).header.biClrUsed, 0u);
}

TEST(ImageLayout, PutsTheFileHeaderInFront) {
    const BITMAPFILEHEADER header = makeFileHeader(layOut(1, 32));

    EXPECT_EQ(header.bfType, 19778);
    EXPECT_EQ(header.bfSize, 1078u);
    EXPECT_EQ(header.bfReserved1, 0);
    EXPECT_EQ(header.bfReserved2, 0);
    EXPECT_EQ(header.bfOffBits, 54u);
    EXPECT_EQ(makeFileHeader(layOut(1, 16)).bfOffBits, 262198u);
}

TEST(ImageFile, IsNoneWithoutAnIcon) {
    EXPECT_FALSE(renderIcon(Icon()).bytes);
}

}  // namespace
