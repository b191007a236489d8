#pragma once

#include <jni.h>

#include <cstddef>
#include <span>

namespace winutil {

// The elements of a Java byte array for the length of a call, given back with JNI_ABORT (nothing is copied
// back) or with 0 (the array receives what was written).
class ByteElements {
public:
    ByteElements(JNIEnv* env, jbyteArray array, jint releaseMode) noexcept
        : env_(env),
          array_(array),
          releaseMode_(releaseMode),
          elements_(env->GetByteArrayElements(array, nullptr)) {}
    ByteElements(const ByteElements&) = delete;
    ByteElements& operator=(const ByteElements&) = delete;
    ~ByteElements() { release(); }

    // False when the JVM had no memory for them, of which it leaves no word.
    explicit operator bool() const noexcept { return elements_ != nullptr; }
    jbyte* get() const noexcept { return elements_; }

    // Gives the elements back before the end of the scope: no exception may be raised while they are held.
    void release() noexcept {
        if (elements_ != nullptr) {
            env_->ReleaseByteArrayElements(array_, elements_, releaseMode_);
            elements_ = nullptr;
        }
    }

private:
    JNIEnv* env_;
    jbyteArray array_;
    jint releaseMode_;
    jbyte* elements_;
};

// Returns a new Java byte array with a copy of `bytes`, or null with an OutOfMemoryError pending.
inline jbyteArray newByteArray(JNIEnv* env, std::span<const std::byte> bytes) noexcept {
    const auto length = static_cast<jsize>(bytes.size());
    const jbyteArray array = env->NewByteArray(length);
    if (array != nullptr) {
        env->SetByteArrayRegion(array, 0, length, reinterpret_cast<const jbyte*>(bytes.data()));
    }
    return array;
}

}  // namespace winutil
