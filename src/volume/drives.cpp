#include "volume/drives.h"

// windows.h comes first: the others build on it.
#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>

#include "bridge/errors.h"
#include "bridge/java_classes.h"

namespace winutil::volume {

namespace {

constexpr DWORD driveStringsSize = 256;
// Required: every root is taken to be X:\ and a zero, because the array has as many elements as this gives.
constexpr DWORD driveStringSize = 4;

struct Space {
    ULARGE_INTEGER availableToCaller;
    ULARGE_INTEGER total;
    ULARGE_INTEGER free;
};

// All zero when the call fails.
Space readSpace(const char* path) noexcept {
    Space space = {};
    if (path == nullptr ||
        !SHGetDiskFreeSpaceExA(path, &space.availableToCaller, &space.total, &space.free)) {
        return {};
    }
    return space;
}

}  // namespace

bool systemDriveLetter(DriveText& letter) noexcept {
    const UINT length = GetWindowsDirectoryA(letter, sizeof(letter));
    if (length == 0 || length >= sizeof(letter)) {
        return false;
    }
    char* end = std::strstr(letter, ":\\");
    if (end == nullptr || end == letter) {
        return false;
    }
    *end = '\0';
    return true;
}

void readVolumeLabel(const wchar_t* root, VolumeLabel& label) noexcept {
    label[0] = L'\0';
    SHFILEINFOW information = {};
    // Required: the size of the ANSI structure, which the call does not go by, and only a negative result as
    // a failure, because the plain FALSE leaves an empty name, for which callers get the volume's own label.
    constexpr UINT declaredSize = 360;
    static_assert(declaredSize == sizeof(SHFILEINFOA));
    const auto result =
        static_cast<HRESULT>(SHGetFileInfoW(root, 0, &information, declaredSize, SHGFI_DISPLAYNAME));
    if (FAILED(result)) {
        // Required: a message that is dropped, because callers know the failure by an empty label.
        ErrorBuffer errorBuffer;
        errorBuffer.format(L"SHGetFileInfoW", GetLastError());
        return;
    }
    const std::size_t length = wcsnlen(information.szDisplayName, std::size(information.szDisplayName));
    if (length > 0) {
        wcsncpy_s(label, volumeLabelCapacity, information.szDisplayName, length);
    } else if (!GetVolumeInformationW(root, label, volumeLabelCapacity, nullptr, nullptr, nullptr, nullptr,
                                      0)) {
        label[0] = L'\0';
    }
}

bool setVolumeLabel(const char* root, const char* label) noexcept {
    return root != nullptr && label != nullptr && SetVolumeLabelA(root, label) != FALSE;
}

int driveType(const char* root) noexcept {
    return static_cast<int>(root != nullptr ? GetDriveTypeA(root) : DRIVE_UNKNOWN);
}

std::int64_t totalSpace(const char* path) noexcept {
    return static_cast<std::int64_t>(readSpace(path).total.QuadPart);
}

std::int64_t freeSpace(const char* path) noexcept {
    return static_cast<std::int64_t>(readSpace(path).free.QuadPart);
}

jobjectArray logicalDrives(JNIEnv* env) noexcept {
    // A zero behind what the system writes ends the last root, whatever it is.
    char roots[driveStringsSize + 1] = {};
    const DWORD length = GetLogicalDriveStringsA(driveStringsSize, roots);
    if (length == 0) {
        return nullptr;
    }
    const LocalRef type(env, env->FindClass(java_class::string));
    if (!type) {
        return nullptr;
    }
    const LocalRef empty(env, env->NewStringUTF(""));
    if (!empty) {
        return nullptr;
    }
    const auto count = static_cast<jsize>(std::min(length, driveStringsSize) / driveStringSize);
    LocalRef array(env, env->NewObjectArray(count, type.get(), empty.get()));
    if (!array) {
        return nullptr;
    }
    const char* next = roots;
    for (jsize index = 0; index < count; ++index) {
        const LocalRef root(env, env->NewStringUTF(next));
        if (!root) {
            return nullptr;
        }
        env->SetObjectArrayElement(array.get(), index, root.get());
        next += driveStringSize;
    }
    return array.release();
}

}  // namespace winutil::volume
