// Flags, and objects of the library that Java keeps: their addresses travel as Java longs.
#pragma once

#include <jni.h>

namespace winutil {

inline jboolean toJava(bool value) noexcept {
    return static_cast<jboolean>(value ? JNI_TRUE : JNI_FALSE);
}

inline bool fromJava(jboolean value) noexcept {
    return value != JNI_FALSE;
}

template <class T>
jlong toJavaHandle(T* object) noexcept {
    return reinterpret_cast<jlong>(object);
}

// Returns the object behind a Java long, or null for 0 and below, which no method ever gave.
template <class T>
T* fromJavaHandle(jlong value) noexcept {
    return value > 0 ? reinterpret_cast<T*>(value) : nullptr;
}

}  // namespace winutil
