// The functions of the system that take or give back something, and what keeps the ledger for each.
#pragma once

#include <string>
#include <vector>

namespace testbed {

// What a trampoline leads to for such a function; null for every other one.
const void* trackedFunction(const std::string& name);

// Their names.
std::vector<std::string> trackedFunctions();

}  // namespace testbed
