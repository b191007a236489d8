// Whether an account may read or write a file, by the file's security descriptor.
#pragma once

#include <jni.h>

#include "bridge/credentials.h"

namespace winutil::filesystem {

inline constexpr wchar_t checkAccessTag[] = L"CheckAccessToFile";

// Logs the account on and checks its right to read a file. Every no leaves an IOException pending. Once the
// logon succeeded the thread acts as the process itself afterwards; without a user nothing is done.
bool isAccessRead(JNIEnv* env, const wchar_t* path, const NarrowCredentials& account) noexcept;

// Checks the right to write a file of the account, or, without a user, of the one that the thread acts as.
// Every no leaves an IOException pending. The caller lets the thread act as the process itself afterwards.
bool isAccessWrite(JNIEnv* env, const wchar_t* path, const NarrowCredentials& account) noexcept;

}  // namespace winutil::filesystem
