// Where the library calls the system.
#pragma once

#include <windows.h>

#include <map>
#include <string>

#include "pe_image.h"

namespace testbed {

// The places behind direct calls of imported functions, as offsets in the image, with the functions' names.
// A call through a register, where one function is called several times in a row, is not among them.
std::map<DWORD, std::string> callSites(const PeImage& image);

// Functions with one call that no native method comes to, and why.
const std::map<std::string, std::string>& unreachableCalls();

}  // namespace testbed
