#include "network/net_resources.h"

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winnetwk.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>

#include "bridge/java_calls.h"
#include "bridge/java_classes.h"
#include "bridge/owners.h"
#include "network/buffer_text.h"
#include "network/resource_texts.h"

namespace winutil::network {

namespace {

// An open enumeration of network resources.
using NetEnumeration = Resource<HANDLE, WNetCloseEnum>;

constexpr DWORD bufferSize = 16384;  // bytes
constexpr DWORD allEntries = 0xFFFFFFFF;
constexpr std::size_t textLimit = 1024;  // characters that are kept of a name

using Buffer = std::span<std::byte, bufferSize>;

// One listing on its way to a collector.
struct Listing {
    JNIEnv* env;
    jobject collector;
    bool stopped = false;  // a Java exception is pending
};

// Hands one resource of a buffer to the collector. Returns false when a Java exception is pending.
bool reportNetResource(JNIEnv* env, jobject collector, const NETRESOURCEW& entry, Buffer buffer) noexcept {
    // Empty when there is none.
    const auto nameText = [buffer](const wchar_t* name) noexcept {
        return name == nullptr ? std::wstring_view(L"") : textIn(buffer, name, textLimit);
    };
    return callCollector(env, collector, java_method::addEntry, scopeText(entry.dwScope).get(),
                         typeText(entry.dwType).get(), displayTypeText(entry.dwDisplayType).get(),
                         usageText(entry.dwUsage), nameText(entry.lpLocalName), nameText(entry.lpRemoteName),
                         nameText(entry.lpProvider));
}

// NOLINTBEGIN(misc-no-recursion): as deep as the containers of the network lie in each other
bool enumerateNetResources(Listing& listing, NETRESOURCEW* parent) noexcept;

// Reports the entries at the start of a buffer, and behind each container what is in it.
void reportBatch(Listing& listing, Buffer buffer, std::size_t count) noexcept {
    const std::size_t room = bufferSize / sizeof(NETRESOURCEW);
    for (NETRESOURCEW& entry :
         std::span(reinterpret_cast<NETRESOURCEW*>(buffer.data()), std::min(count, room))) {
        listing.stopped = !reportNetResource(listing.env, listing.collector, entry, buffer);
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
        // Required: any other failure is asked again without a limit, and as many entries are asked for as
        // came before, because the Java side relies on a listing that ends where the system has no more.
        if (code == NO_ERROR) {
            reportBatch(listing, Buffer(static_cast<std::byte*>(buffer.get()), bufferSize), count);
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
