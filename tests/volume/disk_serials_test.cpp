// getHardDiskSN: WMI is asked for the disks and their serial numbers, and a disk itself where WMI knows none.
#include <optional>
#include <string>

#include "disk_serials_fixture.h"
#include "guarded_heap.h"

namespace testbed {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(DiskSerials, AreReportedInTheirOrderWithTheSystemDiskMarked) {
    systemDisk = 1;
    found(disk(L"\\\\.\\PHYSICALDRIVE10", L"ten"));
    found(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
    found(disk(L"\\\\.\\PHYSICALDRIVE0", L"zero"));
    list();
    EXPECT_THAT(disks, ElementsAre(Disk{L"\\\\.\\PHYSICALDRIVE10", L"ten", false},
                                   Disk{L"\\\\.\\PHYSICALDRIVE1", L"one", true},
                                   Disk{L"\\\\.\\PHYSICALDRIVE0", L"zero", false}));
    EXPECT_EQ(services.query, L"SELECT * FROM Win32_DiskDrive");
}

TEST_F(DiskSerials, FollowTheSystemDiskAndGoBackWithEverythingElseAndEndComLast) {
    found(disk(L"\\\\.\\PHYSICALDRIVE0", L"zero"));
    list();
    EXPECT_EQ(events, (Events{"ask for the system disk", "initialize", "release object",
                              "release enumeration", "release services", "release locator", "uninitialize"}));
}

TEST_F(DiskSerials, AreThoseOfPhysicalDrivesInAnySpelling) {
    for (const wchar_t* device :
         {L"", L"PHYSICALDRIVE0", L"\\\\.\\PHYSICALDRIV", L"\\\\\\\\.\\\\PHYSICALDRIVE0",
          L" \\\\.\\PHYSICALDRIVE0", L"\\\\?\\PHYSICALDRIVE0", L"\\\\.\\CDROM0"}) {
        found(disk(device, L"serial"));
    }
    for (const wchar_t* device : {L"\\\\.\\physicaldrive0", L"\\\\.\\PhysicalDrive1", L"\\\\.\\PHYSICALDRIVE",
                                  L"\\\\.\\PHYSICALDRIVEx"}) {
        found(disk(device, L"serial"));
    }
    list();
    EXPECT_THAT(disks, ElementsAre(Disk{L"\\\\.\\physicaldrive0", L"serial", true},
                                   Disk{L"\\\\.\\PhysicalDrive1", L"serial", false},
                                   Disk{L"\\\\.\\PHYSICALDRIVE", L"serial", false},
                                   Disk{L"\\\\.\\PHYSICALDRIVEx", L"serial", false}));
}

TEST_F(DiskSerials, AreNotReportedWithoutADeviceThatIsAText) {
    for (const Property& device : {none(VT_NULL), none(VT_EMPTY), number(0), failing(E_FAIL)}) {
        found({{L"DeviceID", device}, {L"SerialNumber", text(L"serial")}});
    }
    found({{L"SerialNumber", text(L"serial")}});
    list();
    EXPECT_THAT(disks, IsEmpty());
    EXPECT_EQ(count("release object"), 5);
    EXPECT_THAT(opened, ElementsAre(Open{"\\\\.\\C:", 0}));
}

TEST_F(DiskSerials, AskTheVolumeOfWindowsForItsDiskWithoutAnyAccess) {
    windowsFolder = "W:\\Windows";
    list();
    EXPECT_THAT(opened, ElementsAre(Open{"\\\\.\\W:", 0}));
    EXPECT_THAT(asked, ElementsAre(0x2D1080));
}

TEST_F(DiskSerials, AreAllOfOtherDisksWhenTheSystemDiskIsNotKnown) {
    const auto expectNone = [this] {
        disks.clear();
        foundOnly(disk(L"\\\\.\\PHYSICALDRIVE0", L"zero"));
        found(disk(L"\\\\.\\PHYSICALDRIVE", L"bare"));
        // The number that stands for none.
        found(disk(L"\\\\.\\PHYSICALDRIVE-1", L"none"));
        list();
        EXPECT_THAT(disks, ElementsAre(Disk{L"\\\\.\\PHYSICALDRIVE0", L"zero", false},
                                       Disk{L"\\\\.\\PHYSICALDRIVE", L"bare", false},
                                       Disk{L"\\\\.\\PHYSICALDRIVE-1", L"none", true}));
    };
    volumeError = ERROR_ACCESS_DENIED;
    expectNone();
    volumeError = 0;
    numberError = ERROR_INVALID_FUNCTION;
    expectNone();
    numberError = 0;
    numberMissing = true;
    expectNone();
    windowsFolder = "\\\\server\\share";
    opened.clear();
    expectNone();
    EXPECT_THAT(opened, IsEmpty());
}

TEST_F(DiskSerials, SurviveAWindowsFolderOfAnyLength) {
    windowsFolder = std::string(2045, 'L') + ":\\";
    volumeError = ERROR_FILE_NOT_FOUND;
    found(disk(L"\\\\.\\PHYSICALDRIVE0", L"zero"));
    list();
    EXPECT_THAT(opened, ElementsAre(Open{"\\\\.\\" + std::string(2045, 'L') + ":", 0}));
    EXPECT_THAT(disks, ElementsAre(Disk{L"\\\\.\\PHYSICALDRIVE0", L"zero", false}));
}

TEST_F(DiskSerials, OfWmiAreTakenAsTheyAre) {
    found(disk(L"\\\\.\\PHYSICALDRIVE0", L"  W -12  "));
    list();
    EXPECT_THAT(disks, ElementsAre(Disk{L"\\\\.\\PHYSICALDRIVE0", L"  W -12  ", true}));
    EXPECT_THAT(asked, ElementsAre(0x2D1080));
}

TEST_F(DiskSerials, AreConvertedToTheAnsiCodePage) {
    const Replacement converting = system().watch("WideCharToMultiByte");
    found(disk(L"\\\\.\\PHYSICALDRIVE0", L"zero"));
    list();
    ASSERT_EQ(converting.count(), 4U);
    for (const RecordedCall& call : converting.calls()) {
        EXPECT_EQ(call.argument<UINT>(0), UINT{CP_ACP});
        EXPECT_EQ(call.argument<DWORD>(1), 0U);
    }
}

TEST_F(DiskSerials, AreAskedOfTheDriveWhereWmiHasNone) {
    for (const Property& serial : {none(VT_NULL), none(VT_EMPTY), number(77), text(L""), failing(E_FAIL)}) {
        disks.clear();
        opened.clear();
        asked.clear();
        foundOnly({{L"DeviceID", text(L"\\\\.\\PHYSICALDRIVE2")}, {L"SerialNumber", serial}});
        list();
        EXPECT_THAT(disks, ElementsAre(Disk{L"\\\\.\\PHYSICALDRIVE2", L"Serial Number 12345 ", false}));
        EXPECT_THAT(opened, ElementsAre(Open{"\\\\.\\C:", 0}, Open{"\\\\.\\PHYSICALDRIVE2", 0xC0000000}));
        EXPECT_THAT(asked, ElementsAre(0x2D1080, 0x74080, 0x7C088));
    }
}

TEST_F(DiskSerials, OfADriveAreItsWordsWithTheirCharactersSwapped) {
    serialWords = "BADCFEHGJILKNMPORQTS";
    EXPECT_EQ(serialOfTheDrive(), L"ABCDEFGHIJKLMNOPQRST");
    serialWords = "    DW1-32          ";
    EXPECT_EQ(serialOfTheDrive(), L"    WD-123          ");
    serialWords = std::string(20, ' ');
    EXPECT_EQ(serialOfTheDrive(), std::wstring(20, L' '));
    serialWords = "BADC\0EHGJILKNMPORQTS"s;
    EXPECT_EQ(serialOfTheDrive(), L"ABCDE");
    serialWords = "A\0DCFEHGJILKNMPORQTS"s;
    EXPECT_EQ(serialOfTheDrive(), std::nullopt);
}

TEST_F(DiskSerials, OfADriveAreReadFromItsOwnBlockOnly) {
    const GuardedHeap heap(system());
    serialWords = "BADCFEHGJILKNMPORQTS";
    EXPECT_EQ(serialOfTheDrive(), L"ABCDEFGHIJKLMNOPQRST");
}

TEST_F(DiskSerials, AreLeftOutWhenTheDriveRefuses) {
    found({{L"DeviceID", text(L"\\\\.\\PHYSICALDRIVE1")}});
    found(disk(L"\\\\.\\PHYSICALDRIVE2", L"two"));
    for (DWORD* step : {&driveError, &versionError, &identifyError}) {
        disks.clear();
        enumeration.asked = 0;
        *step = ERROR_NOT_SUPPORTED;
        list();
        EXPECT_THAT(disks, ElementsAre(Disk{L"\\\\.\\PHYSICALDRIVE2", L"two", false}));
        *step = 0;
    }
}

// No disk is lost without a word: the listing ends with the error.
TEST_F(DiskSerials, EndWhereThereIsNoMemoryForThem) {
    const auto expectNone = [&](const Properties& first) {
        foundOnly(first);
        found(disk(L"\\\\.\\PHYSICALDRIVE2", L"two"));
        list();
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
        EXPECT_THAT(disks, IsEmpty());
        EXPECT_EQ(enumeration.asked, 1U);
    };
    for (const std::size_t k : {1, 2}) {
        const Replacement noText = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);
        expectNone(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
        EXPECT_EQ(noText.count(), k);
    }
    const Replacement noBlock = system().answer("calloc", 0);
    expectNone({{L"DeviceID", text(L"\\\\.\\PHYSICALDRIVE1")}});
    EXPECT_EQ(noBlock.count(), 1U);
}

// The calls that convert come in pairs, for the size and for the text: of the device and of the serial
// number.
TEST_F(DiskSerials, ThatCannotBeConvertedAreTakenForNone) {
    for (const std::size_t k : {1, 2}) {
        foundOnly(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
        const Replacement device = system().failCall("WideCharToMultiByte", k, ERROR_NO_UNICODE_TRANSLATION);
        list();
        EXPECT_THAT(disks, IsEmpty()) << k;
    }
    for (const std::size_t k : {3, 4}) {
        disks.clear();
        foundOnly(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
        const Replacement serial = system().failCall("WideCharToMultiByte", k, ERROR_NO_UNICODE_TRANSLATION);
        list();
        EXPECT_THAT(disks, ElementsAre(Disk{L"\\\\.\\PHYSICALDRIVE1", L"Serial Number 12345 ", false})) << k;
    }
    EXPECT_FALSE(java.isPending());
}

TEST_F(DiskSerials, FailWithTheTextOfTheStepAndThatOfTheSystem) {
    // This system may have no text for it.
    const Replacement message = REPLACE(
        FormatMessageW, [](DWORD flags, LPCVOID, DWORD code, DWORD language, LPWSTR buffer, DWORD, va_list*) {
            EXPECT_EQ(flags, 0x1300U);
            EXPECT_EQ(code, 0x80070005U);
            EXPECT_EQ(language, 0x400U);
            auto* text = static_cast<wchar_t*>(LocalAlloc(LMEM_FIXED, 64));
            wcscpy_s(text, 32, L"Zugriff verweigert.\r\n");
            *reinterpret_cast<wchar_t**>(buffer) = text;
            return DWORD{21};
        });
    for (const Step& step : steps()) {
        step.result = E_ACCESSDENIED;
        expectFailure(step.text + L"Zugriff verweigert.\r\n"s);
        step.result = S_OK;
    }
}

TEST_F(DiskSerials, FailWithTheTextOfTheStepAloneWhereTheSystemHasNone) {
    const Replacement message = system().answer("FormatMessageW", 0, ERROR_MR_MID_NOT_FOUND);
    for (const Step& step : steps()) {
        step.result = E_FAIL;
        expectFailure(step.text);
        step.result = S_OK;
    }
}

TEST_F(DiskSerials, AreFoundOnAThreadThatHasComAlready) {
    found(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
    initializeResult = RPC_E_CHANGED_MODE;
    securityResult = RPC_E_TOO_LATE;
    list();
    EXPECT_EQ(disks.size(), 1U);
    EXPECT_EQ(count("uninitialize"), 0);
}

TEST_F(DiskSerials, ThatWereReportedStayReportedWhenTheEnumerationFails) {
    found(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
    enumeration.endResult = E_FAIL;
    list();
    EXPECT_EQ(disks.size(), 1U);
}

TEST_F(DiskSerials, ArePassedOverWithoutTheCollectorsMethod) {
    found(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
    found(disk(L"\\\\.\\PHYSICALDRIVE2", L"two"));
    NATIVE(getHardDiskSN)(java.object("java/lang/Object"));
    EXPECT_EQ(count("release object"), 2);
    foundOnly(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
    NATIVE(getHardDiskSN)(nullptr);
    EXPECT_EQ(count("release object"), 3);
    EXPECT_EQ(system().count("fputs"), 0U);
}

TEST_F(DiskSerials, EndWithWhatTheCollectorThrows) {
    java.defineException("java/lang/IllegalStateException");
    found(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
    found(disk(L"\\\\.\\PHYSICALDRIVE2", L"two"));
    int reported = 0;
    NATIVE(getHardDiskSN)(java.collector("addDiskInfo", addDiskInfo, [&](const Arguments&) {
        ++reported;
        throw JavaThrow{java.exception("java/lang/IllegalStateException", L"enough")};
    }));
    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/IllegalStateException", L"enough"}));
    EXPECT_EQ(reported, 1);
    EXPECT_EQ(enumeration.asked, 1U);
}

TEST_F(DiskSerials, EndWhenJavaHasNoMemory) {
    for (const std::size_t k : {1U, 2U}) {
        foundOnly(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
        found(disk(L"\\\\.\\PHYSICALDRIVE2", L"two"));
        java.failCall("NewStringUTF", k);
        list();
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
        EXPECT_THAT(disks, IsEmpty());
        EXPECT_EQ(enumeration.asked, 1U);
    }
}

TEST_F(DiskSerials, KeepTheNumberOfReferencesFlat) {
    for (int i = 0; i < 300; ++i) {
        found(disk(L"\\\\.\\PHYSICALDRIVE" + std::to_wstring(i), L"serial"));
    }
    list();
    EXPECT_EQ(disks.size(), 300U);
    EXPECT_LE(java.peakReferences(), 4U);
}

TEST_F(DiskSerials, ArePrintedWithoutAJavaEnvironment) {
    systemDisk = 7;
    found(disk(L"\\\\.\\PHYSICALDRIVE7", L"seven"));
    found({{L"DeviceID", text(L"\\\\.\\PHYSICALDRIVE8")}});
    std::string printed;
    const Replacement printing = REPLACE(fputs, [&](const char* text, FILE* stream) {
        EXPECT_EQ(_fileno(stream), 1);
        printed += text;
        return 0;
    });
    auto* native = library().exported<decltype(Java_com_qarvo_kel_util_WindowsUtil_getHardDiskSN)>(
        "Java_com_qarvo_kel_util_WindowsUtil_getHardDiskSN");
    native(nullptr, nullptr, nullptr);
    EXPECT_EQ(printed,
              "szDriveName: [\\\\.\\PHYSICALDRIVE7]\n"
              "strSerialNumber: [seven]\n"
              "bSystemDisk: 1\n"
              "szDriveName: [\\\\.\\PHYSICALDRIVE8]\n"
              "strSerialNumber: [Serial Number 12345 ]\n"
              "bSystemDisk: 0\n");
}

TEST_F(DiskSerials, FailQuietlyWithoutAJavaEnvironment) {
    securityResult = E_FAIL;
    auto* native = library().exported<decltype(Java_com_qarvo_kel_util_WindowsUtil_getHardDiskSN)>(
        "Java_com_qarvo_kel_util_WindowsUtil_getHardDiskSN");
    native(nullptr, nullptr, nullptr);
    EXPECT_EQ(count("uninitialize"), 1);
}

}  // namespace

}  // namespace testbed
