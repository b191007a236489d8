#pragma once

#include <windows.h>

#include <optional>

#include "bridge/errors.h"

namespace winutil::filesystem {

// Sets the attribute word of a file or directory; one with the compressed or the encrypted bit compresses or
// encrypts it. INVALID_FILE_ATTRIBUTES changes nothing and gives false. Returns whether the word was set, or
// none when memory is exhausted. A failed compression, which sets nothing, and a failed encryption leave
// their message in `errorBuffer`.
std::optional<bool> setFileAttr(const wchar_t* path, DWORD attributes, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::filesystem
