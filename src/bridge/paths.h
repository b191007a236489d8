// Path forms, and the workers that make a call with the path as given and, when that fails, once more with
// its extended-length form. None of them raises or writes a message; the thread's last error is that of the
// last attempt. A worker whose answer could be mistaken for one gives none where memory is exhausted: what
// the long form would have answered is not known then.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string_view>

#include "bridge/text.h"

namespace winutil {

// Tests on the text, nothing more: "\\?\C:\x" begins with both.
bool beginsWith(std::wstring_view path, std::wstring_view prefix) noexcept;
bool hasLongPrefix(std::wstring_view path) noexcept;        // "\\?\"
bool beginsAsNetworkPath(std::wstring_view path) noexcept;  // "\\"

// Returns the extended-length form of a path with backslashes only, with room for `extra` more characters;
// paths that begin with "\\?\" or "\\.\" are copied unchanged. None, with ERROR_NOT_ENOUGH_MEMORY as the last
// error, when memory is exhausted. A relative path is not made absolute: the system rejects its long form.
WideString toLongPath(const wchar_t* path, std::size_t extra = 0) noexcept;

// Returns what `call` answers to a path as given or, when it fails, to its long form; none when memory is
// exhausted. The system never gets a null in place of a path, which some of its calls take for a wish.
template <class Call>
std::optional<bool> callWithRetry(const wchar_t* path, Call call) noexcept {
    if (call(path)) {
        return true;
    }
    const WideString longForm = toLongPath(path);
    if (!longForm) {
        return std::nullopt;
    }
    return call(longForm.get());
}

// Reads attributes, size and times of a path, as given only or with the retry.
bool readAttributeData(const wchar_t* path, void* data) noexcept;
std::optional<bool> readAttributeDataWithRetry(const wchar_t* path, WIN32_FILE_ATTRIBUTE_DATA& data) noexcept;

// Returns a path whose attributes can be read as it is, and any other in its long form, which `longForm` then
// owns; null when memory is exhausted.
const wchar_t* readablePath(const wchar_t* path, WideString& longForm) noexcept;

// Makes the last directory of a path.
bool makeDirectory(const wchar_t* path) noexcept;

// Sets the last-write time of a file, a directory or a link itself.
std::optional<bool> setLastModifiedTime(const wchar_t* path, std::int64_t milliseconds) noexcept;

// Returns the last-write time, or 0 when it cannot be read.
std::optional<std::int64_t> lastModifiedTime(const wchar_t* path) noexcept;

// Clears a file's attributes and deletes it. The attributes stay cleared when the delete fails.
std::optional<bool> deleteFile(const wchar_t* path) noexcept;

// Returns whether the path names a directory; false when its attributes cannot be read.
std::optional<bool> isDirectoryPath(const wchar_t* path) noexcept;

std::optional<bool> pathExists(const wchar_t* path) noexcept;

// Moves a file or directory. The retry takes the long form of both names, unless both are in long form
// already; without memory for them the first failure stands.
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
