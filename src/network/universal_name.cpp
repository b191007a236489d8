#include "network/universal_name.h"

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winnetwk.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "bridge/system_version.h"
#include "network/buffer_text.h"

namespace winutil::network {

namespace {

constexpr DWORD firstBufferSize = 4096;  // bytes

WideString copyUniversalName(std::span<const std::byte> buffer) noexcept {
    const wchar_t* name = reinterpret_cast<const REMOTE_NAME_INFOW*>(buffer.data())->lpUniversalName;
    if (name == nullptr) {
        return {};
    }
    const std::wstring_view text = textIn(buffer, name, SIZE_MAX);
    return copyText(text.data(), text.size());
}

// The second look, with as many bytes as the first asked for.
WideString readLongName(const wchar_t* path, DWORD size) noexcept {
    const std::size_t bufferSize = std::max<std::size_t>(size, sizeof(REMOTE_NAME_INFOW));
    const HeapMemory<std::byte> buffer = allocateZeroed<std::byte>(bufferSize);
    if (!buffer || WNetGetUniversalNameW(path, REMOTE_NAME_INFO_LEVEL, buffer.get(), &size) != NO_ERROR) {
        return {};
    }
    return copyUniversalName({buffer.get(), bufferSize});
}

}  // namespace

WideString universalNameOf(const wchar_t* path) noexcept {
    OSVERSIONINFOA version;
    if (!readSystemVersion(version) || version.dwPlatformId != VER_PLATFORM_WIN32_NT) {
        return {};
    }
    alignas(REMOTE_NAME_INFOW) std::byte buffer[firstBufferSize] = {};
    DWORD size = firstBufferSize;
    switch (WNetGetUniversalNameW(path, REMOTE_NAME_INFO_LEVEL, buffer, &size)) {
        case NO_ERROR:
            return copyUniversalName(buffer);
        case ERROR_MORE_DATA:
            return readLongName(path, size);
        default:
            return {};
    }
}

}  // namespace winutil::network
