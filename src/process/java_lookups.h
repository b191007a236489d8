#pragma once

#include <jni.h>

#include "bridge/java_classes.h"

namespace winutil::process {

// Return a class and its constructor. In place of the JVM's error for a missing one an IOException is pending
// then, which begins with the tag and names the class.
LocalRef<jclass> requireClass(JNIEnv* env, const wchar_t* tag, const char* name) noexcept;
jmethodID requireConstructor(JNIEnv* env, const wchar_t* tag, jclass type, const char* name,
                             const JavaMethod& constructor) noexcept;

}  // namespace winutil::process
