// Drives: letters, labels, kinds and space. A null path is that of no drive: the system would take it for the
// current one, and a null label for the wish to have none.
#pragma once

#include <jni.h>

#include <cstdint>

namespace winutil::volume {

// Characters of an ANSI path and of a label, the terminator included.
inline constexpr int drivePathCapacity = 2048;
using DriveText = char[drivePathCapacity];
inline constexpr int volumeLabelCapacity = 1024;
using VolumeLabel = wchar_t[volumeLabelCapacity];

// Writes the drive letter of the Windows folder, without the colon. Returns false when there is none.
bool systemDriveLetter(DriveText& letter) noexcept;

// Writes the name that the shell shows for a volume or, where it shows none, the volume's label; an empty
// text when neither can be had.
void readVolumeLabel(const wchar_t* root, VolumeLabel& label) noexcept;

bool setVolumeLabel(const char* root, const char* label) noexcept;

// Returns one of the DRIVE_... kinds.
int driveType(const char* root) noexcept;

// Return bytes, 0 when they cannot be had: the size that the system shows the caller, and what is free on the
// whole volume whatever the caller's quota.
std::int64_t totalSpace(const char* path) noexcept;
std::int64_t freeSpace(const char* path) noexcept;

// Returns a new array of the roots of all drives, or null: when the system does not tell them, or with a Java
// exception pending.
jobjectArray logicalDrives(JNIEnv* env) noexcept;

}  // namespace winutil::volume
