// Opening and creating files.
#pragma once

#include <jni.h>
#include <windows.h>

#include <cstdint>

#include "fileio/open_file_record.h"

namespace winutil::fileio {

// Opens a file; when that fails, once more by its long form, and up to ten times more, 500 ms apart, while
// another process holds it without sharing. Returns a cell that holds the handle or INVALID_HANDLE_VALUE,
// with the thread's last error that of the failed open; null only when memory is exhausted. The failure's
// message is written to `errorBuffer` (ErrorBuffer::capacity characters) unless that is null.
HandleCell createFileWithRetry(const wchar_t* path, DWORD access, DWORD share, DWORD disposition, DWORD flags,
                               wchar_t* errorBuffer) noexcept;

// Opens or creates a file and, for a size above 0, preallocates that many bytes. Returns the record for Java,
// or null with an exception pending.
OpenFileRecord* createFile(JNIEnv* env, const wchar_t* path, DWORD access, DWORD disposition, DWORD flags,
                           std::int64_t size) noexcept;

// Opens a file or directory for reading. Returns the record for Java, or null with an exception pending.
OpenFileRecord* openFile(JNIEnv* env, const wchar_t* path) noexcept;

// Cuts a preallocated file at its current position, closes the handle and frees the record.
void closeFile(OpenFileRecord* record) noexcept;

}  // namespace winutil::fileio
