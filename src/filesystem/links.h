// Junctions and symbolic links: making them, and asking what a path is.
#pragma once

#include <windows.h>

#include <optional>

#include "filesystem/reparse_points.h"

namespace winutil::filesystem {

// Makes a directory, by the path as given only, and turns it into a junction. Returns false with the reason
// in the thread's last error; a directory that was made stays, empty.
bool createJunctionPoint(const wchar_t* link, const wchar_t* target) noexcept;

// Make a symbolic link with the target as given, or return false with the reason in the thread's last error.
bool createDirectorySymbolicLink(const wchar_t* link, const wchar_t* target) noexcept;
bool createFileSymbolicLink(const wchar_t* link, const wchar_t* target) noexcept;

// The three questions have no answer where memory is exhausted.

// Returns the raw kind of a path, as readReparseKind does, and its target.
std::optional<DWORD> linkType(const wchar_t* path, LinkTarget& target) noexcept;

// Returns whether a path is a junction or a symbolic link.
std::optional<bool> isLink(const wchar_t* path) noexcept;

// Returns whether a path is a junction; one to a volume name counts, though a file record shows that as a
// plain directory.
std::optional<bool> isDirectoryJunction(const wchar_t* path) noexcept;

}  // namespace winutil::filesystem
