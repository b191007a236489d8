// What the entry points share. Each takes its Java arguments, calls one function of its subsystem and turns
// the result into a Java value, or its failure into an exception.
#pragma once

// The declarations that javac made from the Java class: an entry point with a wrong signature does not
// compile.
#include <com_qarvo_kel_util_WindowsUtil.h>

#include <optional>

#include "bridge/arguments.h"
#include "bridge/errors.h"
#include "bridge/java_values.h"

namespace winutil {

// The answer of a worker, or an OutOfMemoryError where there was no memory to find it; beside that, nothing
// (false, 0) goes back.
template <class T>
T orOutOfMemory(JNIEnv* env, const std::optional<T>& answer) noexcept {
    if (!answer) {
        throwOutOfMemoryError(env);
    }
    return answer.value_or(T{});
}

}  // namespace winutil
