// Shell shortcuts: link files that the shell, not the file system, follows.
#pragma once

#include <windows.h>

#include <cstddef>
#include <optional>

namespace winutil::filesystem {

// Returns whether the shell takes a path for a shortcut; never for a junction or a symbolic link. None when
// memory is exhausted.
std::optional<bool> isShortcut(const wchar_t* path) noexcept;

// Characters of a shortcut's target, the terminator included.
inline constexpr std::size_t shortcutTargetCapacity = 4096;
using ShortcutTarget = wchar_t[shortcutTargetCapacity];

// Reads what a shortcut points to: without user interface, search or tracking, and without rewriting it. The
// target is empty when it cannot be resolved.
void readShortcutTarget(const wchar_t* path, ShortcutTarget& target) noexcept;

}  // namespace winutil::filesystem
