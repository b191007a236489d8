#include "fake_network.h"

#include <algorithm>
#include <cstring>

namespace testbed {

namespace {

DWORD codeFor(const std::map<std::wstring, DWORD>& codes, const std::wstring& parent) {
    const auto found = codes.find(parent);
    return found == codes.end() ? NO_ERROR : found->second;
}

}  // namespace

NETRESOURCEW share(const wchar_t* remoteName) {
    NETRESOURCEW resource = {};
    resource.dwScope = RESOURCE_CONNECTED;
    resource.dwType = RESOURCETYPE_DISK;
    resource.dwDisplayType = RESOURCEDISPLAYTYPE_SHARE;
    resource.dwUsage = RESOURCEUSAGE_CONNECTABLE;
    resource.lpRemoteName = const_cast<wchar_t*>(remoteName);
    return resource;
}

NETRESOURCEW container(const wchar_t* remoteName) {
    NETRESOURCEW resource = share(remoteName);
    resource.dwUsage = RESOURCEUSAGE_CONTAINER;
    return resource;
}

FakeNetwork::FakeNetwork(SystemCalls& system) {
    replacements_.push_back(system.replace<decltype(::WNetOpenEnumW)>(
        "WNetOpenEnumW",
        [this](DWORD scope, DWORD type, DWORD usage, NETRESOURCEW* parent, HANDLE* enumeration) {
            return open(scope, type, usage, parent, enumeration);
        }));
    replacements_.push_back(system.replace<decltype(::WNetEnumResourceW)>(
        "WNetEnumResourceW", [this](HANDLE enumeration, DWORD* count, void* buffer, DWORD* size) {
            return read(enumeration, count, buffer, size);
        }));
    replacements_.push_back(system.replace<decltype(::WNetCloseEnum)>(
        "WNetCloseEnum", [this](HANDLE enumeration) { return close(enumeration); }));
}

void FakeNetwork::give(const std::wstring& parent, std::vector<Batch> batches) {
    batches_[parent] = {batches.begin(), batches.end()};
}

DWORD FakeNetwork::open(DWORD scope, DWORD type, DWORD usage, const NETRESOURCEW* parent,
                        HANDLE* enumeration) {
    const std::wstring name = parent == nullptr ? L"" : parent->lpRemoteName;
    opened.push_back({.scope = scope, .type = type, .usage = usage, .parent = name});
    if (const DWORD code = codeFor(openCodes_, name); code != NO_ERROR) {
        return code;
    }
    *enumeration = Ledger::fakeHandle();
    parents_[*enumeration] = name;
    return NO_ERROR;
}

DWORD FakeNetwork::read(HANDLE enumeration, DWORD* count, void* buffer, DWORD* size) {
    const auto* bytes = static_cast<const char*>(buffer);
    asked.push_back({.count = *count,
                     .size = *size,
                     .zeroed = std::all_of(bytes, bytes + 16384, [](char byte) { return byte == 0; })});
    std::deque<Batch>& batches = batches_[parents_.at(enumeration)];
    if (batches.empty()) {
        return ERROR_NO_MORE_ITEMS;
    }
    const Batch batch = batches.front();
    batches.pop_front();
    if (!batch.entries.empty()) {
        std::memcpy(buffer, batch.entries.data(), batch.entries.size() * sizeof(NETRESOURCEW));
    }
    if (batch.code == NO_ERROR) {
        *count = batch.count != 0 ? batch.count : static_cast<DWORD>(batch.entries.size());
    }
    if (batch.size != 0) {
        *size = batch.size;
    }
    return batch.code;
}

DWORD FakeNetwork::close(HANDLE enumeration) {
    const std::wstring parent = parents_.at(enumeration);
    closed.push_back(parent);
    return codeFor(closeCodes_, parent);
}

}  // namespace testbed
