#include "process/java_lookups.h"

namespace winutil::process {

LocalRef<jclass> requireClass(JNIEnv* env, const wchar_t* tag, const char* name,
                              ErrorBuffer& errorBuffer) noexcept {
    LocalRef type(env, env->FindClass(name));
    if (!type) {
        env->ExceptionClear();
        errorBuffer.print(L"%s Failed to FindClass for %hs", tag, name);
    }
    return type;
}

jmethodID requireConstructor(JNIEnv* env, const wchar_t* tag, jclass type, const char* name,
                             const JavaMethod& constructor, ErrorBuffer& errorBuffer) noexcept {
    const jmethodID found = findMethod(env, type, constructor);
    if (found == nullptr) {
        env->ExceptionClear();
        errorBuffer.print(L"%s Failed to constructor for %hs", tag, name);
    }
    return found;
}

}  // namespace winutil::process
