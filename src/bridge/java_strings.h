// Java strings on their way into Windows calls and back.
#pragma once

#include <jni.h>
#include <windows.h>

#include <string_view>

#include "bridge/owners.h"

namespace winutil {

// Returns a copy of `text` as zero-terminated UTF-16; none when memory is exhausted (the JVM's error may be
// pending). `text` must not be null.
WideString toWideString(JNIEnv* env, jstring text) noexcept;

// Returns a new Java string of `text`, or null with an OutOfMemoryError pending.
jstring newJavaString(JNIEnv* env, const wchar_t* text) noexcept;
jstring newJavaString(JNIEnv* env, std::wstring_view text) noexcept;

// Returns what a method answers whose arguments found no memory: the empty string, as for any other failure,
// unless the JVM has said so already.
jstring emptyUnlessPending(JNIEnv* env) noexcept;

// Converts `source` from the active ANSI code page; does nothing when either pointer is null.
// `capacity` counts wide characters of `destination`, the terminator included.
void ansiToWide(wchar_t* destination, const char* source, int capacity) noexcept;

// Returns a text in the active ANSI code page; none when it cannot be converted or memory is exhausted.
HeapMemory<char> wideToAnsi(const wchar_t* source) noexcept;

// Returns a copy of the first `length` characters of `text`, with room for `extra` more; none when memory is
// exhausted.
WideString copyText(const wchar_t* text, std::size_t length, std::size_t extra = 0) noexcept;

// The characters of a Java string, zero-terminated in the buffer that the JVM handed out. The JVM does not
// promise a terminator, but its buffer has room for one; writing it saves the copy that toWideString makes.
class TerminatedChars {
public:
    TerminatedChars(JNIEnv* env, jstring text) noexcept;
    TerminatedChars(const TerminatedChars&) = delete;
    TerminatedChars& operator=(const TerminatedChars&) = delete;
    ~TerminatedChars();

    explicit operator bool() const noexcept { return chars_ != nullptr; }
    wchar_t* get() const noexcept;

private:
    JNIEnv* env_;
    jstring text_;
    const jchar* chars_;
};

// The modified UTF-8 bytes of a Java string for an ANSI call, as they are: right for ASCII names only, which
// is what the callers of those methods pass. A null string gives null.
class NarrowChars {
public:
    NarrowChars(JNIEnv* env, jstring text) noexcept;
    NarrowChars(const NarrowChars&) = delete;
    NarrowChars& operator=(const NarrowChars&) = delete;
    ~NarrowChars();

    // False when the JVM had no memory for them; its error is then pending.
    explicit operator bool() const noexcept { return chars_ != nullptr || text_ == nullptr; }
    const char* get() const noexcept { return chars_; }

private:
    JNIEnv* env_;
    jstring text_;
    const char* chars_;
};

}  // namespace winutil
