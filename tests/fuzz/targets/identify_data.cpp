// What a drive says of itself.
#include "target.h"
#include "volume/ata_serial.h"
#include "windows/answered_calls.h"
#include "windows/system.h"

extern "C" HANDLE WINAPI CreateFileA(LPCSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
    return fuzz::fakeHandle();
}

void fuzz::examine(hostile::Input& input) {
    hostile::Devices answers(input);
    deviceAnswers = &answers;
    winutil::volume::AtaSerial serial;
    require(winutil::volume::ataIdentifySerial("\\\\.\\PHYSICALDRIVE0", serial), "545 bytes are too many");
    require(strnlen(serial, sizeof(serial)) < sizeof(serial), "a serial number has no end");
}
