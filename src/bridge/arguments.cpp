#include "bridge/arguments.h"

#include <cstring>

namespace winutil {

bool WideText::take(JNIEnv* env, const TextRequest<WideText>& request) noexcept {
    if (request.text == nullptr) {
        text_ = request.ofNull == OfNull::empty ? L"" : nullptr;
        return true;
    }
    copy_ = toWideString(env, request.text, request.secrecy);
    text_ = copy_.get();
    if (copy_ && request.secrecy == Secrecy::secret) {
        secretLength_ = static_cast<std::size_t>(env->GetStringLength(request.text));
    }
    return static_cast<bool>(copy_);
}

WideText::~WideText() {
    if (copy_) {
        SecureZeroMemory(copy_.get(), secretLength_ * sizeof(wchar_t));
    }
}

bool InPlaceText::take(JNIEnv* env, const TextRequest<InPlaceText>& request) noexcept {
    if (request.text == nullptr) {
        return true;
    }
    if (!chars_.take(env, request.text, request.secrecy)) {
        return false;
    }
    chars_.get()[chars_.length()] = L'\0';
    return true;
}

bool NarrowText::take(JNIEnv* env, const TextRequest<NarrowText>& request) noexcept {
    if (request.text == nullptr) {
        return true;
    }
    jboolean isCopy = JNI_FALSE;
    chars_ = env->GetStringUTFChars(request.text, &isCopy);
    env_ = env;
    text_ = request.text;
    wipe_ = request.secrecy == Secrecy::secret && isCopy != JNI_FALSE;
    return chars_ != nullptr;
}

NarrowText::~NarrowText() {
    if (chars_ == nullptr) {
        return;
    }
    if (wipe_) {
        SecureZeroMemory(const_cast<char*>(chars_), std::strlen(chars_));
    }
    env_->ReleaseStringUTFChars(text_, chars_);
}

}  // namespace winutil
