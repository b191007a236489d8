#include "filesystem/system_paths.h"

#include <windows.h>

#include <shlobj.h>

#include "bridge/java_calls.h"
#include "bridge/optional_functions.h"
#include "bridge/system_version.h"

namespace winutil::filesystem {

namespace {

constexpr DWORD firstVersionWithFolders = 5;

// Returns whether the system is of a generation that has these folders.
bool hasSystemFolders() noexcept {
    OSVERSIONINFOA version;
    return readSystemVersion(version) && version.dwMajorVersion >= firstVersionWithFolders;
}

}  // namespace

void searchSystemPath(const wchar_t* name, FoundPath& path) noexcept {
    path[0] = L'\0';
    const auto search = optionalFunctions().searchPath;
    if (search == nullptr) {
        return;
    }
    const DWORD length = search(nullptr, name, nullptr, static_cast<DWORD>(foundPathCapacity), path, nullptr);
    if (length == 0 || length >= foundPathCapacity) {
        path[0] = L'\0';
    }
}

void listExcludeFolders(JNIEnv* env, jobject collection) noexcept {
    const jmethodID add = findCollectorMethod(env, collection, java_method::add);
    if (add == nullptr || !hasSystemFolders()) {
        return;
    }
    for (const int folder : {CSIDL_PROGRAM_FILESX86, CSIDL_PROGRAM_FILES, CSIDL_WINDOWS}) {
        wchar_t path[MAX_PATH];
        if (SHGetFolderPathW(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, path) == S_OK &&
            !addItem(env, collection, add, path)) {
            return;
        }
    }
}

}  // namespace winutil::filesystem
