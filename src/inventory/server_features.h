#pragma once

#include <jni.h>

#include "bridge/errors.h"

namespace winutil::inventory {

// Adds the installed features of a Windows server to a Java list; an exception from Java ends the listing at
// once. Leaves a message when the query fails.
void listServerFeatures(JNIEnv* env, jobject list, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::inventory
