// Reparse points as link kinds and target texts.
#pragma once

#include <windows.h>

#include <optional>

#include "filesystem/reparse_data.h"

namespace winutil::filesystem {

// Reads the kind and the target of a path whose attribute word is `attributes`; linkKindNone and an empty
// target when it is no reparse point or cannot be read. None when memory is exhausted.
std::optional<DWORD> readReparseKind(const wchar_t* path, LinkTarget& target, DWORD attributes) noexcept;

}  // namespace winutil::filesystem
