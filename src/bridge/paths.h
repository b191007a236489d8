// Path forms, and the workers that make a call with the path as given and, when that fails, once more with
// its extended-length form. None of them raises or writes a message; the thread's last error is that of the
// last attempt.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

#include "bridge/owners.h"

namespace winutil {

// Tests on the text, nothing more: "\\?\C:\x" begins with both.
bool beginsWith(std::wstring_view path, std::wstring_view prefix) noexcept;
bool hasLongPrefix(std::wstring_view path) noexcept;        // "\\?\"
bool beginsAsNetworkPath(std::wstring_view path) noexcept;  // "\\"

// Returns the extended-length form of a path with backslashes only, with room for `extra` more characters;
// paths that begin with "\\?\" or "\\.\" are copied unchanged. None when memory is exhausted. A relative path
// is not made absolute: the system rejects its long form.
WideString toLongPath(const wchar_t* path, std::size_t extra = 0) noexcept;

// Java time: milliseconds since 1970-01-01 UTC. Division truncates toward zero before the epochs are moved.
std::int64_t toJavaTime(const FILETIME& time) noexcept;
FILETIME fromJavaTime(std::int64_t milliseconds) noexcept;

// Reads attributes, size and times of a path, as given only or with the retry.
bool readAttributeData(const wchar_t* path, void* data) noexcept;
bool readAttributeDataWithRetry(const wchar_t* path, WIN32_FILE_ATTRIBUTE_DATA& data) noexcept;

// Returns a path whose attributes can be read as it is, and any other in its long form, which `longForm` then
// owns; null when memory is exhausted.
const wchar_t* readablePath(const wchar_t* path, WideString& longForm) noexcept;

// Makes the last directory of a path.
bool makeDirectory(const wchar_t* path) noexcept;

// Sets the last-write time of a file, a directory or a link itself.
bool setLastModifiedTime(const wchar_t* path, std::int64_t milliseconds) noexcept;

// Returns the last-write time, or 0 when it cannot be read.
std::int64_t lastModifiedTime(const wchar_t* path) noexcept;

// Clears a file's attributes and deletes it. The attributes stay cleared when the delete fails.
bool deleteFile(const wchar_t* path) noexcept;

// Returns whether the path names a directory; false when its attributes cannot be read.
bool isDirectoryPath(const wchar_t* path) noexcept;

bool pathExists(const wchar_t* path) noexcept;

// Moves a file or directory. The retry takes the long form of both names, unless both are in long form
// already.
bool renamePath(const wchar_t* from, const wchar_t* to) noexcept;

// A text that a call wrote, or none; `length` counts its characters.
struct CallText {
    WideString text;
    std::size_t length = 0;
};

// Returns the long form of each 8.3 name in a path; none when there is none to be had.
CallText expandShortNames(const wchar_t* path) noexcept;

// Returns a text with its %variables% replaced, undefined ones left as written; none when the system fails,
// with the code in the last error.
CallText expandEnvironmentVariables(const wchar_t* text) noexcept;

}  // namespace winutil
