// What a launch hands to Java.
#pragma once

#include <jni.h>
#include <windows.h>

#include "bridge/errors.h"
#include "bridge/owners.h"

namespace winutil::process {

// The handle cells that Java receives; null where a launch has none.
struct LaunchCells {
    HANDLE* process = nullptr;
    HANDLE* output = nullptr;
    HANDLE* error = nullptr;
    HANDLE* token = nullptr;
    HANDLE* profile = nullptr;
};

// The pipes that carry a child's standard output and standard error.
struct OutputPipe {
    KernelHandle readEnd;
    KernelHandle writeEnd;
};
struct OutputPipes {
    OutputPipe output;
    OutputPipe error;
};

// Returns the Java object of a started child, which owns the handles in the cells and the read ends from then
// on. Null, with the reason in `errorBuffer` or a Java exception pending and the read ends where they were,
// when it cannot be made: the child then runs on, and its process handle stays open.
jobject newJavaProcess(JNIEnv* env, const wchar_t* tag, const LaunchCells& cells, OutputPipes& pipes,
                       ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::process
