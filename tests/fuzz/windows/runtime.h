// What Windows' C runtime declares and other systems' headers do not: included in front of every source.
#pragma once

#include <stddef.h>
#include <wchar.h>

inline constexpr size_t _TRUNCATE = static_cast<size_t>(-1);

extern "C" {
int _snprintf_s(char* buffer, size_t capacity, size_t count, const char* format, ...);
// %s is a wide text here, %hs a narrow one.
int _snwprintf_s(wchar_t* buffer, size_t capacity, size_t count, const wchar_t* format, ...);
int _stricmp(const char* left, const char* right);
int _strnicmp(const char* left, const char* right, size_t count);
int _wcsicmp(const wchar_t* left, const wchar_t* right);
int _wcsnicmp(const wchar_t* left, const wchar_t* right, size_t count);
int wcscpy_s(wchar_t* destination, size_t capacity, const wchar_t* source);
int wcscat_s(wchar_t* destination, size_t capacity, const wchar_t* source);
int wcsncpy_s(wchar_t* destination, size_t capacity, const wchar_t* source, size_t count);
}
