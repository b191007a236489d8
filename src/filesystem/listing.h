#pragma once

#include <jni.h>

#include "bridge/ex_callback.h"

namespace winutil::filesystem {

struct ListingOptions {
    bool withSecurity;     // read a descriptor for each entry
    bool withAttributes;   // pass the attribute word on, and with it whether an entry is a reparse point
    bool securityOnFiles;  // read the descriptors of files too; for directories the volume decides
};

// Calls addFile on the collector for each entry of a directory but "." and "..", and reports an entry whose
// security descriptor cannot be read through `events`. Raises an IOException when the directory
// cannot be listed; what was delivered before stays delivered. An exception from Java ends the listing at
// once.
void listWinFiles(JNIEnv* env, jobject collector, const wchar_t* directory, const ListingOptions& options,
                  CExCallback& events) noexcept;

}  // namespace winutil::filesystem
