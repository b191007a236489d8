// What is asked of one drive or volume, and the list of all drives.
#include <windows.h>

#include <shellapi.h>

#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

#include "volume_fixture.h"

namespace testbed {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::wstring>;

class Drives : public VolumeTest {
protected:
    // Answers the call for a file system's name.
    Replacement fileSystem(const std::wstring& name) {
        return REPLACE(GetVolumeInformationW,
                       [name](LPCWSTR, LPWSTR, DWORD, LPDWORD, LPDWORD, LPDWORD, LPWSTR buffer, DWORD room) {
                           return wcscpy_s(buffer, room, name.c_str()) == 0 ? TRUE : FALSE;
                       });
    }
    Replacement windowsFolder(const std::string& folder) {
        return REPLACE(GetWindowsDirectoryA, [folder](LPSTR buffer, UINT room) {
            EXPECT_EQ(room, 2048U);
            std::memcpy(buffer, folder.c_str(), folder.size() + 1);
            return static_cast<UINT>(folder.size());
        });
    }
    Replacement displayName(DWORD_PTR result, const std::wstring& name) {
        return REPLACE(SHGetFileInfoW, [=](LPCWSTR, DWORD, SHFILEINFOW* information, UINT, UINT) {
            wcscpy_s(information->szDisplayName, name.c_str());
            SetLastError(ERROR_GEN_FAILURE);
            return result;
        });
    }
    Replacement label(BOOL result, const std::wstring& text) {
        return REPLACE(
            GetVolumeInformationW, [=](LPCWSTR root, LPWSTR buffer, DWORD room, LPDWORD serial,
                                       LPDWORD length, LPDWORD flags, LPWSTR name, DWORD nameRoom) {
                EXPECT_STREQ(root, L"X:\\");
                EXPECT_EQ(room, 1024U);
                EXPECT_TRUE(serial == nullptr && length == nullptr && flags == nullptr && name == nullptr);
                EXPECT_EQ(nameRoom, 0U);
                wcscpy_s(buffer, room, text.c_str());
                return result;
            });
    }
    Replacement driveStrings(const std::string& bytes, DWORD length) {
        return REPLACE(GetLogicalDriveStringsA, [=](DWORD room, LPSTR buffer) {
            EXPECT_EQ(room, 256U);
            std::memcpy(buffer, bytes.data(), bytes.size());
            return length;
        });
    }
};

TEST_F(Drives, GiveTheMountPointThatTheSystemWrites) {
    const Replacement asking = REPLACE(GetVolumePathNameW, [](LPCWSTR path, LPWSTR volume, DWORD room) {
        EXPECT_STREQ(path, L"C:\\mount\\file");
        EXPECT_EQ(room, 512U);
        wcscpy_s(volume, room, L"C:\\mount\\");
        return TRUE;
    });
    EXPECT_EQ(NATIVE(getVolumeName)(L"C:\\mount\\file").text(), L"C:\\mount\\");
}

TEST_F(Drives, GiveNoMountPointWhereTheSystemWritesNone) {
    const Replacement failing = system().answer("GetVolumePathNameW", FALSE, ERROR_INVALID_NAME);
    EXPECT_EQ(NATIVE(getVolumeName)(L"C:\\x").text(), L"");
}

TEST_F(Drives, DoNotAskWhetherTheMountPointWasFound) {
    const Replacement asking = REPLACE(GetVolumePathNameW, [](LPCWSTR, LPWSTR volume, DWORD room) {
        wcscpy_s(volume, room, L"half a p");
        return FALSE;
    });
    EXPECT_EQ(NATIVE(getVolumeName)(L"C:\\x").text(), L"half a p");
}

TEST_F(Drives, KnowNeitherMountPointNorFileSystemOnASystemWithoutTheCalls) {
    for (const char* hidden : {"GetVolumePathNameW", "GetVolumeInformationW"}) {
        FreshLibrary old(folder(), toWide(hidden) + L".dll");
        old.ledger().allowUnknown("FreeLibrary");  // of a module that was only looked up
        const auto hiding = old.system().hide({hidden});
        ASSERT_TRUE(old.load());
        constexpr const char* volumeName = "Java_com_qarvo_kel_util_WindowsUtil_getVolumeName";
        using VolumeName = decltype(Java_com_qarvo_kel_util_WindowsUtil_getVolumeName);
        const NativeMethod<VolumeName> name(java, volumeName, old.exported<VolumeName>(volumeName));
        constexpr const char* ntfsVolume = "Java_com_qarvo_kel_util_WindowsUtil_isNTFSVolume";
        using NtfsVolume = decltype(Java_com_qarvo_kel_util_WindowsUtil_isNTFSVolume);
        const NativeMethod<NtfsVolume> ntfs(java, ntfsVolume, old.exported<NtfsVolume>(ntfsVolume));

        EXPECT_EQ(name(L"C:\\windows").text(), hidden == "GetVolumePathNameW"s ? L"" : L"C:\\");
        EXPECT_FALSE(ntfs(L"C:\\windows"));

        old.unload();
    }
}

TEST_F(Drives, HaveNtfsWhereTheFileSystemsNameSaysSo) {
    for (const wchar_t* name : {L"NTFS", L"xNTFS2"}) {
        const Replacement asking = fileSystem(name);
        EXPECT_TRUE(NATIVE(isNTFSVolume)(L"C:\\x")) << toUtf8(name);
    }
    for (const wchar_t* name : {L"ReFS", L"FAT32", L"exFAT", L"ntfs", L"NTF", L""}) {
        const Replacement asking = fileSystem(name);
        EXPECT_FALSE(NATIVE(isNTFSVolume)(L"C:\\x")) << toUtf8(name);
    }
}

TEST_F(Drives, AreAskedForTheFileSystemOfTheirRoot) {
    const Replacement root = system().watch("GetVolumePathNameW");
    const Replacement information =
        REPLACE(GetVolumeInformationW, [](LPCWSTR volume, LPWSTR label, DWORD labelRoom, LPDWORD serial,
                                          LPDWORD length, LPDWORD flags, LPWSTR name, DWORD room) {
            EXPECT_STREQ(volume, L"C:\\");
            EXPECT_TRUE(label == nullptr && serial == nullptr && length == nullptr && flags == nullptr);
            EXPECT_EQ(labelRoom, 0U);
            EXPECT_EQ(room, 260U);
            wcscpy_s(name, room, L"NTFS");
            return TRUE;
        });
    EXPECT_TRUE(NATIVE(isNTFSVolume)(L"C:\\windows\\system32"));
    ASSERT_EQ(root.count(), 1U);
    EXPECT_EQ(root.calls()[0].argument<DWORD>(2), 512U);
}

TEST_F(Drives, HaveNoNtfsWhereItCannotBeTold) {
    {
        const Replacement failing = system().answer("GetVolumePathNameW", FALSE, ERROR_INVALID_NAME);
        EXPECT_FALSE(NATIVE(isNTFSVolume)(L"C:\\x"));
        EXPECT_EQ(system().count("GetVolumeInformationW"), 0U);
    }
    const Replacement failing = system().answer("GetVolumeInformationW", FALSE, ERROR_NOT_READY);
    EXPECT_FALSE(NATIVE(isNTFSVolume)(L"C:\\x"));
}

TEST_F(Drives, GiveTheTextBeforeTheFirstColonAndBackslashOfTheWindowsFolder) {
    for (const auto& [path, letter] :
         {std::pair("D:\\Windows", L"D"), {"\\\\?\\E:\\Windows", L"\\\\?\\E"}, {"a:b:\\c:\\", L"a:b"}}) {
        const Replacement asking = windowsFolder(path);
        EXPECT_EQ(NATIVE(getSystemVolumeDriveLetter)().text(), letter);
    }
}

TEST_F(Drives, ConvertThatTextFromTheAnsiCodePage) {
    const Replacement asking = windowsFolder("\xE9:\\");
    wchar_t expected[4] = {};
    MultiByteToWideChar(CP_ACP, 0, "\xE9", -1, expected, 4);
    ASSERT_NE(expected[0], L'\0');
    EXPECT_EQ(NATIVE(getSystemVolumeDriveLetter)().text(), expected);
}

TEST_F(Drives, GiveNoLetterWhereTheWindowsFolderHasNone) {
    for (const char* path : {"", ":\\Windows", "C:Windows", "C:", "C:/Windows", "\\\\server\\share"}) {
        const Replacement asking = windowsFolder(path);
        EXPECT_EQ(NATIVE(getSystemVolumeDriveLetter)(), nullptr) << path;
    }
    // A failure, and too small a buffer: the length that it takes, and nothing of use in it.
    for (const UINT length : {0U, 2048U, 5000U}) {
        const Replacement asking = REPLACE(GetWindowsDirectoryA, [=](LPSTR buffer, UINT room) {
            strcpy_s(buffer, room, "C:\\Windows");
            return length;
        });
        EXPECT_EQ(NATIVE(getSystemVolumeDriveLetter)(), nullptr);
    }
}

TEST_F(Drives, AreLabelledAsTheShellShowsThem) {
    const Replacement asking = displayName(1, L"Daten (X:)");
    const Replacement unasked = label(TRUE, L"label");
    EXPECT_EQ(NATIVE(getVolumeLabel)(L"X:\\").text(), L"Daten (X:)");
    EXPECT_EQ(unasked.count(), 0U);
    ASSERT_EQ(asking.count(), 1U);
    const RecordedCall call = asking.calls()[0];
    EXPECT_EQ(call.argument<DWORD>(1), 0U);
    EXPECT_EQ(call.argument<UINT>(3), 360U);
    EXPECT_EQ(call.argument<UINT>(4), 0x200U);
}

TEST_F(Drives, AreLabelledByTheirVolumeWhereTheShellShowsNothing) {
    // The plain failure is none for this method, nor is what is negative in 64 bits only.
    for (const DWORD_PTR result : {DWORD_PTR{1}, DWORD_PTR{0}, DWORD_PTR{0x7FFFFFFF}, DWORD_PTR{1} << 63}) {
        const Replacement asking = displayName(result, L"");
        const Replacement volume = label(TRUE, L"label");
        EXPECT_EQ(NATIVE(getVolumeLabel)(L"X:\\").text(), L"label");
    }
}

TEST_F(Drives, HaveNoLabelWhereNobodyHasOne) {
    const Replacement asking = displayName(1, L"");
    const Replacement volume = label(FALSE, L"half a label");
    EXPECT_EQ(NATIVE(getVolumeLabel)(L"X:\\").text(), L"");
}

TEST_F(Drives, HaveNoLabelWhenTheShellFails) {
    const Replacement message = system().watch("FormatMessageW");
    for (const DWORD_PTR result : {DWORD_PTR{0x80000000}, DWORD_PTR{0x80004005}, DWORD_PTR{0xFFFFFFFF}}) {
        const Replacement asking = displayName(result, L"name");
        const Replacement volume = label(TRUE, L"label");
        EXPECT_EQ(NATIVE(getVolumeLabel)(L"X:\\").text(), L"");
        EXPECT_EQ(volume.count(), 0U);
    }
    // For a message that nobody sees.
    ASSERT_EQ(message.count(), 3U);
    EXPECT_EQ(message.calls()[0].argument<DWORD>(2), DWORD{ERROR_GEN_FAILURE});
}

TEST_F(Drives, MayHaveLabelsThatFillTheShellsStructure) {
    const Replacement asking =
        REPLACE(SHGetFileInfoW, [](LPCWSTR, DWORD, SHFILEINFOW* information, UINT, UINT) {
            std::wmemset(information->szDisplayName, L'n', std::size(information->szDisplayName));
            std::wmemset(information->szTypeName, L't', std::size(information->szTypeName));
            return DWORD_PTR{1};
        });
    EXPECT_EQ(NATIVE(getVolumeLabel)(L"X:\\").text(), std::wstring(260, L'n'));
}

TEST_F(Drives, MayHaveLabelsOfOneCharacter) {
    const Replacement named = displayName(1, L"n");
    const Replacement labelled = label(TRUE, L"another");
    EXPECT_EQ(NATIVE(getVolumeLabel)(L"X:\\").text(), L"n");
}

TEST_F(Drives, TakeLabelsInModifiedUtf8) {
    std::string given;
    const Replacement setting = REPLACE(SetVolumeLabelA, [&](LPCSTR root, LPCSTR text) {
        given = root + "="s + text;
        return TRUE;
    });
    EXPECT_TRUE(NATIVE(setVolumeLabel)(L"X:\\", L"D\u00e4ten"));
    EXPECT_EQ(given, "X:\\=D\xC3\xA4ten");
}

TEST_F(Drives, SayWhetherTheirLabelWasSet) {
    const Replacement failing = system().answer("SetVolumeLabelA", FALSE, ERROR_ACCESS_DENIED);
    EXPECT_FALSE(NATIVE(setVolumeLabel)(L"X:\\", L"x"));
    const Replacement odd = system().answer("SetVolumeLabelA", 256);
    EXPECT_TRUE(NATIVE(setVolumeLabel)(L"X:\\", L"x"));
}

TEST_F(Drives, AreOfTheKindThatTheSystemSays) {
    for (const UINT kind : {0U, 1U, 2U, 3U, 4U, 5U, 6U}) {
        const Replacement asking = REPLACE(GetDriveTypeA, [=](LPCSTR root) {
            EXPECT_STREQ(root, "X:\\\xC3\xA4");
            return kind;
        });
        EXPECT_EQ(NATIVE(getDriveType)(L"X:\\\u00e4"), static_cast<jint>(kind));
    }
}

TEST_F(Drives, HaveTheTotalAndTheFreeSpaceOfTheWholeVolume) {
    const Replacement asking =
        REPLACE(SHGetDiskFreeSpaceExA,
                [](LPCSTR path, ULARGE_INTEGER* available, ULARGE_INTEGER* total, ULARGE_INTEGER* free) {
                    EXPECT_STREQ(path, "X:\\\xC3\xA4");
                    available->QuadPart = 1;
                    total->QuadPart = 0x123456789ABCULL;
                    free->QuadPart = 0x23456789ABCULL;
                    return TRUE;
                });
    EXPECT_EQ(NATIVE(getTotalDiskSpace)(L"X:\\\u00e4"), 0x123456789ABC);
    EXPECT_EQ(NATIVE(getFreeDiskSpace)(L"X:\\\u00e4"), 0x23456789ABC);
}

TEST_F(Drives, HaveNoSpaceWhenTheCallFailsWhateverItWrote) {
    const Replacement failing = REPLACE(
        SHGetDiskFreeSpaceExA, [](LPCSTR, ULARGE_INTEGER*, ULARGE_INTEGER* total, ULARGE_INTEGER* free) {
            total->QuadPart = free->QuadPart = 7;
            return FALSE;
        });
    EXPECT_EQ(NATIVE(getTotalDiskSpace)(L"X:\\"), 0);
    EXPECT_EQ(NATIVE(getFreeDiskSpace)(L"X:\\"), 0);
}

TEST_F(Drives, AreListedByTheirRoots) {
    const Replacement asking = driveStrings("A:\\\0C:\\\0Z:\\\0\0"s, 12);
    EXPECT_EQ(NATIVE(getLogicalDrives)().texts(), (Texts{L"A:\\", L"C:\\", L"Z:\\"}));
}

TEST_F(Drives, AreAnEmptyListBelowFourCharacters) {
    for (const DWORD length : {1U, 2U, 3U}) {
        const Replacement asking = driveStrings("C:\\\0"s, length);
        const JavaObject drives = NATIVE(getLogicalDrives)();
        ASSERT_NE(drives, nullptr);
        EXPECT_THAT(drives.texts(), IsEmpty());
    }
}

TEST_F(Drives, AreNoListAtAllWhenTheCallFails) {
    const Replacement failing = system().answer("GetLogicalDriveStringsA", 0, ERROR_GEN_FAILURE);
    EXPECT_EQ(NATIVE(getLogicalDrives)(), nullptr);
    EXPECT_EQ(java.takeException(), nothingThrown());
}

TEST_F(Drives, AreTakenEveryFourBytesWhateverStandsThere) {
    const Replacement asking = driveStrings("AB:\\\0C:\\\0\0"s, 9);
    EXPECT_EQ(NATIVE(getLogicalDrives)().texts(), (Texts{L"AB:\\", L""}));
}

TEST_F(Drives, AreListedNoFurtherThanTheirBuffer) {
    const Replacement asking = driveStrings(std::string(256, 'x'), 5000);
    const Texts roots = NATIVE(getLogicalDrives)().texts();
    ASSERT_EQ(roots.size(), 64U);
    EXPECT_EQ(roots.front(), std::wstring(256, L'x'));
    EXPECT_EQ(roots.back(), L"xxxx");
}

TEST_F(Drives, AreNotListedWhenJavaHasNoMemory) {
    const Replacement asking = driveStrings("A:\\\0C:\\\0\0"s, 8);
    for (const auto& [function, k] : {std::pair("FindClass", 1U),
                                      {"NewStringUTF", 1U},
                                      {"NewObjectArray", 1U},
                                      {"NewStringUTF", 2U},
                                      {"NewStringUTF", 3U}}) {
        java.failCall(function, k);
        EXPECT_EQ(NATIVE(getLogicalDrives)(), nullptr) << function << k;
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << function << k;
    }
}

TEST_F(Drives, AreNotAskedWhenJavaHasNoMemoryForTheArguments) {
    const auto expectNoMemory = [&] {
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    };
    java.failCall("GetStringChars");
    EXPECT_EQ(NATIVE(getVolumeName)(L"C:\\"), nullptr);
    expectNoMemory();
    java.failCall("GetStringChars");
    EXPECT_FALSE(NATIVE(isNTFSVolume)(L"C:\\"));
    expectNoMemory();
    java.failCall("GetStringChars");
    EXPECT_EQ(NATIVE(getVolumeLabel)(L"C:\\"), nullptr);
    expectNoMemory();
    java.failCall("GetStringChars");
    NATIVE(listNTFSPartitions)(L"\\\\.\\PhysicalDrive0", java.list());
    EXPECT_EQ(java.takeException(), ioException(systemText(ERROR_NOT_ENOUGH_MEMORY)));
    for (const std::size_t k : {1U, 2U}) {
        java.failCall("GetStringUTFChars", k);
        EXPECT_FALSE(NATIVE(setVolumeLabel)(L"X:\\", L"x"));
        expectNoMemory();
    }
    java.failCall("GetStringUTFChars");
    EXPECT_EQ(NATIVE(getDriveType)(L"C:\\"), 0);
    expectNoMemory();
    java.failCall("GetStringUTFChars");
    EXPECT_EQ(NATIVE(getTotalDiskSpace)(L"C:\\"), 0);
    expectNoMemory();
    java.failCall("GetStringUTFChars");
    EXPECT_EQ(NATIVE(getFreeDiskSpace)(L"C:\\"), 0);
    expectNoMemory();
    for (const char* function : {"GetVolumePathNameW", "SHGetFileInfoW", "CreateFileW", "SetVolumeLabelA",
                                 "GetDriveTypeA", "SHGetDiskFreeSpaceExA"}) {
        EXPECT_EQ(system().count(function), 0U) << function;
    }
}

TEST_F(Drives, AreNotAskedWhenTheLibraryHasNoMemoryForTheArguments) {
    const Replacement noMemory = system().answer("malloc", 0);
    const auto expectNoMemory = [&] {
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    };
    EXPECT_EQ(NATIVE(getVolumeName)(L"C:\\"), nullptr);
    expectNoMemory();
    EXPECT_EQ(NATIVE(getVolumeLabel)(L"C:\\"), nullptr);
    expectNoMemory();
    EXPECT_FALSE(NATIVE(isNTFSVolume)(L"C:\\"));
    expectNoMemory();
    EXPECT_EQ(system().count("GetVolumePathNameW") + system().count("SHGetFileInfoW"), 0U);
}

TEST_F(Drives, OfNullAreNone) {
    EXPECT_FALSE(NATIVE(setVolumeLabel)(nullptr, L"x"));
    EXPECT_FALSE(NATIVE(setVolumeLabel)(L"X:\\", nullptr));
    EXPECT_EQ(NATIVE(getDriveType)(nullptr), 0);
    EXPECT_EQ(NATIVE(getTotalDiskSpace)(nullptr), 0);
    EXPECT_EQ(NATIVE(getFreeDiskSpace)(nullptr), 0);
    for (const char* function : {"SetVolumeLabelA", "GetDriveTypeA", "SHGetDiskFreeSpaceExA"}) {
        EXPECT_EQ(system().count(function), 0U) << function;
    }
}

}  // namespace

}  // namespace testbed
