#pragma once

#include <jni.h>

#include "bridge/errors.h"

namespace winutil::inventory {

// Hands every memory module to a collector; an exception from Java ends the listing at once. Returns false
// with a message when the query fails.
bool listMemoryModules(JNIEnv* env, jobject collector, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::inventory
