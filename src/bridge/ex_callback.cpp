#include "bridge/ex_callback.h"

#include "bridge/java_classes.h"
#include "bridge/java_strings.h"

namespace winutil {

bool CExCallback::fireFileErrorEvent(const wchar_t* path, const wchar_t* message) noexcept {
    if (env_ == nullptr || listener_ == nullptr) {
        return false;
    }
    const LocalRef type(env_, env_->GetObjectClass(listener_));
    const jmethodID method = findMethod(env_, type.get(), java_method::fireFileErrorEvent);
    if (method == nullptr) {
        return false;
    }
    const LocalRef javaPath(env_, newJavaString(env_, path));
    if (!javaPath) {
        return false;
    }
    const LocalRef javaMessage(env_, newJavaString(env_, message));
    if (!javaMessage) {
        return false;
    }
    env_->CallVoidMethod(listener_, method, javaPath.get(), javaMessage.get());
    return true;
}

}  // namespace winutil
