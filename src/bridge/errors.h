// Win32 failures as texts and as Java exceptions.
#pragma once

#include <jni.h>
#include <windows.h>

#include <cstddef>
#include <cstdio>

#include "bridge/owners.h"

namespace winutil {

// What a message says where the system has no text for a code.
inline constexpr wchar_t noSystemText[] = L"Failed to obtain error message";

// Returns the system's text for a code, in the user's language and with the line end that the system puts
// behind it; none when it has no text.
LocalMemory<wchar_t> findSystemText(DWORD code) noexcept;

// The system's text for a code, or noSystemText.
class SystemText {
public:
    explicit SystemText(DWORD code) noexcept : found_(findSystemText(code)) {}
    const wchar_t* get() const noexcept { return found_ ? found_.get() : noSystemText; }

private:
    LocalMemory<wchar_t> found_;
};

// Writes "[tag] (code) system text". A message that does not fit gets noSystemText instead of a cut system
// text. `capacity` counts wide characters, the terminator included.
void formatWin32Error(const wchar_t* tag, DWORD code, wchar_t* buffer, std::size_t capacity) noexcept;

// Writes "message tag (code) system text", by the same rules.
void formatWin32Error(const wchar_t* message, const wchar_t* tag, DWORD code, wchar_t* buffer,
                      std::size_t capacity) noexcept;

// A failure on its way to the native method that raises it: its message, and its code where it has one. A
// worker that fails leaves it here. It begins empty; only the first character is cleared, since the methods
// that move data make one per call.
class ErrorBuffer {
public:
    static constexpr std::size_t capacity = 4096;

    ErrorBuffer() noexcept { text_[0] = L'\0'; }
    ErrorBuffer(const ErrorBuffer&) = delete;
    ErrorBuffer& operator=(const ErrorBuffer&) = delete;
    ~ErrorBuffer() = default;

    // "[tag] (code) system text"
    void format(const wchar_t* tag, DWORD code) noexcept {
        code_ = code;
        formatWin32Error(tag, code, text_, capacity);
    }

    // "message tag (code) system text"
    void format(const wchar_t* message, const wchar_t* tag, DWORD code) noexcept {
        code_ = code;
        formatWin32Error(message, tag, code, text_, capacity);
    }

    // A message in words of the method's own. In wide formats %s takes a wide string: the _s functions are
    // the C runtime's own, on mingw as with Visual C++.
    template <class... Values>
    void print(const wchar_t* format, Values... values) noexcept {
        _snwprintf_s(text_, capacity, _TRUNCATE, format, values...);
    }

    wchar_t* text() noexcept { return text_; }
    const wchar_t* text() const noexcept { return text_; }
    bool empty() const noexcept { return text_[0] == L'\0'; }
    DWORD code() const noexcept { return code_; }

private:
    DWORD code_ = ERROR_SUCCESS;
    wchar_t text_[capacity];
};

// The throw workers leave an exception of their class pending; the native method releases what it holds and
// returns at once. They do nothing without an environment, and an exception that is there already stays.
// Where the class or its constructor is missing, the error that the JVM left pending is what the Java caller
// sees.
void throwIOException(JNIEnv* env, const wchar_t* message) noexcept;
void throwFileNotFoundException(JNIEnv* env, const wchar_t* message) noexcept;
void throwSharingViolationException(JNIEnv* env, const wchar_t* message) noexcept;
void throwDiskFullException(JNIEnv* env, const wchar_t* message) noexcept;
void throwSecurityException(JNIEnv* env, const wchar_t* message) noexcept;
void throwRuntimeException(JNIEnv* env, const wchar_t* message) noexcept;
void throwAccountRestrictionException(JNIEnv* env, const wchar_t* message) noexcept;

// Raises an IOException with the message that a worker left of its failure; does nothing where it left none.
inline void throwFailure(JNIEnv* env, const ErrorBuffer& errorBuffer) noexcept {
    if (!errorBuffer.empty()) {
        throwIOException(env, errorBuffer.text());
    }
}

// Raises an IOException with "[tag] (code) system text".
void throwWin32Error(JNIEnv* env, const wchar_t* tag, DWORD code) noexcept;

// Raises what the JVM raises for an object that it has no memory for: for what there is none for in the
// library, or in the JVM without a word of its own.
void throwOutOfMemoryError(JNIEnv* env) noexcept;

// Raises the exception class that belongs to the code of a failed open.
void throwOpenError(JNIEnv* env, DWORD code, const wchar_t* message) noexcept;

// Raises an IOException with the bare system text of a code. ERROR_INVALID_NAME is shown as
// ERROR_ACCESS_DENIED, as the callers of the file-metadata methods expect it.
void throwSystemText(JNIEnv* env, DWORD code) noexcept;

}  // namespace winutil
