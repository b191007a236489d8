// Reading, writing and positioning through an open-file record. A failure is left in `errorBuffer`; a null
// record is answered like a closed handle, with ERROR_INVALID_HANDLE.
#pragma once

#include <jni.h>

#include <cstdint>
#include <optional>

#include "bridge/errors.h"
#include "fileio/open_file_record.h"

namespace winutil::fileio {

// What the read methods answer beside a count.
inline constexpr jint endOfFile = -1;
inline constexpr jint readFailed = -2;

// Writes `length` bytes of an array from `offset` on. The bounds are the caller's.
void writeArray(JNIEnv* env, const OpenFileRecord* record, jbyteArray data, jint offset, jint length,
                ErrorBuffer& errorBuffer) noexcept;

// The same from a direct buffer. On an unbuffered file a length that is no multiple of the sector size (a
// power of two, bytes) is refused.
void writeBuffer(JNIEnv* env, const OpenFileRecord* record, jobject buffer, jint offset, jint length,
                 jint sectorSize, ErrorBuffer& errorBuffer) noexcept;

// Reads up to `length` bytes into an array from `offset` on. Returns the count, endOfFile or readFailed.
jint readArray(JNIEnv* env, OpenFileRecord* record, jbyteArray data, jint offset, jint length,
               ErrorBuffer& errorBuffer) noexcept;

// The same into a direct buffer. An unbuffered read behind the exact end of a file, which the system rejects
// as an invalid parameter, is the end of the file, whatever `errorBuffer` then says.
jint readBuffer(JNIEnv* env, OpenFileRecord* record, jobject buffer, jint offset, jint length,
                jint sectorSize, ErrorBuffer& errorBuffer) noexcept;

// Set, move and tell the file pointer, in bytes; none when that fails.
std::optional<std::int64_t> seek(const OpenFileRecord* record, std::int64_t position,
                                 ErrorBuffer& errorBuffer) noexcept;
std::optional<std::int64_t> skip(const OpenFileRecord* record, std::int64_t distance,
                                 ErrorBuffer& errorBuffer) noexcept;
std::optional<std::int64_t> filePosition(const OpenFileRecord* record, ErrorBuffer& errorBuffer) noexcept;

// Returns the size in bytes, none when it cannot be read.
std::optional<std::int64_t> fileSize(const OpenFileRecord* record, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::fileio
