// The record of one file: attributes, size, time, security descriptor and link.
#pragma once

#include <jni.h>
#include <windows.h>

#include <cstdint>

#include "bridge/errors.h"
#include "bridge/owners.h"

namespace winutil::filesystem {

// Size and last-write time of a file, from a search or from an attribute query.
std::int64_t fileSize(DWORD high, DWORD low) noexcept;

// Returns the attribute word of a path, INVALID_FILE_ATTRIBUTES when it cannot be read.
DWORD getFileAttr(const wchar_t* path) noexcept;

// Returns a new WinFileList$WinFile for a path. Null when there is none: the path cannot be read (the reason
// is in `errorBuffer`), it is "\\", or the Java class has neither constructor. A Java exception is pending
// only where the JVM ran out of memory or the constructor threw.
jobject makeWinFile(JNIEnv* env, const wchar_t* path, bool withSecurity, bool securityOnFiles,
                    ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::filesystem
