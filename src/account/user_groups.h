#pragma once

#include <jni.h>

namespace winutil::account {

// Adds the names of a user's groups to a Java collection: the global ones, then the local ones, those behind
// a nested membership included. An empty `server` stands for this computer, which is also asked when
// the server cannot be reached. Nothing is added where a call fails or the collection has no `add`; an
// exception from Java ends it at once.
void addUserGroups(JNIEnv* env, const wchar_t* server, const wchar_t* user, jobject collection) noexcept;

}  // namespace winutil::account
