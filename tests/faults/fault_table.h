// How each function that the library calls fails, as its documentation says.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "system_calls.h"

namespace testbed {

// A function of the system, or a method of a COM object.
struct FailingFunction {
    const char* name;
    std::vector<Fault> faults;  // the typical ways; one of them for each code that is worth telling apart
};

// Null for a function that is not in the table.
const FailingFunction* failingFunction(const std::string& name);

// Whether the library makes the call once more, with the long form of the path, before it takes a failure for
// one.
bool isTriedAgain(const std::string& name);

// What cannot fail, or fails with nothing that a caller could do or see: why. Null for what can.
const char* reasonNotToFail(const std::string& name);

// The same of the Java environment: the exception that is pending behind a failure, an empty one for none,
// and null for a function that cannot fail.
const char* exceptionBehindFailure(const std::string& javaFunction);
bool isKnownJavaFunction(const std::string& javaFunction);

}  // namespace testbed
