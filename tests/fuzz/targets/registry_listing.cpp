// A level of a registry tree: names, values of all types, lists of strings.
#include "answers/registry.h"
#include "registry/listing.h"
#include "target.h"
#include "windows/java.h"
#include "windows/system.h"

namespace {

hostile::Registry* registry = nullptr;

}  // namespace

extern "C" {
LSTATUS WINAPI RegOpenKeyExA(HKEY, LPCSTR, DWORD, REGSAM, PHKEY key) {
    *key = static_cast<HKEY>(fuzz::fakeHandle());
    return ERROR_SUCCESS;
}
LSTATUS WINAPI RegCloseKey(HKEY) {
    return ERROR_SUCCESS;
}
LSTATUS WINAPI RegQueryInfoKeyA(HKEY, LPSTR, LPDWORD, LPDWORD, LPDWORD subkeys, LPDWORD, LPDWORD,
                                LPDWORD values, LPDWORD, LPDWORD, LPDWORD, PFILETIME) {
    return registry->giveCounts(subkeys, values);
}
LSTATUS WINAPI RegEnumKeyExA(HKEY, DWORD, LPSTR name, LPDWORD size, LPDWORD, LPSTR, LPDWORD, PFILETIME) {
    return registry->giveName(name, size);
}
LSTATUS WINAPI RegEnumValueA(HKEY, DWORD, LPSTR name, LPDWORD nameSize, LPDWORD, LPDWORD type, LPBYTE,
                             LPDWORD size) {
    return registry->giveValue(name, nameSize, type, size);
}
LSTATUS WINAPI RegQueryValueExA(HKEY, LPCSTR, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size) {
    return registry->giveData(type, data, size);
}
}

void fuzz::examine(hostile::Input& input) {
    hostile::Registry answers(input);
    registry = &answers;
    Java java;
    winutil::registry::listRegistry(java.env(), java.collector(), "HKEY_USERS", "key");
}
