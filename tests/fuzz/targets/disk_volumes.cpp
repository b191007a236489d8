// The layout of a disk, the numbers of devices, and the names of volumes.
#include "volume/disk_volumes.h"
#include "target.h"
#include "windows/answered_calls.h"
#include "windows/java.h"
#include "windows/system.h"

extern "C" HANDLE WINAPI CreateFileW(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
    return fuzz::fakeHandle();
}

void fuzz::examine(hostile::Input& input) {
    hostile::Devices devices(input);
    hostile::Volumes volumes(input);
    deviceAnswers = &devices;
    volumeAnswers = &volumes;
    Java java;
    winutil::volume::listNtfsPartitions(java.env(), L"\\\\.\\PHYSICALDRIVE0", java.collector());
}
