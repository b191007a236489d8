#include "filesystem/shortcuts.h"

#include <objidl.h>
#include <shellapi.h>
#include <shlguid.h>
#include <shobjidl.h>

#include <cwchar>
#include <iterator>

#include "bridge/com.h"
#include "bridge/paths.h"
#include "filesystem/links.h"

namespace winutil::filesystem {

namespace {

constexpr DWORD quietly = DWORD{SLR_NO_UI} | SLR_NOUPDATE | SLR_NOSEARCH | SLR_NOTRACK | SLR_NOLINKINFO;
static_assert(quietly == 121);

constexpr std::size_t longPrefixLength = 4;  // "\\?\"

// Copies the target into a buffer that holds more than any stored path, without its long prefix.
void copyTarget(const wchar_t* stored, ShortcutTarget& target) noexcept {
    wcscpy_s(target, shortcutTargetCapacity, hasLongPrefix(stored) ? stored + longPrefixLength : stored);
}

}  // namespace

std::optional<bool> isShortcut(const wchar_t* path) noexcept {
    const std::optional<bool> link = isLink(path);
    if (!link) {
        return std::nullopt;
    }
    if (*link) {
        return false;
    }
    SHFILEINFOW information = {};
    static_assert(sizeof(information) == 696);
    const auto result =
        static_cast<HRESULT>(SHGetFileInfoW(path, 0, &information, sizeof(information), SHGFI_ATTRIBUTES));
    return SUCCEEDED(result) && (information.dwAttributes & SFGAO_LINK) != 0;
}

void readShortcutTarget(const wchar_t* path, ShortcutTarget& target) noexcept {
    target[0] = L'\0';
    // Required: in front of COM, because both references, the link's first, are released when it has ended.
    ComPtr<IPersistFile> file;
    ComPtr<IShellLinkW> link;
    const ComLibrary com;
    if (!com ||
        FAILED(
            CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(link.receive()))) ||
        FAILED(link->QueryInterface(IID_PPV_ARGS(file.receive()))) || FAILED(file->Load(path, STGM_READ)) ||
        FAILED(link->Resolve(nullptr, quietly))) {
        return;
    }
    wchar_t stored[2048] = {};
    if (SUCCEEDED(link->GetPath(stored, static_cast<int>(std::size(stored)), nullptr, SLGP_RAWPATH))) {
        stored[std::size(stored) - 1] = L'\0';
        copyTarget(stored, target);
    }
}

}  // namespace winutil::filesystem
