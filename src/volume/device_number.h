#pragma once

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winioctl.h>

namespace winutil::volume {

// Asks a device which disk and partition it is. Returns false when it refuses, as a volume on several disks
// does. A driver that answers and says nothing leaves the number of no disk, -1 as an int.
inline bool readDeviceNumber(HANDLE device, STORAGE_DEVICE_NUMBER& number) noexcept {
    static_assert(IOCTL_STORAGE_GET_DEVICE_NUMBER == 0x2D1080 && sizeof(STORAGE_DEVICE_NUMBER) == 12);
    number = {.DeviceType = 0, .DeviceNumber = MAXDWORD, .PartitionNumber = MAXDWORD};
    DWORD returned = 0;
    return DeviceIoControl(device, IOCTL_STORAGE_GET_DEVICE_NUMBER, nullptr, 0, &number, sizeof(number),
                           &returned, nullptr) != FALSE;
}

}  // namespace winutil::volume
