#pragma once

#include <jni.h>
#include <windows.h>

namespace winutil::process {

// Ends a process with exit code 0 and waits until it has ended. Returns false, with an IOException pending,
// when it cannot be opened or ended.
bool terminate(JNIEnv* env, DWORD processId, bool verbose) noexcept;

}  // namespace winutil::process
