// Environment variables and special folders.
#pragma once

#include <windows.h>

#include <optional>

#include "bridge/text.h"

namespace winutil::host {

// Returns a variable from the C runtime's copy of the environment, none when it is not set; no answer when
// memory is exhausted.
std::optional<WideString> environmentVariable(const wchar_t* name) noexcept;

// Sets a variable for the processes that this one starts. Returns the code of a failure, which can be 0.
std::optional<DWORD> setEnvironmentVariable(const wchar_t* name, const wchar_t* value) noexcept;

// Characters of a special folder's path, the terminator included.
inline constexpr std::size_t folderPathCapacity = 512;
using FolderPath = wchar_t[folderPathCapacity];

// Writes the path of a special folder, by its CSIDL value. Returns false when there is no such folder.
bool specialFolder(int folderId, FolderPath& path) noexcept;

}  // namespace winutil::host
