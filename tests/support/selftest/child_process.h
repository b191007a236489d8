// Runs the violations, which are a program of their own because they fail, hang and crash.
#pragma once

#include <windows.h>

#include <string>

namespace testbed {

struct ChildResult {
    DWORD exitCode;
    std::string output;  // of both streams
};

// Runs those that the filter names. Further arguments follow, each with a space before it.
ChildResult runViolations(const std::string& filter, const std::string& arguments = "");

}  // namespace testbed
