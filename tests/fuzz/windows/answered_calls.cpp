#include "answered_calls.h"

#include "system.h"

namespace fuzz {

hostile::Devices* deviceAnswers = nullptr;
hostile::Registry* registryAnswers = nullptr;
hostile::Volumes* volumeAnswers = nullptr;

}  // namespace fuzz

extern "C" {
WINBOOL WINAPI DeviceIoControl(HANDLE device, DWORD code, LPVOID in, DWORD inSize, LPVOID out, DWORD outSize,
                               LPDWORD returned, LPOVERLAPPED overlapped) {
    return fuzz::deviceAnswers->control(device, code, in, inSize, out, outSize, returned, overlapped);
}
LSTATUS WINAPI RegOpenKeyExA(HKEY, LPCSTR, DWORD, REGSAM, PHKEY key) {
    *key = static_cast<HKEY>(fuzz::fakeHandle());
    return ERROR_SUCCESS;
}
LSTATUS WINAPI RegOpenKeyExW(HKEY, LPCWSTR, DWORD, REGSAM, PHKEY key) {
    *key = static_cast<HKEY>(fuzz::fakeHandle());
    return ERROR_SUCCESS;
}
LSTATUS WINAPI RegCloseKey(HKEY) {
    return ERROR_SUCCESS;
}
LSTATUS WINAPI RegQueryInfoKeyA(HKEY, LPSTR, LPDWORD, LPDWORD, LPDWORD subkeys, LPDWORD, LPDWORD,
                                LPDWORD values, LPDWORD, LPDWORD, LPDWORD, PFILETIME) {
    return fuzz::registryAnswers->giveCounts(subkeys, values);
}
LSTATUS WINAPI RegEnumKeyExA(HKEY, DWORD, LPSTR name, LPDWORD size, LPDWORD, LPSTR, LPDWORD, PFILETIME) {
    return fuzz::registryAnswers->giveName(name, size);
}
LSTATUS WINAPI RegEnumValueA(HKEY, DWORD, LPSTR name, LPDWORD nameSize, LPDWORD, LPDWORD type, LPBYTE,
                             LPDWORD size) {
    return fuzz::registryAnswers->giveValue(name, nameSize, type, size);
}
LSTATUS WINAPI RegQueryValueExA(HKEY, LPCSTR, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size) {
    return fuzz::registryAnswers->giveData(type, data, size);
}
LSTATUS WINAPI RegQueryValueExW(HKEY, LPCWSTR, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size) {
    return fuzz::registryAnswers->giveData(type, data, size);
}
HANDLE WINAPI FindFirstVolumeW(LPWSTR name, DWORD size) {
    return fuzz::volumeAnswers->giveName(name, size) ? fuzz::fakeHandle() : INVALID_HANDLE_VALUE;
}
WINBOOL WINAPI FindNextVolumeW(HANDLE, LPWSTR name, DWORD size) {
    return fuzz::volumeAnswers->giveName(name, size) ? TRUE : FALSE;
}
WINBOOL WINAPI FindVolumeClose(HANDLE) {
    return TRUE;
}
WINBOOL WINAPI GetVolumePathNamesForVolumeNameW(LPCWSTR name, LPWCH list, DWORD size, PDWORD required) {
    return fuzz::volumeAnswers->giveMountPoints(name, list, size, required);
}
}
