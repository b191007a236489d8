#pragma once

namespace winutil::registry {

// Attach a hive file to a root as the key `keyName`, and detach it again. They take the backup and the
// restore privilege, which the caller has switched on. False for an unknown root, too.
bool loadHive(const wchar_t* rootName, const wchar_t* keyName, const wchar_t* file) noexcept;
bool unloadHive(const wchar_t* rootName, const wchar_t* keyName) noexcept;

}  // namespace winutil::registry
