#include "filesystem/libraries.h"

#include <shellapi.h>
#include <shlwapi.h>
#include <shobjidl.h>

#include "bridge/com.h"
#include "bridge/java_calls.h"
#include "bridge/optional_functions.h"

namespace winutil::filesystem {

namespace {

constexpr std::wstring_view libraryExtension = L".library-ms";

// What stands for a library without an icon of its own: a negative index is a resource identifier.
constexpr wchar_t defaultIconFile[] = L"imageres.dll";
constexpr int defaultIconIndex = -1001;

ComPtr<IShellLibrary> loadLibrary(const wchar_t* path) noexcept {
    const auto createItem = optionalFunctions().shCreateItemFromParsingName;
    ComPtr<IShellItem> item;
    ComPtr<IShellLibrary> library;
    if (createItem == nullptr || FAILED(createItem(path, nullptr, IID_PPV_ARGS(item.receive()))) ||
        FAILED(CoCreateInstance(CLSID_ShellLibrary, nullptr, CLSCTX_INPROC_SERVER,
                                IID_PPV_ARGS(library.receive()))) ||
        FAILED(library->LoadLibraryFromItem(item.get(), STGM_READ))) {
        return {};
    }
    return library;
}

// Adds the path of a folder, unless it has none. Returns false when a Java exception is pending.
bool addFolder(JNIEnv* env, jobject collection, jmethodID add, IShellItem& folder) noexcept {
    ComMemory<wchar_t> path;
    return FAILED(folder.GetDisplayName(SIGDN_FILESYSPATH, path.receive())) || !path ||
           addItem(env, collection, add, path.get());
}

Icon extractSmallIcon(const wchar_t* file, int index) noexcept {
    Icon icon;
    if (ExtractIconExW(file, index, nullptr, icon.receive(), 1) != 1) {
        return {};
    }
    return icon;
}

Icon extractLibraryIcon(IShellLibrary& library) noexcept {
    ComMemory<wchar_t> location;
    if (FAILED(library.GetIcon(location.receive())) || !location) {
        return extractSmallIcon(defaultIconFile, defaultIconIndex);
    }
    const int index = PathParseIconLocationW(location.get());
    return extractSmallIcon(location.get(), index);
}

}  // namespace

bool isLibrary(std::wstring_view path) noexcept {
    return path.size() > libraryExtension.size() && path.ends_with(libraryExtension);
}

void listLibraryFolders(JNIEnv* env, const wchar_t* path, jobject collection) noexcept {
    const jmethodID add = findCollectorMethod(env, collection, java_method::add);
    if (add == nullptr) {
        return;
    }
    const ComLibrary com;
    if (!com) {
        return;
    }
    const ComPtr<IShellLibrary> library = loadLibrary(path);
    ComPtr<IShellItemArray> folders;
    ComPtr<IEnumShellItems> items;
    if (!library || FAILED(library->GetFolders(LFF_STORAGEITEMS, IID_PPV_ARGS(folders.receive()))) ||
        FAILED(folders->EnumItems(items.receive()))) {
        return;
    }
    for (;;) {
        ComPtr<IShellItem> item;
        ULONG fetched = 0;
        if (items->Next(1, item.receive(), &fetched) != S_OK || !item ||
            !addFolder(env, collection, add, *item.get())) {
            return;
        }
    }
}

ImageFile libraryIcon(const wchar_t* path) noexcept {
    const ComLibrary com;
    if (!com) {
        return {};
    }
    const ComPtr<IShellLibrary> library = loadLibrary(path);
    if (!library) {
        return {};
    }
    return renderIcon(extractLibraryIcon(*library.get()));
}

}  // namespace winutil::filesystem
