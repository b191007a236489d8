#pragma once

#include <jni.h>

namespace winutil::network {

// Hands the current network connections to a collector, each container followed by what is in it. Returns
// whether the enumeration of the outermost ones could be opened, walked and closed. An exception from Java
// ends it at once.
bool listNetResources(JNIEnv* env, jobject collector) noexcept;

}  // namespace winutil::network
