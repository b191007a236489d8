// What the entry points share. Each takes its Java arguments, calls one function of its subsystem and turns
// the result into a Java value; it leaves an exception pending where the work below raised one.
#pragma once

// The declarations that javac made from the Java class: an entry point with a wrong signature does not
// compile.
#include <com_qarvo_kel_util_WindowsUtil.h>

namespace winutil {

inline jboolean toJava(bool value) noexcept {
    return value ? JNI_TRUE : JNI_FALSE;
}

inline bool fromJava(jboolean value) noexcept {
    return value != JNI_FALSE;
}

}  // namespace winutil
