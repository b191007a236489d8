#pragma once

#include <jni.h>

#include "bridge/errors.h"
#include "bridge/java_classes.h"

namespace winutil::process {

// Return a class and its constructor. For a missing one a message is left that begins with the tag and names
// the class, in place of the JVM's error.
LocalRef<jclass> requireClass(JNIEnv* env, const wchar_t* tag, const char* name,
                              ErrorBuffer& errorBuffer) noexcept;
jmethodID requireConstructor(JNIEnv* env, const wchar_t* tag, jclass type, const char* name,
                             const JavaMethod& constructor, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::process
