#include "account/sids.h"

#include <cstddef>
#include <cstdio>

namespace winutil::account {

namespace {

// What the text of a SID takes: its beginning, then ten digits and a hyphen for each sub-authority.
constexpr DWORD textSizeOfHead = 28;
constexpr DWORD textSizeOfSubAuthority = 12;

}  // namespace

bool sidToText(PSID sid, char* buffer, DWORD& size) noexcept {
    if (!IsValidSid(sid)) {
        return false;
    }
    const auto* parts = static_cast<const SID*>(sid);
    const DWORD needed = textSizeOfHead + textSizeOfSubAuthority * parts->SubAuthorityCount;
    if (size < needed) {
        size = needed;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return false;
    }
    // Required: the revision is not read from the SID, because callers compare texts, and those all say 1.
    std::size_t length = static_cast<std::size_t>(
        _snprintf_s(buffer, size, _TRUNCATE, "S-%lu-", static_cast<unsigned long>(SID_REVISION)));
    const BYTE(&authority)[6] = parts->IdentifierAuthority.Value;
    const auto append = [&](const char* format, auto... values) noexcept {
        length += static_cast<std::size_t>(
            _snprintf_s(buffer + length, size - length, _TRUNCATE, format, values...));
    };
    if (authority[0] != 0 || authority[1] != 0) {
        append("0x%02hx%02hx%02hx%02hx%02hx%02hx", authority[0], authority[1], authority[2], authority[3],
               authority[4], authority[5]);
    } else {
        append("%lu", static_cast<unsigned long>(authority[2]) << 24 |
                          static_cast<unsigned long>(authority[3]) << 16 |
                          static_cast<unsigned long>(authority[4]) << 8 | authority[5]);
    }
    for (BYTE i = 0; i < parts->SubAuthorityCount; ++i) {
        append("-%lu", static_cast<unsigned long>(parts->SubAuthority[i]));
    }
    return true;
}

}  // namespace winutil::account
