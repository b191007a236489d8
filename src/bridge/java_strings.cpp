#include "bridge/java_strings.h"

namespace winutil {

static_assert(sizeof(wchar_t) == sizeof(jchar));

WideString toWideString(JNIEnv* env, jstring text, Secrecy secrecy) noexcept {
    JavaChars chars;
    if (!chars.take(env, text, secrecy)) {
        return {};
    }
    return copyText(chars.get(), chars.length());
}

jstring newJavaString(JNIEnv* env, const wchar_t* text) noexcept {
    return newJavaString(env, std::wstring_view(text));
}

jstring newJavaString(JNIEnv* env, std::wstring_view text) noexcept {
    return env->NewString(reinterpret_cast<const jchar*>(text.data()), static_cast<jsize>(text.size()));
}

JavaChars::~JavaChars() {
    if (chars_ == nullptr) {
        return;
    }
    if (wipe_) {
        SecureZeroMemory(get(), length_ * sizeof(wchar_t));
    }
    env_->ReleaseStringChars(text_, chars_);
}

bool JavaChars::take(JNIEnv* env, jstring text, Secrecy secrecy) noexcept {
    jboolean isCopy = JNI_FALSE;
    chars_ = env->GetStringChars(text, &isCopy);
    if (chars_ == nullptr) {
        return false;
    }
    env_ = env;
    text_ = text;
    length_ = static_cast<std::size_t>(env->GetStringLength(text));
    wipe_ = secrecy == Secrecy::secret && isCopy != JNI_FALSE;
    return true;
}

}  // namespace winutil
