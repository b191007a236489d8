// Giving files their length before their content.
#pragma once

#include <jni.h>
#include <windows.h>

#include <cstdint>
#include <optional>

#include "fileio/open_file_record.h"

namespace winutil::fileio {

// Extends an open file to `size` bytes and leaves its pointer at the start. `validData` says that the new
// bytes need not be zeroed, which takes SeManageVolumePrivilege; that it cannot be done is no failure.
// Returns the code of a failure, which can be 0.
std::optional<DWORD> extendFile(HANDLE file, std::int64_t size, bool validData) noexcept;

// Turns the preallocating form of openForReading off for the process. Nothing in the library sets it; it is
// there for a host that must not have its files extended.
extern bool preallocatingOpenOff;

// Opens a file or directory for reading, the worker of openFile. With a positive `length` it first tries to
// open for writing too, to give the file that length in bytes and to set its pointer to `start`; where that
// fails, the plain read-only open follows. Result as of createFileWithRetry.
HandleCell openForReading(const wchar_t* path, std::int64_t length, std::int64_t start) noexcept;

// Returns whether a file can be given 1 MiB of undefined content on the volume of `path`. Makes that file,
// replacing one that is there, and deletes it.
bool canExtendFile(const wchar_t* path) noexcept;

// Sets the end of a record's file through the native API. False where the system lacks the call, or with an
// IOException pending.
bool setEndOfFileInformation(JNIEnv* env, const OpenFileRecord* record, std::int64_t endOfFile) noexcept;

}  // namespace winutil::fileio
