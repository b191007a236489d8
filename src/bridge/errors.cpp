#include "bridge/errors.h"

#include "bridge/java_classes.h"
#include "bridge/java_strings.h"

namespace winutil {

namespace {

void throwJavaException(JNIEnv* env, const char* className, const wchar_t* message) noexcept {
    if (env == nullptr || exceptionPending(env)) {
        return;
    }
    const LocalRef text(env, newJavaString(env, message));
    if (!text) {
        return;
    }
    const LocalRef type(env, env->FindClass(className));
    if (!type) {
        return;
    }
    const jmethodID constructor = findMethod(env, type.get(), java_method::newException);
    if (constructor == nullptr) {
        return;
    }
    const LocalRef exception(env, env->NewObject(type.get(), constructor, text.get()));
    if (exception) {
        env->Throw(static_cast<jthrowable>(exception.get()));
    }
}

}  // namespace

LocalMemory<wchar_t> findSystemText(DWORD code) noexcept {
    LocalMemory<wchar_t> text;
    constexpr DWORD flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    static_assert(flags == 0x1300);
    FormatMessageW(flags, nullptr, code, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                   reinterpret_cast<wchar_t*>(text.receive()), 0, nullptr);
    return text;
}

void formatWin32Error(const wchar_t* tag, DWORD code, wchar_t* buffer, std::size_t capacity) noexcept {
    const SystemText text(code);
    const auto number = static_cast<int>(code);
    if (_snwprintf_s(buffer, capacity, _TRUNCATE, L"[%s] (%d) %s", tag, number, text.get()) < 0) {
        _snwprintf_s(buffer, capacity, _TRUNCATE, L"[%s] (%d) %s", tag, number, noSystemText);
    }
}

void formatWin32Error(const wchar_t* message, const wchar_t* tag, DWORD code, wchar_t* buffer,
                      std::size_t capacity) noexcept {
    const SystemText text(code);
    const auto number = static_cast<int>(code);
    if (_snwprintf_s(buffer, capacity, _TRUNCATE, L"%s %s (%d) %s", message, tag, number, text.get()) < 0) {
        _snwprintf_s(buffer, capacity, _TRUNCATE, L"%s %s (%d) %s", message, tag, number, noSystemText);
    }
}

void throwIOException(JNIEnv* env, const wchar_t* message) noexcept {
    throwJavaException(env, java_class::ioException, message);
}

void throwFileNotFoundException(JNIEnv* env, const wchar_t* message) noexcept {
    throwJavaException(env, java_class::fileNotFoundException, message);
}

void throwSharingViolationException(JNIEnv* env, const wchar_t* message) noexcept {
    throwJavaException(env, java_class::sharingViolationException, message);
}

void throwDiskFullException(JNIEnv* env, const wchar_t* message) noexcept {
    throwJavaException(env, java_class::diskFullException, message);
}

void throwSecurityException(JNIEnv* env, const wchar_t* message) noexcept {
    throwJavaException(env, java_class::securityException, message);
}

void throwRuntimeException(JNIEnv* env, const wchar_t* message) noexcept {
    throwJavaException(env, java_class::runtimeException, message);
}

void throwAccountRestrictionException(JNIEnv* env, const wchar_t* message) noexcept {
    throwJavaException(env, java_class::accountRestrictionException, message);
}

void throwWin32Error(JNIEnv* env, const wchar_t* tag, DWORD code) noexcept {
    ErrorBuffer errorBuffer;
    errorBuffer.format(tag, code);
    throwIOException(env, errorBuffer.text());
}

void throwOutOfMemoryError(JNIEnv* env) noexcept {
    throwJavaException(env, java_class::outOfMemoryError, SystemText(ERROR_NOT_ENOUGH_MEMORY).get());
}

void throwOpenError(JNIEnv* env, DWORD code, const wchar_t* message) noexcept {
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_CANT_ACCESS_FILE:
            return throwFileNotFoundException(env, message);
        case ERROR_DISK_FULL:
            return throwDiskFullException(env, message);
        case ERROR_SHARING_VIOLATION:
            return throwSharingViolationException(env, message);
        default:
            return throwIOException(env, message);
    }
}

void throwSystemText(JNIEnv* env, DWORD code) noexcept {
    const SystemText text(code == ERROR_INVALID_NAME ? ERROR_ACCESS_DENIED : code);
    throwIOException(env, text.get());
}

}  // namespace winutil
