// What a drive says of itself.
#include "answers/devices.h"
#include "target.h"
#include "volume/ata_serial.h"
#include "windows/system.h"

namespace {

hostile::Devices* devices = nullptr;

}  // namespace

extern "C" {
HANDLE WINAPI CreateFileA(LPCSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
    return fuzz::fakeHandle();
}
WINBOOL WINAPI DeviceIoControl(HANDLE device, DWORD code, LPVOID in, DWORD inSize, LPVOID out, DWORD outSize,
                               LPDWORD returned, LPOVERLAPPED overlapped) {
    return devices->control(device, code, in, inSize, out, outSize, returned, overlapped);
}
}

void fuzz::examine(hostile::Input& input) {
    hostile::Devices answers(input);
    devices = &answers;
    winutil::volume::AtaSerial serial;
    require(winutil::volume::ataIdentifySerial("\\\\.\\PHYSICALDRIVE0", serial), "545 bytes are too many");
    require(strnlen(serial, sizeof(serial)) < sizeof(serial), "a serial number has no end");
}
