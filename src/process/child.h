// What the Java side does with a child and its pipes through their handle cells. A failure is left in
// `errorBuffer`; where a cell is null it is ERROR_INVALID_HANDLE.
#pragma once

#include <jni.h>
#include <windows.h>

#include "bridge/errors.h"

namespace winutil::process {

// Closes the handle in a cell, if it holds one, and frees the cell; does nothing for null.
void closeCell(HANDLE* cell) noexcept;

// Unloads a profile, closes its token and frees both cells; a null cell is passed over.
void unloadProfile(HANDLE* tokenCell, HANDLE* profileCell) noexcept;

// Waits until a process has ended and returns WAIT_OBJECT_0; WAIT_FAILED when it cannot.
DWORD waitForEnd(const HANDLE* cell) noexcept;

// Returns the exit code of a process, STILL_ACTIVE while it runs; 0 when it cannot be had.
DWORD exitCode(const HANDLE* cell, ErrorBuffer& errorBuffer) noexcept;

// Ends a process with exit code 0.
void endChild(const HANDLE* cell, ErrorBuffer& errorBuffer) noexcept;

// Reads from a pipe into a range of an array, which is not checked. Returns how many bytes were read, -1 when
// the child has closed its end, and 0 when it fails.
jint readOutput(JNIEnv* env, const HANDLE* cell, jbyteArray buffer, jint offset, jint length,
                ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::process
