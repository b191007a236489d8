// Runs tests of this same program in a process of their own, where they may fail, hang and crash.
#pragma once

#include <windows.h>

#include <string>

namespace testbed {

struct ChildResult {
    DWORD exitCode;
    std::string output;  // of both streams
};

// Runs the tests that the filter names, switched off or not. Further arguments follow, each with a space
// before it.
ChildResult runTests(const std::string& filter, const std::string& arguments = "");

}  // namespace testbed
