#pragma once

namespace winutil::host {

// Writes an entry to the application event log: a warning for kind 1, an error for 2, information for any
// other. A failure is printed.
void writeEvent(const wchar_t* source, const wchar_t* message, int kind, bool alternativeEvent) noexcept;

}  // namespace winutil::host
