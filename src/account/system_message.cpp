#include "account/system_message.h"

#include <cstddef>
#include <cstdio>
#include <cwchar>

namespace winutil::account {

namespace {

constexpr std::size_t messageCapacity = 256;  // characters, the terminator included

}  // namespace

void appendSystemMessage(ErrorBuffer& errorBuffer, const wchar_t* tag, DWORD code) noexcept {
    const SystemText text(code);
    const std::size_t length = std::wcslen(errorBuffer.text());
    _snwprintf_s(errorBuffer.text() + length, ErrorBuffer::capacity - length, _TRUNCATE, L" %s (%d) %s", tag,
                 static_cast<int>(code), text.get());
}

void cutMessage(ErrorBuffer& errorBuffer) noexcept {
    errorBuffer.text()[messageCapacity - 1] = L'\0';
}

}  // namespace winutil::account
