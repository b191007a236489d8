#include "volume/disk_volumes.h"

#include <cwchar>
#include <iterator>
#include <utility>

#include "bridge/java_calls.h"
#include "volume/device_number.h"
#include "volume/disk_layout.h"
#include "volume/disk_number.h"
#include "volume/volumes.h"

namespace winutil::volume {

namespace {

constexpr DWORD volumeNameCapacity = 520;

// The layout is read into a buffer with room for 2 partitions, and for 16 more after each time that it was
// too small. A disk that asks for more than the last of these is lying.
constexpr DWORD firstLayoutSize = 336;
constexpr DWORD layoutGrowth = 2304;
constexpr DWORD largestLayoutSize = 0x400000;
static_assert(offsetof(DRIVE_LAYOUT_INFORMATION_EX, PartitionEntry) == 48 &&
              sizeof(PARTITION_INFORMATION_EX) == 144);
static_assert(firstLayoutSize == 48 + 2 * 144 && layoutGrowth == 16 * 144);
static_assert(IOCTL_DISK_GET_DRIVE_LAYOUT_EX == 0x70050);

struct Layout {
    HeapMemory<std::byte> block;
    DWORD size = 0;

    const DRIVE_LAYOUT_INFORMATION_EX& get() const noexcept {
        return *reinterpret_cast<const DRIVE_LAYOUT_INFORMATION_EX*>(block.get());
    }
};

DWORD readLayout(HANDLE disk, Layout& layout) noexcept {
    DWORD code = ERROR_INSUFFICIENT_BUFFER;
    for (DWORD size = firstLayoutSize; code == ERROR_INSUFFICIENT_BUFFER && size <= largestLayoutSize;
         size += layoutGrowth) {
        // Zero to begin with: an entry that the disk counts and does not give has no length.
        layout = {.block = allocateZeroed<std::byte>(size), .size = size};
        if (!layout.block) {
            return ERROR_NOT_ENOUGH_MEMORY;
        }
        DWORD returned = 0;
        code = DeviceIoControl(disk, IOCTL_DISK_GET_DRIVE_LAYOUT_EX, nullptr, 0, layout.block.get(), size,
                               &returned, nullptr)
                   ? ERROR_SUCCESS
                   : GetLastError();
    }
    return code;
}

// Opens a volume by its name without the backslash: with it, the root directory would open.
FileHandle openVolume(const wchar_t* device) noexcept {
    return FileHandle(CreateFileW(device, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_ATTRIBUTE_NORMAL,
                                  nullptr));
}

void removeTrailingBackslash(wchar_t* name) noexcept {
    const std::size_t length = std::wcslen(name);
    if (length > 0 && name[length - 1] == L'\\') {
        name[length - 1] = L'\0';
    }
}

// The name of the volume of a device that has no backslash at its end.
WideString volumeNameOf(const wchar_t* device) noexcept {
    const std::size_t length = std::wcslen(device);
    WideString name = copyText(device, length, 1);
    if (name) {
        name.get()[length] = L'\\';
        name.get()[length + 1] = L'\0';
    }
    return name;
}

WideString displayPathOf(const wchar_t* volumeName) noexcept {
    WideString path = firstDriveLetterPath(volumeName);
    return path ? std::move(path) : copyText(volumeName, std::wcslen(volumeName));
}

// Returns false when memory is exhausted.
bool appendVolume(const wchar_t* device, const PartitionRecord& partition,
                  List<VolumeRecord>& volumes) noexcept {
    WideString name = volumeNameOf(device);
    if (!name) {
        return false;
    }
    WideString displayPath = displayPathOf(name.get());
    return displayPath && volumes.append({.name = std::move(name),
                                          .displayPath = std::move(displayPath),
                                          .startingOffset = partition.startingOffset});
}

// Appends a volume once for each of the partitions that it lies on. Returns false when memory is exhausted.
bool matchVolume(const wchar_t* device, int diskNumber, const List<PartitionRecord>& partitions,
                 List<VolumeRecord>& volumes) noexcept {
    const FileHandle volume = openVolume(device);
    STORAGE_DEVICE_NUMBER number;
    if (!volume || !readDeviceNumber(volume.get(), number) ||
        number.DeviceNumber != static_cast<DWORD>(diskNumber)) {
        return true;
    }
    for (const PartitionRecord& partition : partitions) {
        if (partition.number == number.PartitionNumber && !appendVolume(device, partition, volumes)) {
            return false;
        }
    }
    return true;
}

DWORD findDiskVolumes(const wchar_t* diskPath, List<VolumeRecord>& volumes) noexcept {
    const int diskNumber = trailingDiskNumber(diskPath);
    if (diskNumber < 0) {
        return ERROR_PATH_NOT_FOUND;
    }
    List<PartitionRecord> partitions;
    const DWORD code = readDiskPartitions(diskPath, partitions);
    return code == ERROR_SUCCESS ? matchVolumesToPartitions(diskNumber, partitions, volumes) : code;
}

}  // namespace

DWORD readDiskPartitions(const wchar_t* diskPath, List<PartitionRecord>& partitions) noexcept {
    const FileHandle disk(
        CreateFileW(diskPath, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!disk) {
        return GetLastError();
    }
    Layout layout;
    if (const DWORD code = readLayout(disk.get(), layout); code != ERROR_SUCCESS) {
        return code;
    }
    const DRIVE_LAYOUT_INFORMATION_EX& information = layout.get();
    for (const PARTITION_INFORMATION_EX& entry : partitionEntries(information, layout.size)) {
        if (isDataPartition(information.PartitionStyle, entry) &&
            !partitions.append({.number = entry.PartitionNumber,
                                .startingOffset = entry.StartingOffset.QuadPart,
                                .length = entry.PartitionLength.QuadPart})) {
            return ERROR_NOT_ENOUGH_MEMORY;
        }
    }
    return ERROR_SUCCESS;
}

DWORD matchVolumesToPartitions(int diskNumber, const List<PartitionRecord>& partitions,
                               List<VolumeRecord>& volumes) noexcept {
    wchar_t name[volumeNameCapacity];
    const VolumeSearch search(FindFirstVolumeW(name, volumeNameCapacity));
    if (!search) {
        return GetLastError();
    }
    do {
        removeTrailingBackslash(name);
        if (!matchVolume(name, diskNumber, partitions, volumes)) {
            return ERROR_NOT_ENOUGH_MEMORY;
        }
    } while (FindNextVolumeW(search.get(), name, volumeNameCapacity));
    const DWORD code = GetLastError();
    return code == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : code;
}

DWORD listNtfsPartitions(JNIEnv* env, const wchar_t* diskPath, jobject collector) noexcept {
    List<VolumeRecord> volumes;
    if (const DWORD code = findDiskVolumes(diskPath, volumes); code != ERROR_SUCCESS) {
        return code;
    }
    const jmethodID add = findCollectorMethod(env, collector, java_method::add);
    if (add == nullptr) {
        return ERROR_SUCCESS;
    }
    for (const VolumeRecord& volume : volumes) {
        if (!addItem(env, collector, add, volume.displayPath.get())) {
            break;
        }
    }
    return ERROR_SUCCESS;
}

}  // namespace winutil::volume
