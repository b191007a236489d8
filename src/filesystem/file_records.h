// The record of one file: attributes, size, time, security descriptor and link.
#pragma once

#include <jni.h>
#include <windows.h>

#include <cstdint>
#include <optional>

namespace winutil::filesystem {

// The size of a file from the two halves that a search or an attribute query gives.
std::int64_t joinSize(DWORD high, DWORD low) noexcept;

// Returns the attribute word of a path, INVALID_FILE_ATTRIBUTES when it cannot be read; none when memory is
// exhausted.
std::optional<DWORD> getFileAttr(const wchar_t* path) noexcept;

// Returns a new WinFileList$WinFile for a path. Null when there is none: the path cannot be read, it is "\\",
// memory is exhausted, or the Java class has neither constructor. A Java exception is pending only where the
// JVM ran out of memory or the constructor threw.
jobject makeWinFile(JNIEnv* env, const wchar_t* path, bool withSecurity, bool securityOnFiles) noexcept;

}  // namespace winutil::filesystem
