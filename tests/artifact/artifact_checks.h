// What is wrong with a built DLL; each check answers its findings, and none when all is well.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "pe_image.h"

namespace testbed {

// The exported names of the native methods that a generated JNI header declares.
std::set<std::string> nativesOf(const std::string& header);

// Exports that are no native method, or are no function of this DLL.
std::vector<std::string> foreignExports(const PeImage& image, const std::set<std::string>& natives);
std::vector<std::string> missingExports(const PeImage& image, const std::set<std::string>& natives);

// The modules that the image needs, delayed ones included, in lower case.
std::set<std::string> importedModules(const PeImage& image);
// Those that do not come with Windows.
std::vector<std::string> foreignModules(const std::set<std::string>& modules);

// Machine type, address space layout, protection of data and code, symbols left behind.
std::vector<std::string> weaknesses(const PeImage& image);

}  // namespace testbed
