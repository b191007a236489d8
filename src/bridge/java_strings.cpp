#include "bridge/java_strings.h"

#include <cwchar>

#include "bridge/java_classes.h"

namespace winutil {

static_assert(sizeof(wchar_t) == sizeof(jchar));

WideString toWideString(JNIEnv* env, jstring text) noexcept {
    const jchar* chars = env->GetStringChars(text, nullptr);
    if (chars == nullptr) {
        return {};
    }
    const auto length = static_cast<std::size_t>(env->GetStringLength(text));
    WideString copy = copyText(reinterpret_cast<const wchar_t*>(chars), length);
    env->ReleaseStringChars(text, chars);
    return copy;
}

jstring newJavaString(JNIEnv* env, const wchar_t* text) noexcept {
    return newJavaString(env, std::wstring_view(text));
}

jstring newJavaString(JNIEnv* env, std::wstring_view text) noexcept {
    return env->NewString(reinterpret_cast<const jchar*>(text.data()), static_cast<jsize>(text.size()));
}

jstring emptyUnlessPending(JNIEnv* env) noexcept {
    return exceptionPending(env) ? nullptr : newJavaString(env, L"");
}

void ansiToWide(wchar_t* destination, const char* source, int capacity) noexcept {
    if (destination != nullptr && source != nullptr) {
        MultiByteToWideChar(CP_ACP, 0, source, -1, destination, capacity);
    }
}

HeapMemory<char> wideToAnsi(const wchar_t* source) noexcept {
    const int size = WideCharToMultiByte(CP_ACP, 0, source, -1, nullptr, 0, nullptr, nullptr);
    HeapMemory<char> text = allocate<char>(static_cast<std::size_t>(size));
    if (size <= 0 || !text ||
        WideCharToMultiByte(CP_ACP, 0, source, -1, text.get(), size, nullptr, nullptr) == 0) {
        return {};
    }
    return text;
}

WideString copyText(const wchar_t* text, std::size_t length, std::size_t extra) noexcept {
    WideString copy = allocate<wchar_t>(length + extra + 1);
    if (copy) {
        wcsncpy_s(copy.get(), length + 1, text, length);
        copy.get()[length] = L'\0';
    }
    return copy;
}

TerminatedChars::TerminatedChars(JNIEnv* env, jstring text) noexcept
    : env_(env), text_(text), chars_(env->GetStringChars(text, nullptr)) {
    if (chars_ != nullptr) {
        get()[env->GetStringLength(text)] = L'\0';
    }
}

TerminatedChars::~TerminatedChars() {
    if (chars_ != nullptr) {
        env_->ReleaseStringChars(text_, chars_);
    }
}

wchar_t* TerminatedChars::get() const noexcept {
    return reinterpret_cast<wchar_t*>(const_cast<jchar*>(chars_));
}

NarrowChars::NarrowChars(JNIEnv* env, jstring text) noexcept
    : env_(env), text_(text), chars_(text == nullptr ? nullptr : env->GetStringUTFChars(text, nullptr)) {}

NarrowChars::~NarrowChars() {
    if (chars_ != nullptr) {
        env_->ReleaseStringUTFChars(text_, chars_);
    }
}

}  // namespace winutil
