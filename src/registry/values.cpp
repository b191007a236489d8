#include "registry/values.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "registry/keys.h"
#include "registry/value_path.h"

namespace winutil::registry {

namespace {

// The wide value name: room for the longest that there can be, and a terminator.
constexpr int valueNameLimit = 16383;
constexpr std::size_t valueNameCapacity = 16384;

// The buffer of the short texts has four times the size that is declared for it, so that their terminator is
// always in it.
constexpr std::size_t shortTextCapacity = 2048;  // characters
constexpr DWORD shortTextSize = 1024;            // bytes

// The room that is declared for a text of any size, in bytes, at the first look and by how much more at each
// that follows; and how many looks may find a value of another size than the one before until it is given up.
constexpr DWORD firstRoom = 8192;
constexpr DWORD roomGrowth = 4096;
constexpr int changeLimit = 1024;

// The calls of the two families under one name each.

LSTATUS openKey(HKEY root, const char* keyPath, REGSAM access, HKEY& key) noexcept {
    return RegOpenKeyExA(root, keyPath, 0, access, &key);
}

LSTATUS openKey(HKEY root, const wchar_t* keyPath, REGSAM access, HKEY& key) noexcept {
    return RegOpenKeyExW(root, keyPath, 0, access, &key);
}

LSTATUS setValue(HKEY key, const char* name, DWORD type, const BYTE* data, DWORD size) noexcept {
    return RegSetValueExA(key, name, 0, type, data, size);
}

LSTATUS setValue(HKEY key, const wchar_t* name, DWORD type, const BYTE* data, DWORD size) noexcept {
    return RegSetValueExW(key, name, 0, type, data, size);
}

// The key is made, closed and opened again with the access for writing alone.
template <class Char>
bool write(const Char* path, DWORD type, const void* data, std::size_t size) noexcept {
    const ValuePath<Char> parts(path);
    if (!parts || size > MAXDWORD) {
        return false;
    }
    const HKEY root = rootKeyFromName(parts.root());
    if (root == nullptr || !createKey(root, parts.keyPath())) {
        return false;
    }
    HKEY opened = nullptr;
    if (openKey(root, parts.keyPath(), KEY_WRITE, opened) != ERROR_SUCCESS) {
        return false;
    }
    const RegistryKey key(opened);
    return setValue(key.get(), parts.valueName(), type, static_cast<const BYTE*>(data),
                    static_cast<DWORD>(size)) == ERROR_SUCCESS;
}

RegistryKey openKeyOf(const ValuePath<char>& parts) noexcept {
    return parts ? openForReading(rootKeyFromName(parts.root()), parts.keyPath()) : RegistryKey();
}

BYTE* bytesOf(const WideString& text) noexcept {
    return reinterpret_cast<BYTE*>(text.get());
}

bool isText(DWORD type) noexcept {
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

WideString readShortText(const RegistryKey& key, const char* valueName) noexcept {
    if (!key) {
        return {};
    }
    const WideString wideName = allocateZeroed<wchar_t>(valueNameCapacity);
    WideString text = allocateZeroed<wchar_t>(shortTextCapacity);
    if (!wideName || !text) {
        return {};
    }
    ansiToWide(wideName.get(), valueName, valueNameLimit);
    DWORD type = REG_NONE;
    DWORD size = shortTextSize;
    if (RegQueryValueExW(key.get(), wideName.get(), nullptr, &type, bytesOf(text), &size) != ERROR_SUCCESS ||
        !isText(type)) {
        return {};
    }
    return text;
}

bool isExpected(DWORD type, DWORD expectedType) noexcept {
    return expectedType == REG_SZ ? isText(type) : type == expectedType;
}

// Reads a value with more room at each look until it fits; the text is that of the last. A value that holds
// still is followed to any size.
WideString readLongText(HKEY key, const wchar_t* valueName, DWORD expectedType) noexcept {
    // Behind the data, an odd last byte made whole and a terminator.
    constexpr std::size_t tail = 2;
    WideString text;
    std::size_t blockSize = 0;
    DWORD lastSize = 0;
    int changes = 0;
    for (DWORD room = firstRoom; room <= MAXDWORD - roomGrowth; room += roomGrowth) {
        if (room > blockSize) {
            // More than is declared, so that a large value does not cost a block of its size at each look.
            blockSize = std::max<std::size_t>(room, 2 * blockSize);
            text = allocate<wchar_t>(blockSize / sizeof(wchar_t) + tail);
        }
        if (!text) {
            return {};
        }
        DWORD type = REG_NONE;
        DWORD size = room;
        const LSTATUS status = RegQueryValueExW(key, valueName, nullptr, &type, bytesOf(text), &size);
        if (status == ERROR_SUCCESS && isExpected(type, expectedType)) {
            std::memset(bytesOf(text) + std::min(size, room), 0, tail * sizeof(wchar_t));
            return text;
        }
        // One that says it would have fitted does not hold still either.
        changes += size != lastSize || size <= room ? 1 : 0;
        lastSize = size;
        if (status != ERROR_MORE_DATA || changes > changeLimit) {
            return {};
        }
    }
    return {};
}

}  // namespace

bool writeValue(const char* path, DWORD type, const void* data, std::size_t size) noexcept {
    return write(path, type, data, size);
}

bool writeValue(const wchar_t* path, DWORD type, const void* data, std::size_t size) noexcept {
    return write(path, type, data, size);
}

std::int64_t readDword(const char* path) noexcept {
    const ValuePath<char> parts(path);
    const RegistryKey key = openKeyOf(parts);
    if (!key) {
        return -1;
    }
    // Zero to begin with: a value may have fewer bytes than its type says.
    DWORD value = 0;
    DWORD type = REG_NONE;
    DWORD size = sizeof(value);
    if (RegQueryValueExA(key.get(), parts.valueName(), nullptr, &type, reinterpret_cast<BYTE*>(&value),
                         &size) != ERROR_SUCCESS ||
        type != REG_DWORD) {
        return -1;
    }
    return value;
}

WideString readText(const char* path) noexcept {
    const ValuePath<char> parts(path);
    return readShortText(openKeyOf(parts), parts.valueName());
}

WideString readText(const char* key, const char* valueName) noexcept {
    if (key == nullptr || valueName == nullptr) {
        return {};
    }
    const std::string_view text(key);
    const std::size_t backslash = text.find('\\');
    if (backslash == std::string_view::npos) {
        return {};
    }
    const HKEY root = rootKeyFromName(std::string_view(key, backslash));
    return readShortText(openForReading(root, key + backslash + 1), valueName);
}

WideString readText(const wchar_t* path, REGSAM extraAccess, DWORD expectedType) noexcept {
    const ValuePath<wchar_t> parts(path);
    if (!parts) {
        return {};
    }
    HKEY root = rootKeyFromName(parts.root());
    if (root == nullptr) {
        // Required: an unknown root is no failure here, and only here, because callers rely on the local
        // machine for it.
        root = HKEY_LOCAL_MACHINE;
    }
    HKEY opened = nullptr;
    if (openKey(root, parts.keyPath(), KEY_READ | extraAccess, opened) != ERROR_SUCCESS) {
        return {};
    }
    const RegistryKey key(opened);
    return readLongText(key.get(), parts.valueName(), expectedType);
}

SmallValue::SmallValue(const char* path) noexcept {
    const ValuePath<char> parts(path);
    const RegistryKey key = openKeyOf(parts);
    if (!key) {
        return;
    }
    DWORD size = sizeof(data_);
    if (RegQueryValueExA(key.get(), parts.valueName(), nullptr, nullptr, reinterpret_cast<BYTE*>(data_),
                         &size) == ERROR_SUCCESS) {
        size_ = std::min(std::size_t{size}, sizeof(data_));
    }
}

}  // namespace winutil::registry
