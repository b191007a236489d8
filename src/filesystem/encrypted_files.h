// The raw, still encrypted form of files that the Encrypting File System has encrypted, copied to and from
// Java streams. A context stands for one such file from its opening to its closing.
#pragma once

#include <jni.h>
#include <windows.h>

#include "bridge/errors.h"

namespace winutil::filesystem {

// What ends an export that was interrupted, as the system hands it on to the caller.
inline constexpr DWORD exportInterrupted = 0xFFFFFFFF;

inline constexpr wchar_t openEncryptedTag[] = L"OpenEncryptedFileRawW";

// Opens a file for one export (flags 0) or one import, and takes back an interrupt. The path is tried as
// given only. Where the system refuses, the reason is in `errorBuffer` and the context is what the system
// left of it.
PVOID openEncryptedFile(const wchar_t* path, ULONG flags, ErrorBuffer& errorBuffer) noexcept;

// Writes the raw form to a stream and returns the system's code: 0, or exportInterrupted, which raises
// nothing. Any other code leaves an IOException pending; an exception of the stream's own stays.
DWORD exportEncryptedFile(JNIEnv* env, PVOID context, jobject stream) noexcept;

// Makes the file from the raw form that a stream gives up to its end, and returns the system's code. An
// exception of the stream's ends the import and stays; a failure leaves an IOException pending.
DWORD importEncryptedFile(JNIEnv* env, PVOID context, jobject stream) noexcept;

// Stops each export of the process at its next block, until a file is opened again. Any thread may call it.
void interruptExports() noexcept;

}  // namespace winutil::filesystem
