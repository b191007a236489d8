// What unbuffered I/O needs to know: sector sizes, the page size, addresses of buffers.
#include "winutil_fixture.h"

namespace {

using namespace testbed;

class SectorSizeTest : public WinUtilTest {
protected:
    // Asks for the sector size of a path; the root that the system was asked for, or "(no call)", goes into
    // `root`.
    jint sectorSize(const std::wstring& path) {
        root = L"(no call)";
        const auto ask = REPLACE(
            GetDiskFreeSpaceW,
            [this](LPCWSTR given, LPDWORD perCluster, LPDWORD bytes, LPDWORD free, LPDWORD total) -> BOOL {
                root = given;
                *perCluster = 8;
                *bytes = 4096;
                *free = 1;
                *total = 2;
                return TRUE;
            });
        return NATIVE(getSectorSize)(path);
    }

    std::wstring root;
};

struct Root {
    const char* name;
    const wchar_t* path;
    const wchar_t* root;
};

class RootTest : public SectorSizeTest, public ::testing::WithParamInterface<Root> {};

TEST_P(RootTest, AsksForTheRootOfThePath) {
    const bool asked = std::wstring_view(GetParam().root) != L"(no call)";

    EXPECT_EQ(sectorSize(GetParam().path), asked ? 4096 : 0);

    EXPECT_EQ(root, GetParam().root);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, RootTest,
    ::testing::Values(
        Root{"Drive", L"C:", L"C:"}, Root{"DriveRoot", L"C:\\", L"C:"},
        Root{"DrivePath", L"C:\\data\\x", L"C:"},
        Root{"ShadowCopy", L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy12\\dir\\file",
             L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy12\\"},
        Root{"ShadowCopyAlone", L"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy12", L"(no call)"},
        Root{"Share", L"\\\\server\\share\\dir\\file", L"\\\\server\\share\\"},
        Root{"ShareRoot", L"\\\\server\\share\\", L"\\\\server\\share\\"},
        Root{"ShareWithoutBackslash", L"\\\\server\\share", L"(no call)"},
        Root{"ServerAlone", L"\\\\server", L"(no call)"}, Root{"TwoBackslashes", L"\\\\", L"(no call)"},
        Root{"LongForm", L"\\\\?\\C:\\x", L"\\\\?\\C:\\"}, Root{"Relative", L"dir\\file", L"(no call)"},
        Root{"OneCharacter", L"C", L"(no call)"}, Root{"Empty", L"", L"(no call)"}),
    [](const auto& root) { return root.param.name; });

TEST_F(SectorSizeTest, IsZeroWhereTheSystemDoesNotKnow) {
    const auto fail = system().answer("GetDiskFreeSpaceW", FALSE, ERROR_PATH_NOT_FOUND);

    EXPECT_EQ(NATIVE(getSectorSize)(L"C:\\"), 0);
}

TEST_F(SectorSizeTest, IsThatOfTheRealDrive) {
    DWORD perCluster = 0;
    DWORD bytes = 0;
    DWORD free = 0;
    DWORD total = 0;
    ASSERT_TRUE(GetDiskFreeSpaceW(L"C:\\", &perCluster, &bytes, &free, &total));

    EXPECT_EQ(NATIVE(getSectorSize)(folder().path()), static_cast<jint>(bytes));
}

TEST_F(SectorSizeTest, LeavesThePathAsItWas) {
    const JavaObject path = java.string(L"C:\\data\\x");

    NATIVE(getSectorSize)(path);

    EXPECT_EQ(path.text(), L"C:\\data\\x");
}

TEST_F(SectorSizeTest, TellsThePageSizeOfTheSystem) {
    SYSTEM_INFO information;
    GetSystemInfo(&information);

    EXPECT_EQ(NATIVE(getPageSize)(), static_cast<jint>(information.dwPageSize));
}

TEST_F(SectorSizeTest, TellsTheAddressOfADirectBuffer) {
    int memory = 0;

    EXPECT_EQ(NATIVE(GetDirectBufferAddress)(java.directBuffer(&memory, sizeof(memory))),
              reinterpret_cast<jlong>(&memory));
    EXPECT_EQ(NATIVE(GetDirectBufferAddress)(java.directBuffer(nullptr, 0)), 0);
}

TEST_F(SectorSizeTest, MakesAnArrayOfTheSizeAskedFor) {
    EXPECT_EQ(NATIVE(getAlignedByteBuffer)(513).bytes().size(), 513u);
    EXPECT_EQ(NATIVE(getAlignedByteBuffer)(0).bytes().size(), 0u);
}

TEST_F(SectorSizeTest, LeavesTheJvmsErrorWhenItHasNoMemoryForTheArray) {
    java.failCall("NewByteArray");

    EXPECT_FALSE(NATIVE(getAlignedByteBuffer)(1));

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
}

}  // namespace
