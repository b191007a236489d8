// Where threads stand, as "module+offset" lines that addr2line understands.
#pragma once

#include <windows.h>

#include <string>

namespace testbed {

std::string placeName(const void* address);

// The stack of the thread whose registers these are.
std::string stackOf(CONTEXT context);

// The stacks of all threads of this process but the calling one.
std::string stacksOfOtherThreads();

}  // namespace testbed
