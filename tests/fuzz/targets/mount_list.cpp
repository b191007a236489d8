// Where volumes are mounted, and their names.
#include "volume/mount_list.h"
#include "answers/volumes.h"
#include "target.h"
#include "volume/volumes.h"
#include "windows/java.h"
#include "windows/system.h"

namespace {

hostile::Volumes* volumes = nullptr;

}  // namespace

extern "C" {
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
    hostile::Volumes answers(input);
    volumes = &answers;
    Java java;
    winutil::volume::listPartitions(java.env(), java.collector());

    const ExactCopy rest(input.rest());
    const std::wstring_view list(rest.as<wchar_t>(), rest.bytes().size() / sizeof(wchar_t));
    const std::wstring_view path = winutil::volume::findDriveLetterPath(list);
    require(path.empty() || (path.size() >= 3 && path.substr(1, 2) == L":\\"),
            "a path without a drive letter");
    require(path.find(L'\0') == path.npos, "a path goes on behind its end");
}
