// Little native methods, written in the tests, on the in-memory Java environment.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fake_java.h"
#include "native_call.h"
#include "selftest_library.h"

namespace testbed {

class FakeJavaTest : public ::testing::Test {
protected:
    // Runs the body as a native method with one object for its argument.
    void asNative(void (*body)(JNIEnv*, jobject, jobject), const JavaObject& argument = {}) {
        NativeMethod<void(JNIEnv*, jobject, jobject)>(java, "aNative", body)(argument);
    }

    // The complaints about such a method.
    std::vector<std::string> complaintsAbout(void (*body)(JNIEnv*, jobject, jobject),
                                             const JavaObject& argument = {}) {
        return failuresOf([&] { asNative(body, argument); });
    }

    FakeJava java;
};

}  // namespace testbed
