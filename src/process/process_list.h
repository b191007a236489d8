#pragma once

#include <jni.h>

#include "bridge/errors.h"

namespace winutil::process {

// Returns a list of the running processes of one program, or of all where its name is null or empty. One
// whose owner or session cannot be told is left out. Null, with the reason in `errorBuffer` or a Java
// exception pending, when there is no list to be had, and null alone where Java lacks the list's own methods
// or the record's constructor.
jobject listProcesses(JNIEnv* env, jstring executableName, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::process
