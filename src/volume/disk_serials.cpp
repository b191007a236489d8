#include "volume/disk_serials.h"

#include <cstdio>
#include <cstring>

#include "bridge/java_calls.h"
#include "bridge/standard_output.h"
#include "bridge/text.h"
#include "inventory/wmi_property.h"
#include "inventory/wmi_session.h"
#include "volume/ata_serial.h"
#include "volume/device_number.h"
#include "volume/drives.h"

namespace winutil::volume {

namespace {

using inventory::WmiProperty;

constexpr inventory::WmiQuery diskQuery{.text = L"SELECT * FROM Win32_DiskDrive",
                                        .failureText = L"Query for Computer Disk Drive failed.",
                                        .failureForm = inventory::FailureForm::withSystemText};

constexpr std::string_view physicalDrive = "\\\\.\\PHYSICALDRIVE";
static_assert(physicalDrive.size() == 17);

// Returns the number of the disk with the Windows folder; -1 when it cannot be told, as for a volume on
// several disks.
int systemDiskNumber() noexcept {
    DriveText letter;
    if (!systemDriveLetter(letter)) {
        return -1;
    }
    char device[drivePathCapacity + 5];  // \\.\ and the colon
    _snprintf_s(device, sizeof(device), _TRUNCATE, "\\\\.\\%s:", letter);
    // No access is asked for: the question needs none, and so no rights.
    const FileHandle volume(
        CreateFileA(device, 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    STORAGE_DEVICE_NUMBER number;
    if (!volume || !readDeviceNumber(volume.get(), number)) {
        return -1;
    }
    return static_cast<int>(number.DeviceNumber);
}

bool isPhysicalDrive(const char* deviceId) noexcept {
    return _strnicmp(deviceId, physicalDrive.data(), physicalDrive.size()) == 0;
}

void printDisk(const char* deviceId, const char* serial, bool isSystem) noexcept {
    for (const char* text : {"szDriveName: [", deviceId, "]\nstrSerialNumber: [", serial,
                             "]\nbSystemDisk: ", isSystem ? "1\n" : "0\n"}) {
        printText(text);
    }
}

bool endWithoutMemory(JNIEnv* env) noexcept {
    throwOutOfMemoryError(env);
    return false;
}

// Returns false when a Java exception is pending.
bool listDisk(JNIEnv* env, jobject collector, IWbemClassObject* disk, const char* systemDisk) noexcept {
    // What is no text is empty here, and so no drive.
    const HeapMemory<char> device = wideToAnsi(WmiProperty(disk, L"DeviceID").text());
    if (!device) {
        return endWithoutMemory(env);
    }
    if (!isPhysicalDrive(device.get())) {
        return true;
    }
    const bool isSystem = _stricmp(device.get(), systemDisk) == 0;
    const HeapMemory<char> known = wideToAnsi(WmiProperty(disk, L"SerialNumber").text());
    if (!known) {
        return endWithoutMemory(env);
    }
    if (*known.get() != '\0') {
        return reportDisk(env, collector, device.get(), known.get(), isSystem);
    }
    AtaSerial serial;
    if (!ataIdentifySerial(device.get(), serial)) {
        return endWithoutMemory(env);
    }
    return *serial == '\0' || reportDisk(env, collector, device.get(), serial, isSystem);
}

}  // namespace

void systemDiskName(DiskName& name) noexcept {
    _snprintf_s(name, diskNameCapacity, _TRUNCATE, "%s%d", physicalDrive.data(), systemDiskNumber());
}

bool reportDisk(JNIEnv* env, jobject collector, const char* deviceId, const char* serial,
                bool isSystem) noexcept {
    if (env == nullptr) {
        printDisk(deviceId, serial, isSystem);
        return true;
    }
    // The bytes of the ANSI texts go to Java as they are: right for ASCII, which is what disks have.
    const LocalRef javaDevice(env, env->NewStringUTF(deviceId));
    if (!javaDevice) {
        return false;
    }
    const LocalRef javaSerial(env, env->NewStringUTF(serial));
    return javaSerial &&
           callCollector(env, collector, java_method::addDiskInfo, javaDevice, javaSerial, isSystem);
}

void listDiskSerials(JNIEnv* env, jobject collector, ErrorBuffer& errorBuffer) noexcept {
    DiskName systemDisk;
    systemDiskName(systemDisk);
    inventory::WmiSession session;
    if (!session.run(diskQuery, errorBuffer)) {
        return;
    }
    while (const auto disk = session.next()) {
        if (!listDisk(env, collector, disk.get(), systemDisk)) {
            return;
        }
    }
}

}  // namespace winutil::volume
