// Texts of the tests: conversions, and the system's own messages.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace testbed {

std::string hex(std::uint64_t value);

std::string toUtf8(std::wstring_view text);
std::wstring toWide(std::string_view utf8);

// The system's message for an error code, line end included; empty when it has none.
std::wstring systemText(DWORD code);

// The form of most exception messages: "[tag] (code) text of the system".
std::wstring errorMessage(std::wstring_view tag, DWORD code);

}  // namespace testbed
