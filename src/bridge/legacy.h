// To go: the forms that bridge/arguments.h and bridge/java_calls.h replace.
#pragma once

#include "bridge/java_refs.h"
#include "bridge/java_strings.h"

namespace winutil {

class TerminatedChars {
public:
    TerminatedChars(JNIEnv* env, jstring text) noexcept {
        if (chars_.take(env, text, Secrecy::open)) {
            chars_.get()[chars_.length()] = L'\0';
        }
    }
    explicit operator bool() const noexcept { return chars_.get() != nullptr; }
    wchar_t* get() const noexcept { return chars_.get(); }

private:
    JavaChars chars_;
};

class NarrowChars {
public:
    NarrowChars(JNIEnv* env, jstring text) noexcept
        : env_(env), text_(text), chars_(text == nullptr ? nullptr : env->GetStringUTFChars(text, nullptr)) {}
    NarrowChars(const NarrowChars&) = delete;
    NarrowChars& operator=(const NarrowChars&) = delete;
    ~NarrowChars() {
        if (chars_ != nullptr) {
            env_->ReleaseStringUTFChars(text_, chars_);
        }
    }
    explicit operator bool() const noexcept { return chars_ != nullptr || text_ == nullptr; }
    const char* get() const noexcept { return chars_; }

private:
    JNIEnv* env_;
    jstring text_;
    const char* chars_;
};

inline jstring emptyUnlessPending(JNIEnv* env) noexcept {
    return exceptionPending(env) ? nullptr : newJavaString(env, L"");
}

inline bool addText(JNIEnv* env, jobject collection, jmethodID add, const wchar_t* text) noexcept {
    const LocalRef javaText(env, newJavaString(env, text));
    if (!javaText) {
        return false;
    }
    env->CallBooleanMethod(collection, add, javaText.get());
    return !exceptionPending(env);
}

}  // namespace winutil
