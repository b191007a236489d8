// Windows libraries: files that collect several folders.
#pragma once

#include <jni.h>

#include <string_view>

#include "filesystem/icon_image.h"

namespace winutil::filesystem {

// Returns whether a path has the name of a library file.
bool isLibrary(std::wstring_view path) noexcept;

// Adds the folders of a library to a Java collection; none when the library cannot be read. An exception from
// Java ends the listing at once.
void listLibraryFolders(JNIEnv* env, const wchar_t* path, jobject collection) noexcept;

// Returns the icon of a library as an image file; an empty one when there is none to be had.
ImageFile libraryIcon(const wchar_t* path) noexcept;

}  // namespace winutil::filesystem
