#include "bridge/java_classes.h"

#include "bridge/java_strings.h"

namespace winutil {

jmethodID findMethod(JNIEnv* env, jclass type, const JavaMethod& method) noexcept {
    return env->GetMethodID(type, method.name, method.signature);
}

jmethodID findCollectorMethod(JNIEnv* env, jobject collector, const JavaMethod& method) noexcept {
    if (collector == nullptr) {
        return nullptr;
    }
    const LocalRef type(env, env->GetObjectClass(collector));
    const jmethodID found = type ? findMethod(env, type.get(), method) : nullptr;
    if (found == nullptr) {
        env->ExceptionClear();
    }
    return found;
}

bool exceptionPending(JNIEnv* env) noexcept {
    return static_cast<bool>(LocalRef<jthrowable>(env, env->ExceptionOccurred()));
}

bool addText(JNIEnv* env, jobject collection, jmethodID add, const wchar_t* text) noexcept {
    const LocalRef javaText(env, newJavaString(env, text));
    if (!javaText) {
        return false;
    }
    env->CallBooleanMethod(collection, add, javaText.get());
    return !exceptionPending(env);
}

}  // namespace winutil
