#pragma once

#include <jni.h>
#include <windows.h>

namespace winutil::filesystem {

// Sets the attribute word of a file or directory; one with the compressed or the encrypted bit compresses or
// encrypts it. INVALID_FILE_ATTRIBUTES changes nothing and gives false. Returns whether the word was set. A
// failed compression, which sets nothing, and a failed encryption leave an IOException pending.
bool setFileAttr(JNIEnv* env, const wchar_t* path, DWORD attributes) noexcept;

}  // namespace winutil::filesystem
