// As much of a Java environment as the library's listings need. It reads every text and array that it is
// given, to the last element; nobody asks what they add up to.
#pragma once

#include <jni.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace fuzz {

class Java {
public:
    Java();
    Java(const Java&) = delete;
    Java& operator=(const Java&) = delete;
    // Every local reference must have been deleted.
    ~Java();

    JNIEnv* env() { return &environment_; }
    jobject collector();

private:
    struct Functions;
    // What a reference stands for: elements that can still be written, or nothing.
    struct Object {
        std::vector<std::byte> bytes;
    };
    struct Environment : JNIEnv {
        Java* java;
    };

    static Java& of(JNIEnv* env) { return *static_cast<Environment*>(env)->java; }
    template <class Reference = jobject>
    Reference make(std::span<const std::byte> bytes = {});
    void add(std::span<const std::byte> bytes);
    void addArguments(const char* signature, va_list& arguments);

    JNINativeInterface_ table_ = {};
    Environment environment_;
    std::size_t references_ = 0;
    std::uint64_t digest_ = 0xCBF29CE484222325;
};

}  // namespace fuzz
