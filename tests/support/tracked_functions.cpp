#include "tracked_functions.h"

#include <windows.h>

#include <aclapi.h>
#include <lm.h>
#include <objbase.h>
#include <oleauto.h>
#include <sddl.h>
#include <shellapi.h>
#include <tlhelp32.h>
#include <userenv.h>
#include <winnetwk.h>
#include <winsvc.h>
#include <wtsapi32.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include "tracked_call.h"

namespace testbed {

namespace {

// Functions that fit none of the templates.

// Nothing reads zeros from fresh memory by chance.
constexpr int freshMemory = 0xCD;

void* WINAPI allocate(std::size_t size) {
    const InterceptedCall call;
    void* made = passOn<void*>(call, size);
    const LastErrorKeeper keeper;
    if (made != nullptr) {
        std::memset(made, freshMemory, size);
        call.ledger().take(Kind::memory, toWord(made), call.function(), call.caller());
    }
    return made;
}

void* WINAPI reallocate(void* block, std::size_t size) {
    const InterceptedCall call;
    if (block == nullptr) {
        void* made = passOn<void*>(call, block, size);
        const LastErrorKeeper keeper;
        if (made != nullptr) {
            call.ledger().take(Kind::memory, toWord(made), call.function(), call.caller());
        }
        return made;
    }
    const GivingBack giving(call, Kind::memory, toWord(block));
    void* made = giving.reachesSystem() ? passOn<void*>(call, block, size) : nullptr;
    const LastErrorKeeper keeper;
    if (made != nullptr) {
        call.ledger().take(Kind::memory, toWord(made), call.function(), call.caller());
    } else if (size != 0) {
        giving.undo();
    }
    return made;
}

// Its text is allocated only where the flags say so, and the caller then passes the address of a pointer.
DWORD WINAPI formatMessage(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer, DWORD size,
                           va_list* arguments) {
    const InterceptedCall call;
    const DWORD length = passOn<DWORD>(call, flags, source, code, language, buffer, size, arguments);
    const LastErrorKeeper keeper;
    if (length != 0 && (flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0) {
        call.ledger().take(Kind::localBlock, toWord(*reinterpret_cast<LPWSTR*>(buffer)), call.function(),
                           call.caller());
    }
    return length;
}

BOOL WINAPI createProcessAsUser(HANDLE token, LPCWSTR name, LPWSTR commandLine, LPSECURITY_ATTRIBUTES process,
                                LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags, LPVOID environment,
                                LPCWSTR folder, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION information) {
    const InterceptedCall call;
    const BOOL made = passOn<BOOL>(call, token, name, commandLine, process, thread, inherit, flags,
                                   environment, folder, startup, information);
    const LastErrorKeeper keeper;
    if (made) {
        call.ledger().take(Kind::handle, toWord(information->hProcess), call.function(), call.caller());
        call.ledger().take(Kind::handle, toWord(information->hThread), call.function(), call.caller());
    }
    return made;
}

BOOL WINAPI createPipe(PHANDLE read, PHANDLE write, LPSECURITY_ATTRIBUTES security, DWORD size) {
    const InterceptedCall call;
    const BOOL made = passOn<BOOL>(call, read, write, security, size);
    const LastErrorKeeper keeper;
    if (made) {
        call.ledger().take(Kind::handle, toWord(*read), call.function(), call.caller());
        call.ledger().take(Kind::handle, toWord(*write), call.function(), call.caller());
    }
    return made;
}

// A thread holds one impersonation, however often it impersonates; its identifier stands for it.
void takeImpersonation(const InterceptedCall& call) {
    call.ledger().take(Kind::impersonation, GetCurrentThreadId(), call.function(), call.caller());
}

BOOL WINAPI impersonate(HANDLE token) {
    const InterceptedCall call;
    const BOOL done = passOn<BOOL>(call, token);
    const LastErrorKeeper keeper;
    if (done) {
        takeImpersonation(call);
    }
    return done;
}

// Without an impersonation it does nothing, and succeeds: no mistake.
BOOL WINAPI revert() {
    const InterceptedCall call;
    const BOOL done = passOn<BOOL>(call);
    if (done) {
        call.ledger().drop(Kind::impersonation, GetCurrentThreadId());
        SetLastError(errorOfCleanUp);
    }
    return call.told(done);
}

HRESULT WINAPI initializeCom(LPVOID reserved, DWORD model) {
    const InterceptedCall call;
    const HRESULT result = passOn<HRESULT>(call, reserved, model);
    const LastErrorKeeper keeper;
    if (SUCCEEDED(result)) {
        call.ledger().take(Kind::comLibrary, GetCurrentThreadId(), call.function(), call.caller());
    }
    return result;
}

void WINAPI uninitializeCom() {
    const InterceptedCall call;
    const GivingBack giving(call, Kind::comLibrary, GetCurrentThreadId());
    if (giving.reachesSystem()) {
        passOn<void>(call);
    }
    SetLastError(errorOfCleanUp);
}

struct TrackedFunction {
    std::string_view name;
    const void* entry;
};

#define ENTRY(...) reinterpret_cast<const void*>(&__VA_ARGS__::call)
#define TAKES_RESULT(function, kind, none) \
    {#function, ENTRY(TakesResult<decltype(function), Kind::kind, none>)}
#define TAKES_STORED(function, kind, index, success) \
    {#function, ENTRY(TakesStored<decltype(function), Kind::kind, index, Success::success>)}
#define TAKES_ARGUMENT(function, kind, index, success) \
    {#function, ENTRY(TakesArgument<decltype(function), Kind::kind, index, Success::success>)}
#define GIVES(function, kind, index, success) \
    {#function, ENTRY(Gives<decltype(function), Kind::kind, index, Success::success, false>)}
#define GIVES_OR_NULL(function, kind, index, success) \
    {#function, ENTRY(Gives<decltype(function), Kind::kind, index, Success::success, true>)}
#define TRACKED_BY(function, tracker) \
    {#function, reinterpret_cast<const void*>(static_cast<std::add_pointer_t<decltype(function)>>(&tracker))}

constexpr std::intptr_t null = 0;
constexpr std::intptr_t invalid = -1;

const TrackedFunction functions[] = {
    // Memory
    TRACKED_BY(malloc, allocate),
    TAKES_RESULT(calloc, memory, null),
    TRACKED_BY(realloc, reallocate),
    GIVES_OR_NULL(free, memory, 0, always),
    TAKES_RESULT(HeapAlloc, heapBlock, null),
    GIVES_OR_NULL(HeapFree, heapBlock, 2, nonZero),
    TAKES_RESULT(LocalAlloc, localBlock, null),
    GIVES_OR_NULL(LocalFree, localBlock, 0, zero),
    TAKES_RESULT(GlobalAlloc, globalBlock, null),
    GIVES_OR_NULL(GlobalFree, globalBlock, 0, zero),
    TRACKED_BY(FormatMessageW, formatMessage),

    // Files, searches, kernel objects
    TAKES_RESULT(CreateFileW, handle, invalid),
    TAKES_RESULT(CreateFileA, handle, invalid),
    TAKES_RESULT(CreateNamedPipeW, handle, invalid),
    TAKES_RESULT(CreateToolhelp32Snapshot, handle, invalid),
    TAKES_RESULT(CreateEventW, handle, null),
    TAKES_RESULT(OpenProcess, handle, null),
    TRACKED_BY(CreateProcessAsUserW, createProcessAsUser),
    TRACKED_BY(CreatePipe, createPipe),
    GIVES(CloseHandle, handle, 0, nonZero),
    TAKES_RESULT(FindFirstFileW, search, invalid),
    GIVES(FindClose, search, 0, nonZero),
    TAKES_RESULT(FindFirstVolumeW, volumeSearch, invalid),
    GIVES(FindVolumeClose, volumeSearch, 0, nonZero),
    TAKES_ARGUMENT(InitializeCriticalSection, criticalSection, 0, always),
    TAKES_ARGUMENT(InitializeCriticalSectionAndSpinCount, criticalSection, 0, nonZero),
    GIVES(DeleteCriticalSection, criticalSection, 0, always),
    TAKES_ARGUMENT(AcquireSRWLockExclusive, lock, 0, always),
    GIVES(ReleaseSRWLockExclusive, lock, 0, always),
    TAKES_ARGUMENT(AcquireSRWLockShared, lock, 0, always),
    GIVES(ReleaseSRWLockShared, lock, 0, always),

    // Modules
    TAKES_RESULT(LoadLibraryA, module, null),
    GIVES(FreeLibrary, module, 0, nonZero),

    // Registry
    TAKES_STORED(RegOpenKeyExW, registryKey, 4, zero),
    TAKES_STORED(RegOpenKeyExA, registryKey, 4, zero),
    TAKES_STORED(RegCreateKeyExW, registryKey, 7, zero),
    TAKES_STORED(RegCreateKeyExA, registryKey, 7, zero),
    GIVES(RegCloseKey, registryKey, 0, zero),

    // Tokens and impersonation
    TAKES_STORED(OpenProcessToken, handle, 2, nonZero),
    TAKES_STORED(OpenThreadToken, handle, 3, nonZero),
    TAKES_STORED(DuplicateTokenEx, handle, 5, nonZero),
    TAKES_STORED(LogonUserW, handle, 5, nonZero),
    TAKES_STORED(LogonUserA, handle, 5, nonZero),
    TAKES_STORED(WTSQueryUserToken, handle, 1, nonZero),
    TRACKED_BY(ImpersonateLoggedOnUser, impersonate),
    TRACKED_BY(RevertToSelf, revert),

    // Security descriptors and SIDs
    TAKES_STORED(ConvertSecurityDescriptorToStringSecurityDescriptorW, localBlock, 3, nonZero),
    TAKES_STORED(ConvertStringSecurityDescriptorToSecurityDescriptorW, localBlock, 2, nonZero),
    TAKES_STORED(GetNamedSecurityInfoW, localBlock, 7, zero),
    TAKES_STORED(SetEntriesInAclW, localBlock, 3, zero),

    // Encrypted files
    TAKES_STORED(OpenEncryptedFileRawW, encryptedFile, 2, zero),
    GIVES(CloseEncryptedFileRaw, encryptedFile, 0, always),

    // Services and the event log
    TAKES_RESULT(OpenSCManagerW, service, null),
    TAKES_RESULT(OpenServiceW, service, null),
    GIVES(CloseServiceHandle, service, 0, nonZero),
    TAKES_RESULT(RegisterEventSourceW, eventSource, null),
    GIVES(DeregisterEventSource, eventSource, 0, nonZero),

    // Sessions and profiles
    TAKES_STORED(CreateEnvironmentBlock, environmentBlock, 0, nonZero),
    GIVES(DestroyEnvironmentBlock, environmentBlock, 0, nonZero),

    // Network
    TAKES_STORED(WNetOpenEnumW, networkEnumeration, 4, zero),
    GIVES(WNetCloseEnum, networkEnumeration, 0, zero),
    TAKES_STORED(NetUserGetGroups, networkBuffer, 3, zero),
    TAKES_STORED(NetUserGetLocalGroups, networkBuffer, 4, zero),
    TAKES_STORED(NetUserModalsGet, networkBuffer, 2, zero),
    GIVES_OR_NULL(NetApiBufferFree, networkBuffer, 0, zero),

    // COM
    TRACKED_BY(CoInitializeEx, initializeCom),
    TRACKED_BY(CoUninitialize, uninitializeCom),
    GIVES_OR_NULL(CoTaskMemFree, comMemory, 0, always),
    TAKES_RESULT(SysAllocString, text, null),
    GIVES_OR_NULL(SysFreeString, text, 0, always),

    // Drawing
    TAKES_RESULT(GetDC, deviceContext, null),
    GIVES(ReleaseDC, deviceContext, 1, nonZero),
    TAKES_RESULT(CreateCompatibleDC, graphicsObject, null),
    TAKES_RESULT(CreateCompatibleBitmap, graphicsObject, null),
    TAKES_RESULT(CreateSolidBrush, graphicsObject, null),
    GIVES(DeleteDC, graphicsObject, 0, nonZero),
    GIVES(DeleteObject, graphicsObject, 0, nonZero),
    TAKES_STORED(ExtractIconExW, icon, 3, nonZero),
    GIVES(DestroyIcon, icon, 0, nonZero),
};

}  // namespace

std::vector<std::string> trackedFunctions() {
    std::vector<std::string> names;
    for (const TrackedFunction& function : functions) {
        names.emplace_back(function.name);
    }
    return names;
}

const void* trackedFunction(const std::string& name) {
    const auto found = std::ranges::find(functions, name, &TrackedFunction::name);
    return found == std::end(functions) ? nullptr : found->entry;
}

}  // namespace testbed
