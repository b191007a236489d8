// The system's iphlpapi.dll with the one function that Wine 8 lacks, and without which a Java runtime of
// version 21 or later ends. Stands beside java.exe and passes on all else that the runtime and Wine itself
// ask for.
#include <winsock2.h>

#include <ws2tcpip.h>

#include <iphlpapi.h>
#include <netioapi.h>

#include <cwchar>

#define PASSED_ON(X)               \
    X(ConvertInterfaceIndexToLuid) \
    X(ConvertInterfaceLuidToGuid)  \
    X(ConvertInterfaceLuidToNameW) \
    X(ConvertInterfaceNameToLuidW) \
    X(ConvertLengthToIpv4Mask)     \
    X(FreeMibTable)                \
    X(GetAdaptersAddresses)        \
    X(GetAdaptersInfo)             \
    X(GetBestInterface)            \
    X(GetFriendlyIfIndex)          \
    X(GetIfEntry)                  \
    X(GetIfEntry2)                 \
    X(GetIfTable)                  \
    X(GetIfTable2)                 \
    X(GetIpAddrTable)              \
    X(GetIpForwardTable)           \
    X(GetIpNetTable)               \
    X(GetUnicastIpAddressTable)    \
    X(Icmp6CreateFile)             \
    X(Icmp6SendEcho2)              \
    X(IcmpCloseHandle)             \
    X(IcmpCreateFile)              \
    X(IcmpSendEcho)                \
    X(IcmpSendEcho2Ex)             \
    X(NotifyAddrChange)            \
    X(if_nametoindex)

// Jumps to the system's function, with the arguments where they are. Exported under the name that the headers
// have given to a declaration.
#define JUMP(name)                                                      \
    extern "C" FARPROC real_##name;                                     \
    FARPROC real_##name = nullptr;                                      \
    extern "C" __declspec(dllexport) void passedOn_##name() asm(#name); \
    extern "C" __attribute__((naked)) void passedOn_##name() {          \
        asm("jmp *real_" #name "(%rip)");                               \
    }
PASSED_ON(JUMP)

// Such an address belongs to several computers at once. A computer has none unless it is given one.
extern "C" __declspec(dllexport) NETIO_STATUS WINAPI
GetAnycastIpAddressTable(ADDRESS_FAMILY, PMIB_ANYCASTIPADDRESS_TABLE* table) {
    // What the system's FreeMibTable gives back.
    void* block = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, sizeof **table);
    *table = static_cast<PMIB_ANYCASTIPADDRESS_TABLE>(block);
    return block == nullptr ? ERROR_NOT_ENOUGH_MEMORY : NO_ERROR;
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason != DLL_PROCESS_ATTACH) {
        return TRUE;
    }
    // By its full name: the short one is this library's.
    wchar_t file[MAX_PATH];
    GetSystemDirectoryW(file, MAX_PATH);
    const HMODULE system = LoadLibraryW(wcscat(file, L"\\iphlpapi.dll"));
    if (system == nullptr) {
        return FALSE;
    }
#define RESOLVE(name) real_##name = GetProcAddress(system, #name);
    PASSED_ON(RESOLVE)
    return TRUE;
}
