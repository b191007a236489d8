// Opening and creating files.
#pragma once

#include <windows.h>

#include <cstdint>

#include "bridge/errors.h"
#include "bridge/handle_cell.h"
#include "fileio/open_file_record.h"

namespace winutil::fileio {

// Opens a file; when that fails, once more by its long form, and up to ten times more, 500 ms apart, while
// another process holds it without sharing. Returns a cell that holds the handle or INVALID_HANDLE_VALUE,
// with the thread's last error that of the failed open; no cell, and ERROR_NOT_ENOUGH_MEMORY, when memory is
// exhausted. The message of a failed open is left in `errorBuffer` unless that is null.
FileCell createFileWithRetry(const wchar_t* path, DWORD access, DWORD share, DWORD disposition, DWORD flags,
                             ErrorBuffer* errorBuffer) noexcept;

// Returns whether there is a cell with an open file in it.
inline bool isOpen(const FileCell& cell) noexcept {
    return cell && *cell.get() != INVALID_HANDLE_VALUE;
}

// Opens or creates a file and, for a size above 0, preallocates that many bytes. Returns the record for Java;
// null, with the reason in `errorBuffer`, when that fails. A record with a reason beside it is one whose size
// cannot be read: it is not for Java.
OpenFileRecord* createFile(const wchar_t* path, DWORD access, DWORD disposition, DWORD flags,
                           std::int64_t size, ErrorBuffer& errorBuffer) noexcept;

// Opens a file or directory for reading, by the same rules.
OpenFileRecord* openFile(const wchar_t* path, ErrorBuffer& errorBuffer) noexcept;

// Cuts a preallocated file at its current position, closes the handle and frees the record.
void closeFile(OpenFileRecord* record) noexcept;

}  // namespace winutil::fileio
