#include "bridge/secret_text.h"

#include "bridge/java_strings.h"

namespace winutil {

SecretText::SecretText(JNIEnv* env, jstring text) noexcept {
    if (text == nullptr) {
        text_ = copyText(L"", 0);
        return;
    }
    text_ = toWideString(env, text);
    if (text_) {
        length_ = static_cast<std::size_t>(env->GetStringLength(text));
    }
}

SecretText::~SecretText() {
    if (text_) {
        SecureZeroMemory(text_.get(), length_ * sizeof(wchar_t));
    }
}

}  // namespace winutil
