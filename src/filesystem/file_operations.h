#pragma once

#include <jni.h>

#include <optional>

namespace winutil::filesystem {

// Makes the last directory of a path. Returns false when it is there already, without an exception; any other
// failure leaves a DiskFullException or a SecurityException pending. On a network path whose parent is
// missing it waits two seconds for the directory to appear.
bool makeDirectory(JNIEnv* env, const wchar_t* path) noexcept;

// Deletes a file that exists; never a directory. None when memory is exhausted.
std::optional<bool> deleteExistingFile(const wchar_t* path) noexcept;

}  // namespace winutil::filesystem
