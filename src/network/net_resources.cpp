#include "network/net_resources.h"

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winnetwk.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <span>
#include <string_view>

#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "bridge/owners.h"
#include "network/resource_texts.h"

namespace winutil::network {

namespace {

// An open enumeration of network resources.
struct NetEnumerationKind {
    using Value = HANDLE;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { WNetCloseEnum(value); }
};
using NetEnumeration = Owned<NetEnumerationKind>;

// Memory from GlobalAlloc.
struct GlobalMemoryKind {
    using Value = void*;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { GlobalFree(value); }
};
using GlobalMemory = Owned<GlobalMemoryKind>;

constexpr DWORD bufferSize = 16384;  // bytes
constexpr DWORD allEntries = 0xFFFFFFFF;
constexpr std::size_t textLimit = 1024;  // characters that are kept of a name

// One listing on its way to a collector.
struct Listing {
    JNIEnv* env;
    jobject collector;
    bool stopped = false;  // a Java exception is pending
};

// A name of a resource as a Java string, empty when there is none; null with a Java exception pending.
jstring newNameString(JNIEnv* env, const wchar_t* name) noexcept {
    if (name == nullptr) {
        return newJavaString(env, L"");
    }
    return newJavaString(env, std::wstring_view(name, wcsnlen(name, textLimit)));
}

// Hands one resource to the collector. Returns false when a Java exception is pending.
bool reportNetResource(JNIEnv* env, jobject collector, const NETRESOURCEW& entry) noexcept {
    const jmethodID addEntry = findCollectorMethod(env, collector, java_method::addEntry);
    if (addEntry == nullptr) {
        return true;
    }
    const LocalRef scope(env, newJavaString(env, scopeText(entry.dwScope).get()));
    if (!scope) {
        return false;
    }
    const LocalRef type(env, newJavaString(env, typeText(entry.dwType).get()));
    if (!type) {
        return false;
    }
    const LocalRef displayType(env, newJavaString(env, displayTypeText(entry.dwDisplayType).get()));
    if (!displayType) {
        return false;
    }
    const LocalRef usage(env, newJavaString(env, usageText(entry.dwUsage)));
    if (!usage) {
        return false;
    }
    const LocalRef localName(env, newNameString(env, entry.lpLocalName));
    if (!localName) {
        return false;
    }
    const LocalRef remoteName(env, newNameString(env, entry.lpRemoteName));
    if (!remoteName) {
        return false;
    }
    const LocalRef provider(env, newNameString(env, entry.lpProvider));
    if (!provider) {
        return false;
    }
    env->CallVoidMethod(collector, addEntry, scope.get(), type.get(), displayType.get(), usage.get(),
                        localName.get(), remoteName.get(), provider.get());
    return !exceptionPending(env);
}

// NOLINTBEGIN(misc-no-recursion): as deep as the containers of the network lie in each other
bool enumerateNetResources(Listing& listing, NETRESOURCEW* parent) noexcept;

// Reports a batch of entries, and behind each container what is in it.
void reportBatch(Listing& listing, std::span<NETRESOURCEW> entries) noexcept {
    for (NETRESOURCEW& entry : entries) {
        listing.stopped = !reportNetResource(listing.env, listing.collector, entry);
        if (!listing.stopped && (entry.dwUsage & RESOURCEUSAGE_CONTAINER) != 0) {
            // A container that cannot be listed is passed over.
            enumerateNetResources(listing, &entry);
        }
        if (listing.stopped) {
            return;
        }
    }
}

// Returns false when there is no memory for the entries, or when Java ended the listing.
bool walkEntries(Listing& listing, HANDLE enumeration) noexcept {
    const GlobalMemory buffer(GlobalAlloc(GPTR, bufferSize));
    if (!buffer) {
        return false;
    }
    DWORD count = allEntries;
    while (!listing.stopped) {
        std::memset(buffer.get(), 0, bufferSize);
        DWORD size = bufferSize;
        const DWORD code = WNetEnumResourceW(enumeration, &count, buffer.get(), &size);
        if (code == ERROR_NO_MORE_ITEMS) {
            return true;
        }
        // Any other failure is asked again, deliberately without a limit. How many entries came is how many
        // are asked for next, which is meant too.
        if (code == NO_ERROR) {
            const std::size_t room = bufferSize / sizeof(NETRESOURCEW);
            reportBatch(listing,
                        {static_cast<NETRESOURCEW*>(buffer.get()), std::min<std::size_t>(count, room)});
        }
    }
    return false;
}

bool enumerateNetResources(Listing& listing, NETRESOURCEW* parent) noexcept {
    NetEnumeration enumeration;
    if (WNetOpenEnumW(RESOURCE_CONNECTED, RESOURCETYPE_ANY, 0, parent, enumeration.receive()) != NO_ERROR ||
        !walkEntries(listing, enumeration.get())) {
        return false;
    }
    // By hand, for the result.
    return WNetCloseEnum(enumeration.release()) == NO_ERROR;
}
// NOLINTEND(misc-no-recursion)

}  // namespace

bool listNetResources(JNIEnv* env, jobject collector) noexcept {
    Listing listing{.env = env, .collector = collector};
    return enumerateNetResources(listing, nullptr);
}

}  // namespace winutil::network
