#pragma once

#include <optional>

#include "bridge/errors.h"
#include "bridge/text.h"

namespace winutil::filesystem {

inline constexpr wchar_t createDirTag[] = L"createDir";

// Makes the last directory of a path. Returns false when it is there already, with nothing in `errorBuffer`;
// any other failure is left there. On a network path whose parent is missing it waits two seconds for the
// directory to appear.
bool makeDirectory(const wchar_t* path, ErrorBuffer& errorBuffer) noexcept;

// Returns a failure with the path behind it, as long as that makes it: "message, 'path'". None when memory is
// exhausted.
WideString nameFailure(const ErrorBuffer& errorBuffer, const wchar_t* path) noexcept;

// Deletes a file that exists; never a directory. None when memory is exhausted.
std::optional<bool> deleteExistingFile(const wchar_t* path) noexcept;

}  // namespace winutil::filesystem
