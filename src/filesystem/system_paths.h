// Paths that the system knows: what its search order finds, and its own folders.
#pragma once

#include <jni.h>

#include <cstddef>

namespace winutil::filesystem {

// Characters of a path that the search gives, the terminator included.
inline constexpr std::size_t foundPathCapacity = 256;
using FoundPath = wchar_t[foundPathCapacity];

// Looks for a file in the system's search order; the path is empty when it is not found or too long.
void searchSystemPath(const wchar_t* name, FoundPath& path) noexcept;

// Adds the folders that hold programs and Windows to a Java collection. An exception from Java ends the
// listing at once.
void listExcludeFolders(JNIEnv* env, jobject collection) noexcept;

}  // namespace winutil::filesystem
