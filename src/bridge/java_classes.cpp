#include "bridge/java_classes.h"

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

}  // namespace winutil
