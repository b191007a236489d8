// What the Java side does with a child and its pipes through their handle cells. Where a cell is null, a
// method that raises does so with ERROR_INVALID_HANDLE.
#pragma once

#include <jni.h>
#include <windows.h>

namespace winutil::process {

// Closes the handle in a cell, if it holds one, and frees the cell; does nothing for null.
void closeCell(HANDLE* cell) noexcept;

// Unloads a profile, closes its token and frees both cells; a null cell is passed over.
void unloadProfile(HANDLE* tokenCell, HANDLE* profileCell) noexcept;

// Waits until a process has ended and returns WAIT_OBJECT_0; WAIT_FAILED when it cannot.
DWORD waitForEnd(const HANDLE* cell) noexcept;

// Returns the exit code of a process, STILL_ACTIVE while it runs; 0 with an IOException pending when it
// cannot be had.
DWORD exitCode(JNIEnv* env, const HANDLE* cell) noexcept;

// Ends a process with exit code 0; an IOException is pending when that fails.
void endChild(JNIEnv* env, const HANDLE* cell) noexcept;

// Reads from a pipe into a range of an array, which is not checked. Returns how many bytes were read, -1 when
// the child has closed its end, and 0 with an IOException pending when it fails.
jint readOutput(JNIEnv* env, const HANDLE* cell, jbyteArray buffer, jint offset, jint length) noexcept;

}  // namespace winutil::process
