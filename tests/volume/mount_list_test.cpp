#include "volume/mount_list.h"

#include <string>

#include "gtest/gtest.h"
#include "guard_pages.h"

namespace {

using namespace std::string_literals;
using winutil::volume::findDriveLetterPath;

TEST(MountList, GivesTheFirstPathWithADriveLetter) {
    EXPECT_EQ(findDriveLetterPath(L"D:\\\0E:\\\0\0"s), L"D:\\");
    EXPECT_EQ(findDriveLetterPath(L"\\\\?\\mount\\\0E:\\\0F:\\\0\0"s), L"E:\\");
}

TEST(MountList, TakesAFolderBelowADriveLetterToo) {
    EXPECT_EQ(findDriveLetterPath(L"C:\\mount\\\0D:\\\0\0"s), L"C:\\mount\\");
}

TEST(MountList, IsNotAskedForTheLetterItself) {
    EXPECT_EQ(findDriveLetterPath(L"?:\\\0\0"s), L"?:\\");
}

TEST(MountList, HasNoneWithoutColonAndBackslashInTheirPlaces) {
    for (const std::wstring& list : {L"\0"s, L"\0\0"s, L"D:\0\0"s, L"D:/\0\0"s, L"D\\\\\0\0"s, L"CD:\\\0\0"s,
                                     L":\\\0\0"s, L"\\\\?\\Volume{1}\\\0\0"s, L""s}) {
        EXPECT_EQ(findDriveLetterPath(list), L"");
    }
}

TEST(MountList, EndsAtTheEmptyPath) {
    EXPECT_EQ(findDriveLetterPath(L"none\0\0D:\\\0\0"s), L"");
}

TEST(MountList, IsReadNoFurtherThanItsEnd) {
    for (const std::wstring& list : {L"none"s, L"none\0"s, L"none\0D:"s, L"D"s}) {
        const testbed::GuardedBuffer block(std::as_bytes(std::span(list.data(), list.size())));
        EXPECT_EQ(findDriveLetterPath({block.as<const wchar_t>(), list.size()}), L"");
    }
    const std::wstring open = L"none\0D:\\unended"s;
    const testbed::GuardedBuffer block(std::as_bytes(std::span(open.data(), open.size())));
    EXPECT_EQ(findDriveLetterPath({block.as<const wchar_t>(), open.size()}), L"D:\\unended");
}

}  // namespace
