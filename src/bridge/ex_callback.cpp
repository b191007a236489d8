#include "bridge/ex_callback.h"

#include "bridge/java_calls.h"

namespace winutil {

bool CExCallback::fireFileErrorEvent(const wchar_t* path, const wchar_t* message) noexcept {
    if (env_ == nullptr || listener_ == nullptr) {
        return true;
    }
    const LocalRef type(env_, env_->GetObjectClass(listener_));
    const jmethodID method = findMethod(env_, type.get(), java_method::fireFileErrorEvent);
    if (method == nullptr) {
        return false;
    }
    callVoid(env_, listener_, method, path, message);
    return true;
}

}  // namespace winutil
