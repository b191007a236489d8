#pragma once

#include <jni.h>
#include <windows.h>

#include "bridge/text.h"

namespace winutil {

// A password on its way into a call: the one copy that the library makes of it, wiped before its memory goes
// back. A null string counts as empty.
class SecretText {
public:
    SecretText(JNIEnv* env, jstring text) noexcept;
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;
    ~SecretText();

    // False when memory is exhausted.
    explicit operator bool() const noexcept { return static_cast<bool>(text_); }
    const wchar_t* get() const noexcept { return text_.get(); }

private:
    WideString text_;
    std::size_t length_ = 0;  // characters, those behind a zero in the middle included
};

}  // namespace winutil
