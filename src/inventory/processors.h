#pragma once

#include <jni.h>

#include "bridge/errors.h"

namespace winutil::inventory {

// Hands every processor to a collector; an exception from Java ends the listing at once. Leaves a
// message when the query fails.
void listProcessors(JNIEnv* env, jobject collector, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::inventory
