// Resources of the network, and the universal names of paths.
// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winnetwk.h>

#include "answers/network.h"
#include "network/net_resources.h"
#include "network/universal_name.h"
#include "target.h"
#include "windows/java.h"
#include "windows/system.h"

namespace {

hostile::Network* network = nullptr;

}  // namespace

extern "C" {
DWORD WINAPI WNetOpenEnumW(DWORD, DWORD, DWORD, LPNETRESOURCEW, LPHANDLE enumeration) {
    *enumeration = fuzz::fakeHandle();
    return NO_ERROR;
}
DWORD WINAPI WNetCloseEnum(HANDLE) {
    return NO_ERROR;
}
DWORD WINAPI WNetEnumResourceW(HANDLE, LPDWORD count, LPVOID buffer, LPDWORD size) {
    return network->giveEntries(count, buffer, size);
}
DWORD WINAPI WNetGetUniversalNameW(LPCWSTR, DWORD, LPVOID buffer, LPDWORD size) {
    return network->giveUniversalName(buffer, size);
}
}

void fuzz::examine(hostile::Input& input) {
    hostile::Network answers(input);
    network = &answers;
    if (input.value<BYTE>() % 2 == 0) {
        Java java;
        winutil::network::listNetResources(java.env(), java.collector());
    } else if (const auto name = winutil::network::universalNameOf(L"X:\\")) {
        require(std::wcslen(name.get()) < 64, "a name is longer than any that was given");
    }
}
