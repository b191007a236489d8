#pragma once

#include <jni.h>

namespace winutil::process {

// Returns a list of the running processes of one program, or of all where its name is null or empty. One
// whose owner or session cannot be told is left out. Null, with an IOException pending, when there is no list
// to be had, and null alone where Java lacks the list's own methods.
jobject listProcesses(JNIEnv* env, jstring executableName) noexcept;

}  // namespace winutil::process
