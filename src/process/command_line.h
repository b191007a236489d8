#pragma once

#include <jni.h>
#include <windows.h>

namespace winutil::process {

// Returns the command line of a process as a Java string, cut at 2048 characters; null, with an IOException
// pending, when it cannot be read.
jstring processCommandLine(JNIEnv* env, DWORD processId, bool verbose) noexcept;

}  // namespace winutil::process
