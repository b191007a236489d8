#include "account/system_message.h"

#include <cstdio>
#include <cwchar>

#include "bridge/errors.h"

namespace winutil::account {

void appendSystemMessage(std::span<wchar_t> message, const wchar_t* tag, DWORD code) noexcept {
    const SystemText text(code);
    const std::size_t length = std::wcslen(message.data());
    _snwprintf_s(message.data() + length, message.size() - length, _TRUNCATE, L" %s (%d) %s", tag,
                 static_cast<int>(code), text.get());
}

}  // namespace winutil::account
