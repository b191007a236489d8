#include "registry/keys.h"

#include <cwchar>

#include "bridge/optional_functions.h"

namespace winutil::registry {

namespace {

struct RootKey {
    std::string_view name;
    const wchar_t* wideName;
    HKEY key;
};

const RootKey rootKeys[] = {
    {"HKEY_LOCAL_MACHINE", L"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
    {"HKEY_USERS", L"HKEY_USERS", HKEY_USERS},
    {"HKEY_CURRENT_USER", L"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {"HKEY_CLASSES_ROOT", L"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
    {"HKEY_CURRENT_CONFIG", L"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
};

}  // namespace

HKEY rootKeyFromName(std::string_view name) noexcept {
    for (const RootKey& root : rootKeys) {
        if (name == root.name) {
            return root.key;
        }
    }
    return nullptr;
}

HKEY rootKeyFromName(const wchar_t* name) noexcept {
    for (const RootKey& root : rootKeys) {
        if (name != nullptr && _wcsicmp(name, root.wideName) == 0) {
            return root.key;
        }
    }
    return nullptr;
}

RegistryKey openForReading(HKEY root, const char* keyPath) noexcept {
    if (root == nullptr) {
        return {};
    }
    const REGSAM access = isWow64() ? KEY_READ | KEY_WOW64_64KEY : KEY_READ;
    HKEY key = nullptr;
    if (RegOpenKeyExA(root, keyPath, 0, access, &key) != ERROR_SUCCESS) {
        return {};
    }
    return RegistryKey(key);
}

bool createKey(HKEY root, const char* keyPath) noexcept {
    // Required: the name of an account as the class, because it stays with the key, and callers find it
    // there.
    char keyClass[] = "LocalSystem";
    HKEY key = nullptr;
    if (RegCreateKeyExA(root, keyPath, 0, keyClass, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) != ERROR_SUCCESS) {
        return false;
    }
    const RegistryKey closer(key);
    return true;
}

bool createKey(HKEY root, const wchar_t* keyPath) noexcept {
    wchar_t keyClass[] = L"LocalSystem";  // required as above
    HKEY key = nullptr;
    if (RegCreateKeyExW(root, keyPath, 0, keyClass, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr) != ERROR_SUCCESS) {
        return false;
    }
    const RegistryKey closer(key);
    return true;
}

bool makeKey(const wchar_t* rootName, const wchar_t* keyPath) noexcept {
    const HKEY root = rootKeyFromName(rootName);
    return root != nullptr && createKey(root, keyPath);
}

}  // namespace winutil::registry
