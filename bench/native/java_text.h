#pragma once

#include <jni.h>

#include <string>

namespace bench {

inline std::wstring toWide(JNIEnv* env, jstring text) {
    const jsize length = env->GetStringLength(text);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    env->GetStringRegion(text, 0, length, reinterpret_cast<jchar*>(wide.data()));
    return wide;
}

}  // namespace bench
