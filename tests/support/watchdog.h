// Ends the test program when a test hangs or crashes: prints where it stands, and counts what did not run as
// failed.
#pragma once

#include <chrono>

namespace testbed {

constexpr std::chrono::seconds defaultTimeLimit{60};

// With which a program ends that crashed or hung.
constexpr int exitCodeOfCrash = 3;
constexpr int exitCodeOfHang = 4;

// To be called once, after the test framework has read its arguments.
void installWatchdog();

// What a test of many cases is at: named beside the test when it hangs or crashes. Null names nothing.
void nameCase(const char* name);

// Lets the running test take that long, counted from now.
void allowTime(std::chrono::seconds limit);

}  // namespace testbed
