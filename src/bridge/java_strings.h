// Java strings on their way into Windows calls and back. What a native method takes of its own arguments goes
// through bridge/arguments.h.
//
// A JVM that has no memory for the characters of a string answers null and leaves no exception pending; only
// what makes Java objects leaves an OutOfMemoryError.
#pragma once

#include <jni.h>
#include <windows.h>

#include <cstdint>
#include <string_view>

#include "bridge/text.h"

namespace winutil {

// Whether a text is a password: of one, the JVM's copy is wiped before it goes back.
enum class Secrecy : std::uint8_t { open, secret };

// Returns a copy of `text` as zero-terminated UTF-16; none when memory is exhausted. `text` must not be null.
WideString toWideString(JNIEnv* env, jstring text, Secrecy secrecy = Secrecy::open) noexcept;

// Returns a new Java string of `text`, or null with an OutOfMemoryError pending.
jstring newJavaString(JNIEnv* env, const wchar_t* text) noexcept;
jstring newJavaString(JNIEnv* env, std::wstring_view text) noexcept;

// The characters of a Java string as the JVM hands them out, given back at the end of the scope. Not
// terminated: the JVM does not promise that.
class JavaChars {
public:
    JavaChars() noexcept = default;
    JavaChars(const JavaChars&) = delete;
    JavaChars& operator=(const JavaChars&) = delete;
    ~JavaChars();

    // Returns false when memory is exhausted. `text` must not be null.
    bool take(JNIEnv* env, jstring text, Secrecy secrecy) noexcept;
    wchar_t* get() const noexcept { return reinterpret_cast<wchar_t*>(const_cast<jchar*>(chars_)); }
    std::size_t length() const noexcept { return length_; }

private:
    JNIEnv* env_ = nullptr;
    jstring text_ = nullptr;
    const jchar* chars_ = nullptr;
    std::size_t length_ = 0;
    bool wipe_ = false;
};

}  // namespace winutil
