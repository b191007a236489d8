#include "volume/volumes.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "bridge/errors.h"
#include "bridge/java_calls.h"
#include "bridge/paths.h"
#include "bridge/standard_output.h"
#include "volume/mount_list.h"

namespace winutil::volume {

namespace {

constexpr DWORD volumeNameCapacity = 2048;
constexpr std::size_t mountPathLimit = 2048;  // characters that are kept of a mount path
constexpr DWORD firstMountListCapacity = 2049;

// Where a volume is mounted: zeros behind what the system wrote, as far as the memory goes.
struct MountList {
    WideString text;
    std::size_t length = 0;
};

MountList readMountList(const wchar_t* volumeName) noexcept {
    for (DWORD capacity = firstMountListCapacity;;) {
        WideString list = allocateZeroed<wchar_t>(capacity);
        if (!list) {
            return {};
        }
        DWORD required = 0;
        if (GetVolumePathNamesForVolumeNameW(volumeName, list.get(), capacity, &required)) {
            return {.text = std::move(list), .length = capacity};
        }
        // A list that does not fit where it must fit has no end.
        if (GetLastError() != ERROR_MORE_DATA || required <= capacity) {
            return {};
        }
        capacity = required;
    }
}

bool isVolumeName(std::wstring_view name) noexcept {
    return hasLongPrefix(name) && name.ends_with(L'\\');
}

void printFailure(const wchar_t* function, DWORD code) noexcept {
    ErrorBuffer line;
    line.print(L"%s failed with error code %d\n", function, static_cast<int>(code));
    printText(line.text());
}

void printBadName(const wchar_t* name) noexcept {
    ErrorBuffer line;
    line.print(L"FindFirstVolumeW/FindNextVolumeW returned a bad path: %s\n", name);
    printText(line.text());
}

}  // namespace

WideString firstDriveLetterPath(const wchar_t* volumeName) noexcept {
    const MountList list = readMountList(volumeName);
    if (!list.text) {
        return {};
    }
    const std::wstring_view path = findDriveLetterPath({list.text.get(), list.length});
    return path.empty() ? WideString() : copyText(path.data(), std::min(path.size(), mountPathLimit));
}

void listPartitions(JNIEnv* env, jobject collector) noexcept {
    wchar_t name[volumeNameCapacity];
    const VolumeSearch search(FindFirstVolumeW(name, volumeNameCapacity));
    if (!search) {
        printFailure(L"FindFirstVolumeW", GetLastError());
        return;
    }
    const jmethodID add = findCollectorMethod(env, collector, java_method::add);
    if (add == nullptr) {
        return;
    }
    do {
        // Required: the end of the listing, whatever follows, because callers get nothing behind such a name.
        if (!isVolumeName(name)) {
            printBadName(name);
            return;
        }
        const WideString path = firstDriveLetterPath(name);
        if (!addItem(env, collector, add, path ? path.get() : name)) {
            return;
        }
    } while (FindNextVolumeW(search.get(), name, volumeNameCapacity));
    if (const DWORD code = GetLastError(); code != ERROR_NO_MORE_FILES) {
        printFailure(L"FindNextVolumeW", code);
    }
}

}  // namespace winutil::volume
