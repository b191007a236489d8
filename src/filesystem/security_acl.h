#pragma once

#include <windows.h>

namespace winutil::filesystem {

// Adds an entry to the access rights (DACL) of a file or directory, inherited by everything below it. Every
// failure is silent.
void setFileAcl(wchar_t* path, wchar_t* trustee, DWORD permissions, DWORD mode) noexcept;

}  // namespace winutil::filesystem
