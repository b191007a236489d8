#pragma once

#include <jni.h>

namespace winutil::registry {

// Hands the direct subkeys of a key and then its values to a collector. What cannot be opened or read gives
// nothing and raises nothing; an exception from Java ends the listing at once, and so does one for memory
// that is exhausted.
void listRegistry(JNIEnv* env, jobject collector, const char* rootName, const char* keyPath) noexcept;

}  // namespace winutil::registry
