// Root keys by name, and opening and making the keys below them.
#pragma once

#include <windows.h>

#include <string_view>

#include "bridge/owners.h"

namespace winutil::registry {

// Returns the predefined key of a root name, or null for any other name. Narrow names are compared exactly,
// wide ones without regard to case.
HKEY rootKeyFromName(std::string_view name) noexcept;
HKEY rootKeyFromName(const wchar_t* name) noexcept;

// Opens a key for reading, in the 64-bit view where there are two; none when there is no root or it does not
// open. An empty path opens the root itself.
RegistryKey openForReading(HKEY root, const char* keyPath) noexcept;

// Makes a key, and those above it that are missing, and closes it. Returns whether it is there now.
bool createKey(HKEY root, const char* keyPath) noexcept;
bool createKey(HKEY root, const wchar_t* keyPath) noexcept;

// The same below a root that is given by its name.
bool makeKey(const wchar_t* rootName, const wchar_t* keyPath) noexcept;

}  // namespace winutil::registry
