// The volumes on the data partitions of one physical disk.
#pragma once

#include <jni.h>
#include <windows.h>

#include "bridge/list.h"
#include "bridge/text.h"

namespace winutil::volume {

// A partition that may hold NTFS.
struct PartitionRecord {
    DWORD number;
    LONGLONG startingOffset;  // bytes
    LONGLONG length;          // bytes
};

// A volume on such a partition.
struct VolumeRecord {
    WideString name;         // \\?\Volume{GUID}\ (with the backslash)
    WideString displayPath;  // its first drive-letter path, or else its name
    LONGLONG startingOffset;
};

// Reads the data partitions of a disk in the order of its layout. Returns a Win32 code, 0 for success; a disk
// without such a partition is one.
DWORD readDiskPartitions(const wchar_t* diskPath, List<PartitionRecord>& partitions) noexcept;

// Finds the volumes that lie on these partitions of the disk with that number. Returns a Win32 code, 0 for
// success. A volume that does not open is passed over.
DWORD matchVolumesToPartitions(int diskNumber, const List<PartitionRecord>& partitions,
                               List<VolumeRecord>& volumes) noexcept;

// Hands the volumes on the data partitions of a disk to the collector; an exception from Java ends the
// listing. Returns the Win32 code of the step that failed, 0 for success; behind a failure nothing was handed
// out.
DWORD listNtfsPartitions(JNIEnv* env, const wchar_t* diskPath, jobject collector) noexcept;

}  // namespace winutil::volume
