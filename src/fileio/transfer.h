// Reading, writing and positioning through an open-file record. A null record is answered like a closed
// handle: an IOException with ERROR_INVALID_HANDLE.
#pragma once

#include <jni.h>

#include <cstdint>

#include "fileio/open_file_record.h"

namespace winutil::fileio {

// What the read methods answer beside a count.
inline constexpr jint endOfFile = -1;
inline constexpr jint readFailed = -2;

// Writes `length` bytes of an array from `offset` on; raises DiskFullException or IOException. The bounds are
// the caller's.
void writeArray(JNIEnv* env, const OpenFileRecord* record, jbyteArray data, jint offset,
                jint length) noexcept;

// The same from a direct buffer. On an unbuffered file a length that is no multiple of the sector size (a
// power of two, bytes) is refused with an IOException.
void writeBuffer(JNIEnv* env, const OpenFileRecord* record, jobject buffer, jint offset, jint length,
                 jint sectorSize) noexcept;

// Reads up to `length` bytes into an array from `offset` on. Returns the count, endOfFile, or readFailed with
// an IOException pending.
jint readArray(JNIEnv* env, OpenFileRecord* record, jbyteArray data, jint offset, jint length) noexcept;

// The same into a direct buffer. An unbuffered read behind the exact end of a file, which the system rejects
// as an invalid parameter, is the end of the file.
jint readBuffer(JNIEnv* env, OpenFileRecord* record, jobject buffer, jint offset, jint length,
                jint sectorSize) noexcept;

// Set, move and tell the file pointer, in bytes; -1 with an IOException pending.
std::int64_t seek(JNIEnv* env, const OpenFileRecord* record, std::int64_t position) noexcept;
std::int64_t skip(JNIEnv* env, const OpenFileRecord* record, std::int64_t distance) noexcept;
std::int64_t filePosition(JNIEnv* env, const OpenFileRecord* record) noexcept;

// Returns the size in bytes, or 0 with an IOException pending.
std::int64_t fileSize(JNIEnv* env, const OpenFileRecord* record) noexcept;

}  // namespace winutil::fileio
