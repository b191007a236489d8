// What the parts of a network resource are called on the Java side.
#pragma once

#include <windows.h>

#include <cstdio>
#include <iterator>

namespace winutil::network {

// A word of the tables, or "unknown" and the number.
class ResourceText {
public:
    explicit ResourceText(const wchar_t* word) noexcept : word_(word) {}
    explicit ResourceText(DWORD unknownValue) noexcept {
        _snwprintf_s(unknown_, std::size(unknown_), _TRUNCATE, L"unknown %d", static_cast<int>(unknownValue));
    }

    const wchar_t* get() const noexcept { return word_ != nullptr ? word_ : unknown_; }

private:
    const wchar_t* word_ = nullptr;
    wchar_t unknown_[20] = {};  // "unknown " and at most eleven characters, the terminator
};

inline ResourceText scopeText(DWORD scope) noexcept {
    switch (scope) {
        case RESOURCE_CONNECTED:
            return ResourceText(L"connected");
        case RESOURCE_GLOBALNET:
            return ResourceText(L"all resources");
        case RESOURCE_REMEMBERED:
            return ResourceText(L"remembered");
        default:
            return ResourceText(scope);
    }
}

inline ResourceText typeText(DWORD type) noexcept {
    switch (type) {
        case RESOURCETYPE_ANY:
            return ResourceText(L"any");
        case RESOURCETYPE_DISK:
            return ResourceText(L"disk");
        case RESOURCETYPE_PRINT:
            return ResourceText(L"print");
        default:
            return ResourceText(type);
    }
}

inline ResourceText displayTypeText(DWORD displayType) noexcept {
    switch (displayType) {
        case RESOURCEDISPLAYTYPE_GENERIC:
            return ResourceText(L"generic");
        case RESOURCEDISPLAYTYPE_DOMAIN:
            return ResourceText(L"domain");
        case RESOURCEDISPLAYTYPE_SERVER:
            return ResourceText(L"server");
        case RESOURCEDISPLAYTYPE_SHARE:
            return ResourceText(L"share");
        case RESOURCEDISPLAYTYPE_FILE:
            return ResourceText(L"file");
        case RESOURCEDISPLAYTYPE_GROUP:
            return ResourceText(L"group");
        case RESOURCEDISPLAYTYPE_NETWORK:
            return ResourceText(L"network");
        default:
            return ResourceText(displayType);
    }
}

// Each word has a blank in front, the first one too.
inline const wchar_t* usageText(DWORD usage) noexcept {
    switch (usage & (RESOURCEUSAGE_CONNECTABLE | RESOURCEUSAGE_CONTAINER)) {
        case RESOURCEUSAGE_CONNECTABLE:
            return L" connectable";
        case RESOURCEUSAGE_CONTAINER:
            return L" container";
        case RESOURCEUSAGE_CONNECTABLE | RESOURCEUSAGE_CONTAINER:
            return L" connectable container";
        default:
            return L"";
    }
}

}  // namespace winutil::network
