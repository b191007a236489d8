// Volumes and drives of the machine that the tests run on, against what it says itself.
#include <windows.h>

#include <shellapi.h>
#include <winioctl.h>

#include <string>
#include <vector>

#include "c_run_time.h"
#include "winutil_fixture.h"

namespace testbed {

namespace {

using testing::Contains;
using testing::ElementsAre;
using Texts = std::vector<std::wstring>;

using RealVolumes = WinUtilTest;

std::vector<std::wstring> textsOf(const JavaObject& list) {
    Texts texts;
    for (const JavaObject& element : FakeJava::listElements(list)) {
        texts.push_back(element.text());
    }
    return texts;
}

// The first mount point of each volume, or its name.
Texts volumesOfTheMachine() {
    Texts volumes;
    wchar_t name[MAX_PATH];
    const HANDLE search = FindFirstVolumeW(name, MAX_PATH);
    EXPECT_NE(search, INVALID_HANDLE_VALUE);
    do {
        wchar_t paths[MAX_PATH] = {};
        DWORD length = 0;
        GetVolumePathNamesForVolumeNameW(name, paths, MAX_PATH, &length);
        volumes.emplace_back(paths[0] != L'\0' ? paths : name);
    } while (FindNextVolumeW(search, name, MAX_PATH));
    FindVolumeClose(search);
    return volumes;
}

TEST_F(RealVolumes, AreListed) {
    const JavaObject collection = java.list();
    NATIVE(listPartitions)(collection);
    EXPECT_EQ(textsOf(collection), volumesOfTheMachine());
    EXPECT_THAT(textsOf(collection), Contains(L"C:\\"));
}

TEST_F(RealVolumes, OfAMissingDiskAreAFileNotFound) {
    NATIVE(listNTFSPartitions)(L"\\\\.\\PhysicalDrive9", java.list());
    EXPECT_EQ(java.takeException(), fileNotFound(systemText(ERROR_FILE_NOT_FOUND)));
}

TEST_F(RealVolumes, OfAFileFailWithTheSystemsText) {
    const std::wstring file = folder() / L"disk1";
    writeFile(file, std::string_view(""));
    NATIVE(listNTFSPartitions)(file, java.list());
    const Thrown thrown = java.takeException();
    EXPECT_EQ(thrown.className, "java/io/IOException");
    EXPECT_NE(thrown.message, L"");
    EXPECT_NE(thrown.message, L"Failed to obtain error message");
}

TEST_F(RealVolumes, AreMountedAtTheirRoots) {
    EXPECT_EQ(NATIVE(getVolumeName)(L"C:\\windows\\system32").text(), L"C:\\");
    EXPECT_EQ(NATIVE(getVolumeName)(L"C:\\no such folder\\at all").text(), L"C:\\");
    EXPECT_EQ(NATIVE(getVolumeName)(L"").text(), L"");
}

TEST_F(RealVolumes, HaveTheFileSystemThatTheSystemNames) {
    wchar_t name[MAX_PATH] = {};
    ASSERT_TRUE(GetVolumeInformationW(L"C:\\", nullptr, 0, nullptr, nullptr, nullptr, name, MAX_PATH));
    EXPECT_EQ(NATIVE(isNTFSVolume)(L"C:\\windows"), std::wstring(name) == L"NTFS");
    EXPECT_FALSE(NATIVE(isNTFSVolume)(L"\\\\no-such-server\\share\\x"));
}

TEST_F(RealVolumes, HaveWindowsOnOneOfThem) {
    wchar_t folder[MAX_PATH];
    ASSERT_NE(GetWindowsDirectoryW(folder, MAX_PATH), 0U);
    EXPECT_EQ(NATIVE(getSystemVolumeDriveLetter)().text(), std::wstring(folder).substr(0, 1));
}

TEST_F(RealVolumes, HaveTheLabelThatTheShellShows) {
    SHFILEINFOW information = {};
    ASSERT_NE(SHGetFileInfoW(L"C:\\", 0, &information, sizeof(information), SHGFI_DISPLAYNAME), 0U);
    EXPECT_EQ(NATIVE(getVolumeLabel)(L"C:\\").text(), information.szDisplayName);
    EXPECT_NE(NATIVE(getVolumeLabel)(L"C:\\").text().find(L"(C:)"), std::wstring::npos);
}

TEST_F(RealVolumes, CannotBeLabelledWhereThereAreNone) {
    EXPECT_FALSE(NATIVE(setVolumeLabel)(L"Q:\\", L"label"));
}

TEST_F(RealVolumes, AreOfSomeKind) {
    EXPECT_EQ(NATIVE(getDriveType)(L"C:\\"), static_cast<jint>(DRIVE_FIXED));
    EXPECT_EQ(NATIVE(getDriveType)(L"Q:\\"), static_cast<jint>(DRIVE_NO_ROOT_DIR));
}

TEST_F(RealVolumes, HaveSpace) {
    ULARGE_INTEGER available;
    ULARGE_INTEGER total;
    ULARGE_INTEGER free;
    ASSERT_TRUE(GetDiskFreeSpaceExW(L"C:\\", &available, &total, &free));
    EXPECT_EQ(NATIVE(getTotalDiskSpace)(L"C:\\windows"), static_cast<jlong>(total.QuadPart));
    // Others use the disk, too.
    EXPECT_NEAR(static_cast<double>(NATIVE(getFreeDiskSpace)(L"C:\\")), static_cast<double>(free.QuadPart),
                1e9);
    EXPECT_EQ(NATIVE(getTotalDiskSpace)(L"Q:\\"), 0);
    EXPECT_EQ(NATIVE(getFreeDiskSpace)(L"Q:\\no such folder"), 0);
}

TEST_F(RealVolumes, HaveDrives) {
    Texts expected;
    for (wchar_t letter = L'A'; letter <= L'Z'; ++letter) {
        if ((GetLogicalDrives() >> (letter - L'A') & 1) != 0) {
            expected.push_back(std::wstring(1, letter) + L":\\");
        }
    }
    EXPECT_EQ(NATIVE(getLogicalDrives)().texts(), expected);
    EXPECT_THAT(expected, Contains(L"C:\\"));
}

TEST_F(RealVolumes, HaveTroubleToldOnTheStandardOutputOfTheProcess) {
    const std::wstring file = folder() / L"output.txt";
    {
        const RedirectedOutput output(system(), file);
        const Replacement failing = system().answer("FindFirstVolumeW", ~0ULL, ERROR_NOT_READY);
        NATIVE(listPartitions)(java.list());
    }
    EXPECT_EQ(readFile(file), "FindFirstVolumeW failed with error code 21\r\n");
}

}  // namespace

}  // namespace testbed
