#include "volume/disk_number.h"

#include "gtest/gtest.h"

namespace {

using winutil::volume::trailingDiskNumber;

TEST(DiskNumber, IsTheNumberAtTheEndOfThePath) {
    EXPECT_EQ(trailingDiskNumber(L"\\\\.\\PHYSICALDRIVE3"), 3);
    EXPECT_EQ(trailingDiskNumber(L"\\\\.\\PhysicalDrive10"), 10);
    EXPECT_EQ(trailingDiskNumber(L"\\\\.\\2PhysicalDrive007"), 7);
    EXPECT_EQ(trailingDiskNumber(L"0"), 0);
}

TEST(DiskNumber, IsNoneWithoutADigitAtTheEnd) {
    for (const wchar_t* path : {L"\\\\.\\PhysicalDrive", L"", L"\\\\.\\1\\", L"3 ", L"x\u0663", L"x\uff13"}) {
        EXPECT_EQ(trailingDiskNumber(path), -1);
    }
}

TEST(DiskNumber, KnowsNoSign) {
    EXPECT_EQ(trailingDiskNumber(L"\\\\.\\PhysicalDrive-1"), 1);
}

TEST(DiskNumber, WrapsAroundWhenItIsTooLarge) {
    EXPECT_EQ(trailingDiskNumber(L"x2147483647"), 2147483647);
    EXPECT_LT(trailingDiskNumber(L"x2147483648"), 0);
    EXPECT_EQ(trailingDiskNumber(L"x4294967297"), 1);
}

}  // namespace
