#pragma once

#include <jni.h>

namespace winutil::process {

// Returns whether a service is running; false, with an IOException pending, when that cannot be told. A null
// name is one that there was no memory for.
bool isServiceRunning(JNIEnv* env, const wchar_t* name) noexcept;

}  // namespace winutil::process
