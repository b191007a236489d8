// Calls of native methods from tests, with plain C++ values in and out.
#pragma once

#include <jni.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "fake_java.h"

namespace testbed {

namespace detail {

template <class T>
constexpr bool isReference = std::is_convertible_v<T, jobject>;

// A test's value as the parameter type that the native method declares.
template <class Parameter, class T>
Parameter toParameter(FakeJava& java, const T& value) {
    if constexpr (!isReference<Parameter>) {
        return static_cast<Parameter>(value);
    } else if constexpr (std::is_same_v<T, JavaObject>) {
        return static_cast<Parameter>(java.reference(value));
    } else if constexpr (std::is_convertible_v<T, Parameter>) {
        return value;
    } else {
        return static_cast<Parameter>(java.reference(java.string(value)));
    }
}

}  // namespace detail

template <class Function>
class NativeMethod;

// One native method, called as Java would call it. Texts become Java strings, a JavaObject a reference to it,
// nullptr null; a boolean result comes back as bool, an object as JavaObject.
template <class R, class Self, class... Parameters>
class NativeMethod<R(JNIEnv*, Self, Parameters...)> {
public:
    using Function = R(JNICALL*)(JNIEnv*, Self, Parameters...);

    NativeMethod(FakeJava& java, std::string name, Function function)
        : java_(java), name_(std::move(name)), function_(function) {}

    template <class... Args>
    auto operator()(const Args&... args) const {
        static_assert(sizeof...(Args) == sizeof...(Parameters), "the native method has other parameters");
        java_.enterNative(name_);
        const Self self = static_cast<Self>(java_.reference(java_.self()));
        if constexpr (std::is_void_v<R>) {
            function_(java_.env(), self, detail::toParameter<Parameters>(java_, args)...);
            java_.leaveNative(nullptr);
        } else {
            const R result = function_(java_.env(), self, detail::toParameter<Parameters>(java_, args)...);
            if constexpr (detail::isReference<R>) {
                return java_.leaveNative(result);
            } else {
                java_.leaveNative(nullptr);
                return plain(result);
            }
        }
    }

private:
    template <class Result>
    static auto plain(Result result) {
        if constexpr (std::is_same_v<Result, jboolean>) {
            EXPECT_LE(result, JNI_TRUE) << "a boolean that is neither true nor false";
            return result != JNI_FALSE;
        } else {
            return result;
        }
    }

    FakeJava& java_;
    std::string name_;
    Function function_;
};

}  // namespace testbed
