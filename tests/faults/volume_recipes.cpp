// Volumes, drives and disks.
// windows.h comes first: the other builds on it.
#include <windows.h>

#include <shellapi.h>

#include "../volume/disk_serials_fixture.h"
#include "../volume/volume_fixture.h"
#include "reasons.h"
#include "recipe.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;

class MachineTest : public VolumeTest {
protected:
    MachineTest() { machine.partitions = {mbrPartition(1, 0x07), mbrPartition(2, 0x0B)}; }

    FakeMachine machine{
        system(),
        {{.name = volumeName(1), .mountPoints = mountList({L"C:\\"}), .disk = 3, .partition = 1},
         {.name = volumeName(2), .mountPoints = mountList({L"D:\\"}), .disk = 3, .partition = 2}}};
    JavaObject volumes = java.list();
};

RECIPE(MachineTest, listPartitions, ofTwoVolumes) {
    leavesOut({"FindFirstVolumeW", "FindNextVolumeW"}, listEnds);
    leavesOut({"GetMethodID"}, noMethod);
    tolerates({"GetVolumePathNamesForVolumeNameW", "malloc", "calloc"}, standsIn, Tolerance::any);
    examine([&] { NATIVE(listPartitions)(volumes); });
    noteElements(volumes);
}

RECIPE(MachineTest, listNTFSPartitions, ofADisk) {
    tolerates({"GetVolumePathNamesForVolumeNameW", "malloc", "calloc"}, standsIn, Tolerance::any);
    leavesOut({"GetMethodID"}, noMethod);
    leavesOut({"CreateFileW 2", "DeviceIoControl 2", "DeviceIoControl 3"}, leftOut);
    examine([&] { NATIVE(listNTFSPartitions)(L"\\\\.\\PhysicalDrive3", volumes); });
    noteElements(volumes);
}

RECIPE(WinUtilTest, getVolumeName, ofAFolder) {
    examine([&] { return NATIVE(getVolumeName)(L"C:\\windows"); });
}

RECIPE(WinUtilTest, isNTFSVolume, ofADrive) {
    examine([&] { return NATIVE(isNTFSVolume)(L"C:\\"); });
}

RECIPE(WinUtilTest, getVolumeLabel, ofADrive) {
    const auto shell =
        REPLACE(SHGetFileInfoW, [](LPCWSTR, DWORD, SHFILEINFOW* info, UINT, UINT) -> DWORD_PTR {
            wcscpy_s(info->szDisplayName, std::size(info->szDisplayName), L"Data (C:)");
            return 1;
        });
    examine([&] { return NATIVE(getVolumeLabel)(L"C:\\"); });
}

RECIPE(WinUtilTest, getVolumeLabel, ofADriveWithoutADisplayName) {
    const auto shell = system().answer("SHGetFileInfoW", 0);
    const auto volume =
        REPLACE(GetVolumeInformationW,
                [](LPCWSTR, LPWSTR label, DWORD size, LPDWORD, LPDWORD, LPDWORD, LPWSTR, DWORD) -> BOOL {
                    wcscpy_s(label, size, L"Data");
                    return TRUE;
                });
    tolerates({"SHGetFileInfoW"}, standsIn);
    examine([&] { return NATIVE(getVolumeLabel)(L"C:\\"); });
}

RECIPE(WinUtilTest, setVolumeLabel, ofADrive) {
    const auto set = system().answer("SetVolumeLabelA", TRUE);
    examine([&] { return NATIVE(setVolumeLabel)(L"C:\\", L"Data"); });
}

RECIPE(WinUtilTest, getDriveType, ofADrive) {
    examine([&] { return NATIVE(getDriveType)(L"C:\\"); });
}

RECIPE(WinUtilTest, getTotalDiskSpace, ofADrive) {
    examine([&] { return handleText(NATIVE(getTotalDiskSpace)(L"C:\\")); });
}

RECIPE(WinUtilTest, getFreeDiskSpace, ofADrive) {
    examine([&] { return handleText(NATIVE(getFreeDiskSpace)(L"C:\\")); });
}

class SerialsTest : public RecipeOn<DiskSerials> {
protected:
    void ask() {
        systemDisk = 1;
        tolerates({"CoInitializeEx with 0x80010106"}, anyModel);
        leavesOut({"CreateFileA", "DeviceIoControl", "GetWindowsDirectoryA"}, leftOut);
        leavesOut({"IEnumWbemClassObject.Next"}, listEnds);
        tolerates({"IWbemClassObject.Get", "WideCharToMultiByte"}, comesEmpty, Tolerance::any);
        leavesOut({"GetMethodID"}, noMethod);
        examine([&] { list(); });
        for (const Disk& each : disks) {
            note(each.device);
            note(each.device + L" " + each.serial);
            if (each.isSystem) {
                note(L"system");
            }
        }
    }
};

class Recipe_getHardDiskSN_thatWmiKnows final : public SerialsTest {
    void perform() override {
        found(disk(L"\\\\.\\PHYSICALDRIVE0", L"zero"));
        found(disk(L"\\\\.\\PHYSICALDRIVE1", L"one"));
        ask();
    }
};
class Recipe_getHardDiskSN_thatTheDriveKnows final : public SerialsTest {
    void perform() override {
        found({{L"DeviceID", text(L"\\\\.\\PHYSICALDRIVE1")}});
        ask();
    }
};
[[maybe_unused]] const bool serialsAdded =
    addRecipe<Recipe_getHardDiskSN_thatWmiKnows>("getHardDiskSN", "thatWmiKnows") &&
    addRecipe<Recipe_getHardDiskSN_thatTheDriveKnows>("getHardDiskSN", "thatTheDriveKnows");

}  // namespace
