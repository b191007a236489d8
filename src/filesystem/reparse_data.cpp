#include "filesystem/reparse_data.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>

namespace winutil::filesystem {

namespace {

// The reparse data buffer, which the user-mode headers leave out: a header, then a path buffer of UTF-16
// units that the name offsets count from. Sizes and offsets are in bytes.
struct MountPointHeader {
    std::uint32_t tag;
    std::uint16_t dataLength;
    std::uint16_t reserved;
    std::uint16_t substituteNameOffset;
    std::uint16_t substituteNameLength;
    std::uint16_t printNameOffset;
    std::uint16_t printNameLength;
};
static_assert(sizeof(MountPointHeader) == 16);

constexpr std::size_t tagHeaderSize = 8;       // what every reparse point has
constexpr std::size_t symlinkHeaderSize = 20;  // the mount point's, and a word of flags

constexpr std::wstring_view ntNetworkPrefix = L"\\??\\UNC\\";
constexpr std::wstring_view ntVolumePrefix = L"\\??\\Volume";
constexpr std::wstring_view ntPrefix = L"\\??\\";

bool beginsWithIgnoringCase(std::wstring_view text, std::wstring_view prefix) noexcept {
    return text.size() >= prefix.size() && _wcsnicmp(text.data(), prefix.data(), prefix.size()) == 0;
}

// The substitute name within a path buffer. Where the zero-terminated text at the start of the buffer does
// not reach the end of the name, that text is taken instead.
std::wstring_view substituteName(std::wstring_view pathBuffer, const MountPointHeader& header) noexcept {
    const std::wstring_view text(pathBuffer.data(), wcsnlen(pathBuffer.data(), pathBuffer.size()));
    const std::size_t offset = header.substituteNameOffset / sizeof(wchar_t);
    const std::size_t length = header.substituteNameLength / sizeof(wchar_t);
    if (text.size() < offset + length) {
        return text;
    }
    return {text.data() + offset, length};
}

// Writes lead and rest into the target, or nothing when they do not fit.
void writeTarget(std::wstring_view lead, std::wstring_view rest, LinkTarget& target) noexcept {
    if (lead.size() + rest.size() >= linkTargetCapacity) {
        return;
    }
    wchar_t* end = std::copy(lead.begin(), lead.end(), target);
    end = std::copy(rest.begin(), rest.end(), end);
    *end = L'\0';
}

// Turns the name that the object manager knows into the path that a user knows.
void convertName(std::wstring_view name, LinkTarget& target) noexcept {
    const auto from = [name](std::size_t count) {
        return std::wstring_view(name.data() + count, name.size() - count);
    };
    if (beginsWithIgnoringCase(name, ntNetworkPrefix)) {
        writeTarget(L"\\\\", from(ntNetworkPrefix.size()), target);
    } else if (beginsWithIgnoringCase(name, ntVolumePrefix)) {
        writeTarget(L"\\\\?\\", from(ntPrefix.size()), target);
    } else if (beginsWithIgnoringCase(name, ntPrefix)) {
        writeTarget(L"", from(ntPrefix.size()), target);
    } else {
        writeTarget(L"", name, target);
    }
}

}  // namespace

DWORD parseReparseData(std::span<const std::byte> data, DWORD attributes, LinkTarget& target) noexcept {
    target[0] = L'\0';
    if (data.size() < tagHeaderSize) {
        return linkKindNone;
    }
    MountPointHeader header = {};
    std::memcpy(&header, data.data(), std::min(data.size(), sizeof(header)));
    if (header.tag != IO_REPARSE_TAG_MOUNT_POINT && header.tag != IO_REPARSE_TAG_SYMLINK) {
        return header.tag | 0xFF;
    }
    const bool junction = header.tag == IO_REPARSE_TAG_MOUNT_POINT;
    const std::size_t headerSize = junction ? sizeof(MountPointHeader) : symlinkHeaderSize;
    if (data.size() < headerSize) {
        return linkKindNone;
    }
    const std::size_t characters = (data.size() - headerSize) / sizeof(wchar_t);
    convertName(
        substituteName({reinterpret_cast<const wchar_t*>(data.data() + headerSize), characters}, header),
        target);
    if (junction) {
        return linkKindJunction;
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? linkKindDirectorySymlink : linkKindFileSymlink;
}

void writeJunctionName(std::wstring_view target, LinkTarget& name) noexcept {
    name[0] = L'\0';
    // Required: "\\?\C:\x" counts as a network path too, because the network form is looked for first.
    if (target.starts_with(L"\\\\")) {
        writeTarget(L"\\??\\UNC", {target.data() + 1, target.size() - 1}, name);
    } else if (target.starts_with(L"\\?")) {
        writeTarget(L"", target, name);
    } else {
        writeTarget(ntPrefix, target, name);
    }
}

DWORD fillJunctionData(const LinkTarget& name, ReparseBuffer& buffer) noexcept {
    const auto length =
        static_cast<std::uint16_t>(static_cast<std::size_t>(lstrlenW(name)) * sizeof(wchar_t));
    constexpr std::size_t nameFields = sizeof(MountPointHeader) - tagHeaderSize;
    // The name's terminator, and the one of the empty name for display behind it.
    constexpr std::size_t terminators = 2 * sizeof(wchar_t);
    MountPointHeader header = {};
    header.tag = IO_REPARSE_TAG_MOUNT_POINT;
    header.dataLength = static_cast<std::uint16_t>(nameFields + length + terminators);
    header.substituteNameLength = length;
    header.printNameOffset = static_cast<std::uint16_t>(length + sizeof(wchar_t));
    std::memcpy(buffer.bytes, &header, sizeof(header));
    lstrcpyW(reinterpret_cast<wchar_t*>(buffer.bytes + sizeof(header)), name);
    return static_cast<DWORD>(tagHeaderSize + header.dataLength);
}

}  // namespace winutil::filesystem
