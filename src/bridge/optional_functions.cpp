#include "bridge/optional_functions.h"

#include <bit>
#include <cwchar>
#include <iterator>

#include "bridge/owners.h"

namespace winutil {

namespace {

OptionalFunctions table = {};
HMODULE advapi32 = nullptr;
HMODULE shell32 = nullptr;
HMODULE ntdll = nullptr;
HMODULE kernel32 = nullptr;

template <class Function>
void resolve(Function& entry, HMODULE module, const char* name) noexcept {
    entry = module == nullptr ? nullptr : std::bit_cast<Function>(GetProcAddress(module, name));
}

template <class Function>
Function resolveFromKernel32(const char* name) noexcept {
    Function entry = nullptr;
    resolve(entry, GetModuleHandleA("kernel32"), name);
    return entry;
}

// Resolved by static initialisation, before the entry point runs, and never cleared.
const auto getVolumeInformation =
    resolveFromKernel32<decltype(&::GetVolumeInformationW)>("GetVolumeInformationW");
const auto getVolumePathName = resolveFromKernel32<decltype(&::GetVolumePathNameW)>("GetVolumePathNameW");

void release(HMODULE& module) noexcept {
    if (module != nullptr) {
        FreeLibrary(module);
        module = nullptr;
    }
}

}  // namespace

const OptionalFunctions& optionalFunctions() noexcept {
    return table;
}

HMODULE ntdllModule() noexcept {
    return ntdll;
}

void resolveOptionalFunctions() noexcept {
    advapi32 = LoadLibraryA("advapi32.dll");
    resolve(table.setSecurityInfo, advapi32, "SetSecurityInfo");
    resolve(table.convertStringSecurityDescriptorToSecurityDescriptor, advapi32,
            "ConvertStringSecurityDescriptorToSecurityDescriptorW");
    resolve(table.convertSecurityDescriptorToStringSecurityDescriptor, advapi32,
            "ConvertSecurityDescriptorToStringSecurityDescriptorW");
    shell32 = LoadLibraryA("shell32.dll");
    resolve(table.shCreateItemFromParsingName, shell32, "SHCreateItemFromParsingName");
    ntdll = LoadLibraryA("ntdll.dll");
    resolve(table.ntQueryInformationProcess, ntdll, "NtQueryInformationProcess");
    resolve(table.ntSetInformationFile, ntdll, "NtSetInformationFile");
    kernel32 = GetModuleHandleA("Kernel32");
    resolve(table.createSymbolicLink, kernel32, "CreateSymbolicLinkW");
    resolve(table.wow64EnableWow64FsRedirection, kernel32, "Wow64EnableWow64FsRedirection");
    resolve(table.isWow64Process, kernel32, "IsWow64Process");
    resolve(table.searchPath, kernel32, "SearchPathW");
}

void releaseOptionalFunctions() noexcept {
    release(advapi32);
    release(shell32);
    release(ntdll);
    // Required: given back although GetModuleHandle took no reference, because unloading treats all four
    // alike; the process is ending.
    release(kernel32);
}

bool enableWow64Redirection(bool enable) noexcept {
    if (table.wow64EnableWow64FsRedirection == nullptr) {
        return true;
    }
    return table.wow64EnableWow64FsRedirection(enable ? TRUE : FALSE) != 0;
}

bool isWow64() noexcept {
    BOOL wow64 = FALSE;
    if (table.isWow64Process == nullptr || !table.isWow64Process(GetCurrentProcess(), &wow64)) {
        return false;
    }
    return wow64 != FALSE;
}

void findVolumePath(const wchar_t* path, VolumePath& volume) noexcept {
    std::wmemset(volume, L'\0', volumePathCapacity);
    if (getVolumePathName != nullptr) {
        // Whether it succeeded shows in the text.
        getVolumePathName(path, volume, volumePathCapacity);
    }
}

bool isNtfsVolume(const wchar_t* path) noexcept {
    if (getVolumePathName == nullptr || getVolumeInformation == nullptr) {
        return false;
    }
    VolumePath volume;
    if (!getVolumePathName(path, volume, volumePathCapacity)) {
        return false;
    }
    wchar_t fileSystem[260];
    if (!getVolumeInformation(volume, nullptr, 0, nullptr, nullptr, nullptr, fileSystem,
                              static_cast<DWORD>(std::size(fileSystem)))) {
        return false;
    }
    return std::wcsstr(fileSystem, L"NTFS") != nullptr;
}

bool isFunctionSupported(const char* library, const char* function) noexcept {
    if (library == nullptr || *library == '\0') {
        return false;
    }
    const Module module(LoadLibraryA(library));
    if (!module) {
        return false;
    }
    if (function == nullptr || *function == '\0') {
        return true;
    }
    return GetProcAddress(module.get(), function) != nullptr;
}

}  // namespace winutil
