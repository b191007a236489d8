#include "process/java_lookups.h"

#include "bridge/errors.h"
#include "process/failure.h"

namespace winutil::process {

namespace {

void throwMissing(JNIEnv* env, const StepMessage& message) noexcept {
    env->ExceptionClear();
    throwIOException(env, message.get());
}

}  // namespace

LocalRef<jclass> requireClass(JNIEnv* env, const wchar_t* tag, const char* name) noexcept {
    LocalRef type(env, env->FindClass(name));
    if (!type) {
        throwMissing(env, StepMessage(L"%s Failed to FindClass for %hs", tag, name));
    }
    return type;
}

jmethodID requireConstructor(JNIEnv* env, const wchar_t* tag, jclass type, const char* name,
                             const JavaMethod& constructor) noexcept {
    const jmethodID found = findMethod(env, type, constructor);
    if (found == nullptr) {
        throwMissing(env, StepMessage(L"%s Failed to constructor for %hs", tag, name));
    }
    return found;
}

}  // namespace winutil::process
