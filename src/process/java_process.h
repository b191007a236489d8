#pragma once

#include <jni.h>

#include "process/child_output.h"
#include "process/launch_cells.h"

namespace winutil::process {

// Returns the Java object of a started child, which owns the handles in the cells and the read ends from then
// on. Null, with an exception pending and the read ends where they were, when it cannot be made: the child
// then runs on, and its process handle stays open, deliberately.
jobject newJavaProcess(JNIEnv* env, const wchar_t* tag, const LaunchCells& cells,
                       OutputPipes& pipes) noexcept;

}  // namespace winutil::process
