// System functions that not every supported Windows has, resolved when the library is loaded. A null entry is
// a function that this system lacks; every user tests its entry right before the call.
#pragma once

// windows.h comes first: the others build on it.
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>
#include <shobjidl.h>
#include <winternl.h>

namespace winutil {

struct OptionalFunctions {
    decltype(&::SetSecurityInfo) setSecurityInfo;
    decltype(&::ConvertStringSecurityDescriptorToSecurityDescriptorW)
        convertStringSecurityDescriptorToSecurityDescriptor;
    decltype(&::ConvertSecurityDescriptorToStringSecurityDescriptorW)
        convertSecurityDescriptorToStringSecurityDescriptor;
    decltype(&::SHCreateItemFromParsingName) shCreateItemFromParsingName;
    // The two ntdll functions, typed here: not every Windows header declares them.
    NTSTATUS(NTAPI* ntQueryInformationProcess)
    (HANDLE process, int informationClass, PVOID information, ULONG length, PULONG returnedLength);
    NTSTATUS(NTAPI* ntSetInformationFile)
    (HANDLE file, PIO_STATUS_BLOCK status, PVOID information, ULONG length, int informationClass);
    decltype(&::CreateSymbolicLinkW) createSymbolicLink;
    decltype(&::Wow64EnableWow64FsRedirection) wow64EnableWow64FsRedirection;
    decltype(&::IsWow64Process) isWow64Process;
    decltype(&::SearchPathW) searchPath;
};

// The table: written while the library is loaded and unloaded, only read in between, so no lock guards it.
const OptionalFunctions& optionalFunctions() noexcept;

// Fill and clear the table; called by the library entry point only.
void resolveOptionalFunctions() noexcept;
void releaseOptionalFunctions() noexcept;

// The loaded ntdll, as the source of NTSTATUS texts; null when it could not be loaded.
HMODULE ntdllModule() noexcept;

// Switches the WOW64 file-system redirection; true where the system has none to switch.
bool enableWow64Redirection(bool enable) noexcept;

// Returns whether this is a 32-bit process on a 64-bit system; false when that cannot be told.
bool isWow64() noexcept;

// Characters of a volume's mount point, the terminator included.
inline constexpr DWORD volumePathCapacity = 512;
using VolumePath = wchar_t[volumePathCapacity];

// Writes where the volume of `path` is mounted; an empty text when that cannot be told.
void findVolumePath(const wchar_t* path, VolumePath& volume) noexcept;

// Returns whether the file system of the volume that holds `path` has "NTFS" in its name; false when it
// cannot be told.
bool isNtfsVolume(const wchar_t* path) noexcept;

// Returns whether the system has the library and, unless `function` is null or empty, the library exports it.
bool isFunctionSupported(const char* library, const char* function) noexcept;

}  // namespace winutil
