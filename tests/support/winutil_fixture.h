// What tests of WinUtil64.dll derive from: the shipped DLL with everything around it under control.
#pragma once

#include <windows.h>

#include <jni.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "fake_java.h"
#include "guard_pages.h"
#include "native_call.h"
#include "temp_folder.h"
#include "tested_library.h"
#include "text.h"
#include "watchdog.h"

#include "com_qarvo_kel_util_WindowsUtil.h"

namespace testbed {

// The path of the DLL under test: the one that was built with this program, unless WINUTIL_LIBRARY names
// another.
std::wstring libraryFile();

// Another copy of the DLL, loaded by the test itself, under slots and a ledger of its own. At the end it is
// unloaded, and a ledger that is not as declared fails the test.
class FreshLibrary : public LibraryUnderTest {
public:
    FreshLibrary(const TempFolder& folder, const std::wstring& name);
    ~FreshLibrary();
};

class WinUtilTest : public ::testing::Test {
protected:
    WinUtilTest();
    // Checks what no test may leave behind: anything in the ledger that was not declared, an impersonation, a
    // function still replaced. (FakeJava checks references, pins and the pending exception.)
    ~WinUtilTest() override;

    // The DLL, loaded once for the whole program.
    static LibraryUnderTest& library();
    static SystemCalls& system() { return library().system(); }
    static Ledger& ledger() { return library().ledger(); }

    // A native method by its exported name, called from a Java environment; the macros NATIVE and NATIVE_ON
    // are shorter.
    template <class Function>
    static NativeMethod<Function> native(FakeJava& jvm, const char* name) {
        auto* function = library().exported<Function>(name);
        if (function == nullptr) {
            throw std::runtime_error("the library does not export " + std::string(name));
        }
        return NativeMethod<Function>(jvm, name, function);
    }

    template <class Function>
    NativeMethod<Function> native(const char* name) {
        return native<Function>(java, name);
    }

    // The folder of this test, made when it is first asked for.
    const TempFolder& folder();

    FakeJava java;

private:
    std::optional<TempFolder> folder_;
};

// The exception that a test expects: EXPECT_EQ(java.takeException(), ioException(errorMessage(L"ReadFile",
// 6))).
Thrown ioException(std::wstring message);
Thrown fileNotFound(std::wstring message);
Thrown nothingThrown();

}  // namespace testbed

// NATIVE(exists)(path) calls the native method; an overloaded one has its long name, as in
// NATIVE(read__J_3BII). NATIVE_ON(jvm, exists)(path) calls it on another thread, from that thread's own
// FakeJava.
#define NATIVE(method) NATIVE_ON(java, method)
#define NATIVE_ON(jvm, method)                                      \
    native<decltype(Java_com_qarvo_kel_util_WindowsUtil_##method)>( \
        jvm, "Java_com_qarvo_kel_util_WindowsUtil_" #method)

// REPLACE(CreateFileW, [&](LPCWSTR path, auto... rest) { ... }) puts the body in the function's place until
// its result goes out of scope; REAL(CreateFileW) is the function of the system.
#define REPLACE(function, ...) system().replace<decltype(::function)>(#function, __VA_ARGS__)
#define REAL(function) system().real<decltype(::function)>(#function)
