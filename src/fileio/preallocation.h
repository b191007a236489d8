// Giving files their length before their content.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>

#include "bridge/errors.h"
#include "bridge/handle_cell.h"
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
FileCell openForReading(const wchar_t* path, std::int64_t length, std::int64_t start) noexcept;

// Returns whether a file can be given 1 MiB of undefined content on the volume of `path`. Makes that file,
// replacing one that is there, and deletes it. None when memory is exhausted.
std::optional<bool> canExtendFile(const wchar_t* path) noexcept;

// Sets the end of a record's file through the native API. False, with the reason in `errorBuffer`, when that
// fails; false alone where the system lacks the call.
bool setEndOfFileInformation(const OpenFileRecord* record, std::int64_t endOfFile,
                             ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::fileio
