// The volumes of the machine and where they are mounted.
#pragma once

#include <jni.h>

#include "bridge/text.h"

namespace winutil::volume {

// Returns the first path with a drive letter that a volume is mounted at, at most 2048 characters of it; none
// when it has none. `volumeName` is of the form \\?\Volume{GUID}\.
WideString firstDriveLetterPath(const wchar_t* volumeName) noexcept;

// Hands each volume to the collector, by its drive-letter path or else by its name. Failures are printed; the
// first name that is not of the form of a volume name ends the listing.
void listPartitions(JNIEnv* env, jobject collector) noexcept;

}  // namespace winutil::volume
