#pragma once

#include <jni.h>

#include <utility>

namespace winutil {

// Owns a local reference and deletes it, so that long listings do not exhaust the local-reference table.
template <class T = jobject>
class LocalRef {
public:
    LocalRef() noexcept = default;
    LocalRef(JNIEnv* env, T reference) noexcept : env_(env), reference_(reference) {}
    LocalRef(LocalRef&& other) noexcept : env_(other.env_), reference_(other.release()) {}
    LocalRef& operator=(LocalRef&& other) noexcept {
        reset();
        env_ = other.env_;
        reference_ = other.release();
        return *this;
    }
    LocalRef(const LocalRef&) = delete;
    LocalRef& operator=(const LocalRef&) = delete;
    ~LocalRef() { reset(); }

    explicit operator bool() const noexcept { return reference_ != nullptr; }
    T get() const noexcept { return reference_; }

    // Hands the reference to the caller, for the value that a native method returns.
    T release() noexcept { return std::exchange(reference_, nullptr); }

private:
    void reset() noexcept {
        if (T old = release()) {
            env_->DeleteLocalRef(old);
        }
    }

    JNIEnv* env_ = nullptr;
    T reference_ = nullptr;
};

// Returns whether a Java exception is pending. Every call into Java is followed by this.
inline bool exceptionPending(JNIEnv* env) noexcept {
    return static_cast<bool>(LocalRef<jthrowable>(env, env->ExceptionOccurred()));
}

}  // namespace winutil
