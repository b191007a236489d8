#include "registry/hives.h"

#include "registry/keys.h"

namespace winutil::registry {

bool loadHive(const wchar_t* rootName, const wchar_t* keyName, const wchar_t* file) noexcept {
    const HKEY root = rootKeyFromName(rootName);
    return root != nullptr && RegLoadKeyW(root, keyName, file) == ERROR_SUCCESS;
}

bool unloadHive(const wchar_t* rootName, const wchar_t* keyName) noexcept {
    const HKEY root = rootKeyFromName(rootName);
    return root != nullptr && RegUnLoadKeyW(root, keyName) == ERROR_SUCCESS;
}

}  // namespace winutil::registry
