// The physical disks of the machine and their serial numbers.
#pragma once

#include <jni.h>

#include <cstddef>

#include "bridge/errors.h"

namespace winutil::volume {

// Bytes of the name of a disk, the terminator included.
inline constexpr std::size_t diskNameCapacity = 32;
using DiskName = char[diskNameCapacity];

// Writes the name of the disk with the Windows folder, \\.\PHYSICALDRIVE and its number; with -1 in the
// number's place, which no disk has, when that is not known.
void systemDiskName(DiskName& name) noexcept;

// Hands one disk to the collector, or prints it when there is no Java environment. Returns false when a Java
// exception is pending.
bool reportDisk(JNIEnv* env, jobject collector, const char* deviceId, const char* serial,
                bool isSystem) noexcept;

// Hands each disk with a serial number to the collector: that which WMI gives, or else the drive itself.
// Leaves a message when WMI fails.
void listDiskSerials(JNIEnv* env, jobject collector, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::volume
