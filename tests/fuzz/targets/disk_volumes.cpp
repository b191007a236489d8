// The layout of a disk, the numbers of devices, and the names of volumes.
#include "volume/disk_volumes.h"
#include "answers/devices.h"
#include "answers/volumes.h"
#include "target.h"
#include "windows/java.h"
#include "windows/system.h"

namespace {

hostile::Devices* devices = nullptr;
hostile::Volumes* volumes = nullptr;

}  // namespace

extern "C" {
HANDLE WINAPI CreateFileW(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
    return fuzz::fakeHandle();
}
WINBOOL WINAPI DeviceIoControl(HANDLE device, DWORD code, LPVOID in, DWORD inSize, LPVOID out, DWORD outSize,
                               LPDWORD returned, LPOVERLAPPED overlapped) {
    return devices->control(device, code, in, inSize, out, outSize, returned, overlapped);
}
HANDLE WINAPI FindFirstVolumeW(LPWSTR name, DWORD size) {
    return volumes->giveName(name, size) ? fuzz::fakeHandle() : INVALID_HANDLE_VALUE;
}
WINBOOL WINAPI FindNextVolumeW(HANDLE, LPWSTR name, DWORD size) {
    return volumes->giveName(name, size) ? TRUE : FALSE;
}
WINBOOL WINAPI FindVolumeClose(HANDLE) {
    return TRUE;
}
WINBOOL WINAPI GetVolumePathNamesForVolumeNameW(LPCWSTR name, LPWCH list, DWORD size, PDWORD required) {
    return volumes->giveMountPoints(name, list, size, required);
}
}

void fuzz::examine(hostile::Input& input) {
    hostile::Devices deviceAnswers(input);
    hostile::Volumes volumeAnswers(input);
    devices = &deviceAnswers;
    volumes = &volumeAnswers;
    Java java;
    winutil::volume::listNtfsPartitions(java.env(), L"\\\\.\\PHYSICALDRIVE0", java.collector());
}
