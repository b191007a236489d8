#pragma once

#include <jni.h>

#include <cstddef>
#include <cstdlib>

namespace winutil {

// Carries failures on single items to the Java listener of one native call, which goes on with its work. Made
// with `new` when the call begins and deleted before it returns; never shared between threads.
class CExCallback {
public:
    CExCallback(JNIEnv* env, jobject caller, jobject listener) noexcept
        : env_(env), caller_(caller), listener_(listener) {}
    CExCallback(const CExCallback&) = delete;
    CExCallback& operator=(const CExCallback&) = delete;
    virtual ~CExCallback() = default;

    // Straight from malloc: the run time's own `new` throws inside, and would bring the whole unwinder into
    // the library. This one does not throw: without memory, `new CExCallback` is null.
    static void* operator new(std::size_t size) noexcept { return std::malloc(size); }
    static void operator delete(void* memory) noexcept { std::free(memory); }

    // Calls the listener's fireFileErrorEvent(path, message); does nothing without a listener. Returns false
    // when the listener has no such method: the JVM's NoSuchMethodError is left pending then, and whoever
    // goes on into Java takes it first. Any other exception that is pending is the listener's own, or there
    // was no memory for the texts.
    bool fireFileErrorEvent(const wchar_t* path, const wchar_t* message) noexcept;

private:
    JNIEnv* env_;
    [[maybe_unused]] jobject caller_;
    jobject listener_;
};

}  // namespace winutil
