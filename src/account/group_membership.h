#pragma once

#include <jni.h>
#include <windows.h>

#include <string_view>

namespace winutil::account {

// What checkGroupMembership answers for a group that the directory does not know: no failure value.
inline constexpr HRESULT groupUnknown = 0x8FFFFFF;

// Asks the directory whether a user is a member of a group, directly or by way of other groups. S_OK when he
// is, groupUnknown, or a failure value: E_FAIL when he is not, the failing call's own when it cannot be told.
HRESULT checkGroupMembership(const wchar_t* ldapPath, const wchar_t* user,
                             std::wstring_view groupName) noexcept;

// Returns a new list, of the class of `groups`, with those of its elements, nulls among them, for which the
// membership of the user that the thread acts as was not established. Null when that class lacks a method or
// the constructor, and behind an exception from Java.
jobject groupsWithoutMembership(JNIEnv* env, jobject groups) noexcept;

}  // namespace winutil::account
