#pragma once

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winioctl.h>

namespace winutil::volume {

// Asks a device which disk and partition it is. Returns false when it does not say, as a volume on several
// disks does not.
inline bool readDeviceNumber(HANDLE device, STORAGE_DEVICE_NUMBER& number) noexcept {
    static_assert(IOCTL_STORAGE_GET_DEVICE_NUMBER == 0x2D1080 && sizeof(STORAGE_DEVICE_NUMBER) == 12);
    DWORD returned = 0;
    return DeviceIoControl(device, IOCTL_STORAGE_GET_DEVICE_NUMBER, nullptr, 0, &number, sizeof(number),
                           &returned, nullptr) != FALSE;
}

}  // namespace winutil::volume
