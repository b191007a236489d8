#include "fault_table.h"

#ifndef SECURITY_WIN32
#define SECURITY_WIN32
#endif
#include <adserr.h>
#include <lmerr.h>
#include <oleauto.h>
#include <security.h>
#include <wbemcli.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string_view>

namespace testbed {

namespace {

constexpr std::uint64_t allOnes = ~0ull;
constexpr std::uint64_t allOnes32 = 0xFFFFFFFF;

// FALSE, null or nothing written, with a last error.
Fault none(DWORD code) {
    return {.lastError = code};
}

Fault result(std::uint64_t value, DWORD code) {
    return {.result = value, .lastError = code};
}

// A function that answers its code and leaves the last error alone.
Fault status(DWORD code) {
    return {.result = code};
}

// An HRESULT, whichever type its header gives it.
template <class Code>
Fault failed(Code code) {
    return {.result = static_cast<DWORD>(code)};
}

Fault invalidHandle(DWORD code) {
    return result(allOnes, code);
}

// What gives something back has done so, whatever it answers: nobody could do more.
Fault givenBack(std::uint64_t value, DWORD code) {
    return {.way = Fault::Way::made, .result = value, .lastError = code};
}

// A transfer of less than was asked for: which argument says how much that is.
Fault shortOf(std::size_t argument) {
    return {.way = Fault::Way::cut, .cutArgument = argument};
}

// A buffer that is too small by now: which argument is its size, or leads to it.
Fault outgrown(std::size_t sizeArgument, DWORD code = ERROR_INSUFFICIENT_BUFFER) {
    return {.way = Fault::Way::cut, .lastError = code, .cutArgument = sizeArgument};
}
Fault outgrownBehind(std::size_t sizePointer, DWORD code = ERROR_INSUFFICIENT_BUFFER) {
    return {.way = Fault::Way::cut, .lastError = code, .cutArgument = sizePointer, .cutBehindPointer = true};
}

constexpr DWORD accessDenied = 0xC0000022;  // as NTSTATUS

const FailingFunction functions[] = {
    // Memory
    {"malloc", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"calloc", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"realloc", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"HeapAlloc", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"HeapFree", {givenBack(0, ERROR_INVALID_PARAMETER)}},
    {"LocalAlloc", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"GlobalAlloc", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"GlobalLock", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"SysAllocString", {{}}},

    // Files
    {"CloseHandle", {givenBack(FALSE, ERROR_INVALID_HANDLE)}},
    {"CreateDirectoryW", {none(ERROR_ACCESS_DENIED), none(ERROR_DISK_FULL)}},
    {"CreateFileA", {invalidHandle(ERROR_ACCESS_DENIED)}},
    {"CreateFileW",
     {invalidHandle(ERROR_ACCESS_DENIED), invalidHandle(ERROR_SHARING_VIOLATION),
      invalidHandle(ERROR_DISK_FULL)}},
    {"CreateSymbolicLinkW", {none(ERROR_PRIVILEGE_NOT_HELD)}},
    {"DeleteFileW", {none(ERROR_ACCESS_DENIED)}},
    {"DeviceIoControl", {none(ERROR_IO_DEVICE)}},
    {"EncryptFileW", {none(ERROR_ACCESS_DENIED)}},
    {"FindClose", {givenBack(FALSE, ERROR_INVALID_HANDLE)}},
    {"FindFirstFileW", {invalidHandle(ERROR_ACCESS_DENIED)}},
    {"FindNextFileW", {none(ERROR_IO_DEVICE)}},
    {"FlushFileBuffers", {none(ERROR_NO_DATA)}},
    {"GetFileAttributesExW", {none(ERROR_ACCESS_DENIED)}},
    {"GetFileAttributesW", {result(INVALID_FILE_ATTRIBUTES, ERROR_ACCESS_DENIED)}},
    {"GetFileSizeEx", {none(ERROR_IO_DEVICE)}},
    {"GetLongPathNameW", {none(ERROR_ACCESS_DENIED), outgrown(2)}},
    {"MoveFileW", {none(ERROR_ACCESS_DENIED)}},
    {"NtSetInformationFile", {status(accessDenied)}},
    {"ReadFile", {none(ERROR_IO_DEVICE), shortOf(2)}},
    {"SearchPathW", {none(ERROR_FILE_NOT_FOUND), outgrown(3)}},
    {"SetEndOfFile", {none(ERROR_DISK_FULL)}},
    {"SetFileAttributesW", {none(ERROR_ACCESS_DENIED)}},
    {"SetFilePointer", {result(INVALID_SET_FILE_POINTER, ERROR_NEGATIVE_SEEK)}},
    {"SetFilePointerEx", {none(ERROR_NEGATIVE_SEEK)}},
    {"SetFileTime", {none(ERROR_ACCESS_DENIED)}},
    {"SetFileValidData", {none(ERROR_PRIVILEGE_NOT_HELD)}},
    {"WriteFile", {none(ERROR_DISK_FULL), none(ERROR_IO_DEVICE), shortOf(2)}},

    // Encrypted files
    {"OpenEncryptedFileRawW", {status(ERROR_ACCESS_DENIED)}},
    {"ReadEncryptedFileRaw", {status(ERROR_IO_DEVICE)}},
    {"WriteEncryptedFileRaw", {status(ERROR_DISK_FULL)}},

    // Volumes
    {"FindFirstVolumeW", {invalidHandle(ERROR_ACCESS_DENIED)}},
    {"FindNextVolumeW", {none(ERROR_IO_DEVICE)}},
    {"FindVolumeClose", {givenBack(FALSE, ERROR_INVALID_HANDLE)}},
    {"GetDiskFreeSpaceW", {none(ERROR_NOT_READY)}},
    {"GetDriveTypeA", {{.result = DRIVE_NO_ROOT_DIR}}},
    {"GetLogicalDriveStringsA", {none(ERROR_GEN_FAILURE), outgrown(0)}},
    {"GetVolumeInformationW", {none(ERROR_NOT_READY)}},
    {"GetVolumePathNameW", {none(ERROR_FILE_NOT_FOUND)}},
    {"GetVolumePathNamesForVolumeNameW", {none(ERROR_FILE_NOT_FOUND), outgrown(2, ERROR_MORE_DATA)}},
    {"GetWindowsDirectoryA", {none(ERROR_GEN_FAILURE)}},
    {"SetVolumeLabelA", {none(ERROR_WRITE_PROTECT)}},
    {"SHGetDiskFreeSpaceExA", {none(ERROR_NOT_READY)}},

    // Pipes and waiting
    {"ConnectNamedPipe", {none(ERROR_NO_DATA)}},
    {"CreateNamedPipeW", {invalidHandle(ERROR_PIPE_BUSY)}},
    {"CreatePipe", {none(ERROR_NO_SYSTEM_RESOURCES)}},
    {"DisconnectNamedPipe", {none(ERROR_INVALID_HANDLE)}},
    {"SetHandleInformation", {none(ERROR_INVALID_HANDLE)}},
    {"SetNamedPipeHandleState", {none(ERROR_PIPE_NOT_CONNECTED)}},
    {"WaitForSingleObject", {result(WAIT_FAILED, ERROR_INVALID_HANDLE)}},
    {"WaitNamedPipeW", {none(ERROR_SEM_TIMEOUT)}},

    // Processes
    {"CreateEnvironmentBlock", {none(ERROR_ACCESS_DENIED)}},
    {"CreateProcessAsUserW", {none(ERROR_ACCESS_DENIED)}},
    {"CreateToolhelp32Snapshot", {invalidHandle(ERROR_BAD_LENGTH)}},
    {"DestroyEnvironmentBlock", {givenBack(FALSE, ERROR_INVALID_PARAMETER)}},
    {"GetExitCodeProcess", {none(ERROR_ACCESS_DENIED)}},
    {"GetUserProfileDirectoryW", {none(ERROR_FILE_NOT_FOUND), none(ERROR_INSUFFICIENT_BUFFER)}},
    {"LoadUserProfileW", {none(ERROR_ACCESS_DENIED)}},
    {"NtQueryInformationProcess", {status(accessDenied)}},
    {"OpenProcess", {none(ERROR_ACCESS_DENIED)}},
    {"Process32FirstW", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"Process32NextW", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"ProcessIdToSessionId", {none(ERROR_ACCESS_DENIED)}},
    {"ReadProcessMemory", {none(ERROR_PARTIAL_COPY)}},
    {"SetPriorityClass", {none(ERROR_ACCESS_DENIED)}},
    {"TerminateProcess", {none(ERROR_ACCESS_DENIED)}},
    {"UnloadUserProfile", {none(ERROR_ACCESS_DENIED)}},
    {"WTSQueryUserToken", {none(ERROR_NO_TOKEN)}},
    {"IsWow64Process", {none(ERROR_INVALID_HANDLE)}},

    // Libraries
    {"FreeLibrary", {givenBack(FALSE, ERROR_INVALID_HANDLE)}},
    {"GetModuleHandleA", {none(ERROR_MOD_NOT_FOUND)}},
    {"GetProcAddress", {none(ERROR_PROC_NOT_FOUND)}},
    {"LoadLibraryA", {none(ERROR_MOD_NOT_FOUND)}},

    // Registry
    {"RegCloseKey", {givenBack(ERROR_INVALID_HANDLE, ERROR_SUCCESS)}},
    {"RegCreateKeyExA", {status(ERROR_ACCESS_DENIED)}},
    {"RegCreateKeyExW", {status(ERROR_ACCESS_DENIED)}},
    {"RegEnumKeyExA", {status(ERROR_KEY_DELETED), status(ERROR_MORE_DATA)}},
    {"RegEnumValueA", {status(ERROR_KEY_DELETED), status(ERROR_MORE_DATA)}},
    {"RegLoadKeyW", {status(ERROR_NOT_REGISTRY_FILE)}},
    {"RegOpenKeyExA", {status(ERROR_ACCESS_DENIED)}},
    {"RegOpenKeyExW", {status(ERROR_ACCESS_DENIED)}},
    {"RegQueryInfoKeyA", {status(ERROR_KEY_DELETED)}},
    {"RegQueryValueExA", {status(ERROR_ACCESS_DENIED), outgrownBehind(5, ERROR_MORE_DATA)}},
    {"RegQueryValueExW", {status(ERROR_ACCESS_DENIED), outgrownBehind(5, ERROR_MORE_DATA)}},
    {"RegSetValueExA", {status(ERROR_ACCESS_DENIED)}},
    {"RegSetValueExW", {status(ERROR_ACCESS_DENIED)}},
    {"RegUnLoadKeyW", {status(ERROR_ACCESS_DENIED)}},

    // Tokens, accounts, security
    {"AccessCheck", {none(ERROR_INVALID_SECURITY_DESCR)}},
    {"AdjustTokenPrivileges", {none(ERROR_ACCESS_DENIED), result(TRUE, ERROR_NOT_ALL_ASSIGNED)}},
    {"ConvertSecurityDescriptorToStringSecurityDescriptorW", {none(ERROR_INVALID_SECURITY_DESCR)}},
    {"ConvertStringSecurityDescriptorToSecurityDescriptorW", {none(ERROR_INVALID_PARAMETER)}},
    {"DuplicateTokenEx", {none(ERROR_ACCESS_DENIED)}},
    {"GetFileSecurityW", {none(ERROR_ACCESS_DENIED), outgrown(3)}},
    {"GetNamedSecurityInfoW", {status(ERROR_ACCESS_DENIED)}},
    {"GetSecurityDescriptorDacl", {none(ERROR_INVALID_SECURITY_DESCR)}},
    {"GetSecurityDescriptorGroup", {none(ERROR_INVALID_SECURITY_DESCR)}},
    {"GetSecurityDescriptorOwner", {none(ERROR_INVALID_SECURITY_DESCR)}},
    {"GetTokenInformation", {none(ERROR_ACCESS_DENIED), outgrown(3)}},
    {"GetUserNameW", {none(ERROR_NONE_MAPPED), none(ERROR_INSUFFICIENT_BUFFER)}},
    {"ImpersonateLoggedOnUser", {none(ERROR_ACCESS_DENIED)}},
    {"InitializeSid", {none(ERROR_INVALID_PARAMETER)}},
    {"LogonUserA", {none(ERROR_LOGON_FAILURE)}},
    {"LogonUserW", {none(ERROR_LOGON_FAILURE)}},
    {"LookupAccountNameW", {none(ERROR_NONE_MAPPED), outgrownBehind(3)}},
    {"LookupAccountSidA", {none(ERROR_NONE_MAPPED)}},
    {"LookupAccountSidW", {none(ERROR_NONE_MAPPED), outgrownBehind(3)}},
    {"LookupPrivilegeValueA", {none(ERROR_NO_SUCH_PRIVILEGE)}},
    {"OpenProcessToken", {none(ERROR_ACCESS_DENIED)}},
    {"OpenThreadToken", {none(ERROR_NO_TOKEN)}},
    {"RevertToSelf", {givenBack(FALSE, ERROR_ACCESS_DENIED)}},
    {"SetEntriesInAclW", {status(ERROR_NONE_MAPPED)}},
    {"SetFileSecurityW", {none(ERROR_ACCESS_DENIED)}},
    {"SetNamedSecurityInfoW", {status(ERROR_ACCESS_DENIED)}},
    {"SetSecurityInfo", {status(ERROR_ACCESS_DENIED)}},

    // A security provider
    {"AcceptSecurityContext", {failed(SEC_E_LOGON_DENIED)}},
    {"AcquireCredentialsHandleW", {failed(SEC_E_NO_CREDENTIALS)}},
    {"CompleteAuthToken", {failed(SEC_E_INVALID_TOKEN)}},
    {"InitializeSecurityContextW", {failed(SEC_E_INVALID_TOKEN)}},
    {"QuerySecurityContextToken", {failed(SEC_E_NO_IMPERSONATION)}},
    {"QuerySecurityPackageInfoW", {failed(SEC_E_SECPKG_NOT_FOUND)}},

    // Services and the event log
    {"CloseServiceHandle", {givenBack(FALSE, ERROR_INVALID_HANDLE)}},
    {"DeregisterEventSource", {givenBack(FALSE, ERROR_INVALID_HANDLE)}},
    {"OpenSCManagerW", {none(ERROR_ACCESS_DENIED)}},
    {"OpenServiceW", {none(ERROR_SERVICE_DOES_NOT_EXIST)}},
    {"QueryServiceStatusEx", {none(ERROR_ACCESS_DENIED)}},
    {"RegisterEventSourceW", {none(RPC_S_SERVER_UNAVAILABLE)}},
    {"ReportEventW", {none(ERROR_LOG_FILE_FULL)}},

    // Network and directory
    {"ADsEnumerateNext", {failed(E_FAIL)}},
    {"ADsGetObject", {failed(E_ADS_UNKNOWN_OBJECT)}},
    {"InternetGetConnectedState", {none(ERROR_NOT_CONNECTED)}},
    {"NetApiBufferFree", {givenBack(ERROR_INVALID_PARAMETER, ERROR_SUCCESS)}},
    {"NetUserGetGroups", {status(NERR_UserNotFound)}},
    {"NetUserGetLocalGroups", {status(NERR_UserNotFound)}},
    {"NetUserModalsGet", {status(ERROR_ACCESS_DENIED)}},
    {"WNetCancelConnectionW", {status(ERROR_NOT_CONNECTED)}},
    {"WNetCloseEnum", {givenBack(ERROR_INVALID_HANDLE, ERROR_SUCCESS)}},
    {"WNetEnumResourceW", {status(ERROR_NO_NETWORK), status(ERROR_MORE_DATA)}},
    {"WNetGetUniversalNameW", {status(ERROR_NOT_CONNECTED), outgrownBehind(3, ERROR_MORE_DATA)}},
    {"WNetGetUserW", {status(ERROR_NOT_CONNECTED), outgrownBehind(2, ERROR_MORE_DATA)}},
    {"WNetOpenEnumW", {status(ERROR_NO_NETWORK)}},
    {"WNetUseConnectionW", {status(ERROR_BAD_NETPATH)}},
    {"directory.ADsGetObject", {failed(E_ADS_UNKNOWN_OBJECT)}},
    {"directory.ExecuteSearch", {failed(E_ACCESSDENIED)}},
    {"directory.GetColumn", {failed(E_ADS_COLUMN_NOT_SET)}},
    {"directory.GetNextRow", {failed(E_FAIL)}},
    {"directory.GetObjectAttributes", {failed(E_ACCESSDENIED)}},
    {"directory.IsMember", {failed(E_ACCESSDENIED)}},
    {"directory.Members", {failed(E_ACCESSDENIED)}},
    {"directory.Next", {failed(E_FAIL)}},
    {"directory.QueryInterface", {failed(E_NOINTERFACE)}},
    {"directory.SetSearchPreference", {failed(E_ADS_BAD_PARAMETER)}},
    {"directory.get_ADsPath", {failed(E_OUTOFMEMORY)}},
    {"directory.get__NewEnum", {failed(E_FAIL)}},

    // COM, WMI, the shell
    {"CoCreateInstance", {failed(REGDB_E_CLASSNOTREG)}},
    {"CoInitializeEx", {failed(E_OUTOFMEMORY), failed(RPC_E_CHANGED_MODE)}},
    {"CoInitializeSecurity", {failed(E_OUTOFMEMORY)}},
    {"CoSetProxyBlanket", {failed(E_INVALIDARG)}},
    {"VariantChangeType", {failed(DISP_E_TYPEMISMATCH)}},
    {"IEnumShellItems.Next", {failed(E_FAIL)}},
    {"IEnumWbemClassObject.Next", {failed(WBEM_E_TRANSPORT_FAILURE)}},
    {"IPersistFile.Load", {failed(E_FAIL)}},
    {"IShellItem.GetDisplayName", {failed(E_INVALIDARG)}},
    {"IShellItemArray.EnumItems", {failed(E_OUTOFMEMORY)}},
    {"IShellLibrary.GetFolders", {failed(E_OUTOFMEMORY)}},
    {"IShellLibrary.GetIcon", {failed(E_FAIL)}},
    {"IShellLibrary.LoadLibraryFromItem", {failed(E_FAIL)}},
    {"IShellLinkW.GetPath", {failed(E_FAIL)}},
    {"IShellLinkW.QueryInterface", {failed(E_NOINTERFACE)}},
    {"IShellLinkW.Resolve", {failed(E_FAIL)}},
    {"IWbemClassObject.Get", {failed(WBEM_E_NOT_FOUND)}},
    {"IWbemLocator.ConnectServer", {failed(WBEM_E_ACCESS_DENIED)}},
    {"IWbemLocator.QueryInterface", {failed(E_NOINTERFACE)}},
    {"IWbemServices.ExecQuery", {failed(WBEM_E_INVALID_CLASS)}},
    {"IWbemServices.QueryInterface", {failed(E_NOINTERFACE)}},
    {"SHCreateItemFromParsingName", {failed(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))}},
    {"SHGetFileInfoW", {none(ERROR_FILE_NOT_FOUND)}},
    {"SHGetFolderPathW", {failed(E_FAIL)}},

    // Icons
    {"CreateCompatibleBitmap", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"CreateCompatibleDC", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"CreateSolidBrush", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"DeleteDC", {givenBack(FALSE, ERROR_INVALID_HANDLE)}},
    {"DeleteObject", {givenBack(FALSE, ERROR_INVALID_HANDLE)}},
    {"DestroyIcon", {givenBack(FALSE, ERROR_INVALID_HANDLE)}},
    {"DrawIconEx", {none(ERROR_INVALID_HANDLE)}},
    {"ExtractIconExW", {result(allOnes32, ERROR_FILE_NOT_FOUND)}},
    {"GetDC", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"GetDIBits", {none(ERROR_INVALID_PARAMETER)}},
    {"GetObjectA", {none(ERROR_INVALID_HANDLE)}},
    {"PatBlt", {none(ERROR_INVALID_HANDLE)}},
    {"ReleaseDC", {givenBack(FALSE, ERROR_INVALID_HANDLE)}},
    {"SelectObject", {none(ERROR_INVALID_HANDLE)}},

    // Texts and facts
    {"ExpandEnvironmentStringsW", {none(ERROR_NOT_ENOUGH_MEMORY), outgrown(2)}},
    {"FormatMessageW", {none(ERROR_MR_MID_NOT_FOUND)}},
    {"GetComputerNameExW", {none(ERROR_NO_SUCH_DOMAIN), none(ERROR_MORE_DATA)}},
    {"GetConsoleOutputCP", {none(ERROR_INVALID_HANDLE)}},
    {"GetUserGeoID", {{.result = allOnes32}}},
    {"GetVersionExA", {none(ERROR_INSUFFICIENT_BUFFER)}},
    {"MultiByteToWideChar", {none(ERROR_NO_UNICODE_TRANSLATION)}},
    {"SetEnvironmentVariableW", {none(ERROR_NOT_ENOUGH_MEMORY)}},
    {"WideCharToMultiByte", {none(ERROR_NO_UNICODE_TRANSLATION)}},
    {"Wow64EnableWow64FsRedirection", {none(ERROR_INVALID_FUNCTION)}},
    {"_getch", {{.result = allOnes32}}},
    {"_wgetenv_s", {{.result = EINVAL}}},
    {"fflush", {{.result = allOnes32}}},
    {"fputs", {{.result = allOnes32}}},
    {"fwrite", {{}}},
};

}  // namespace

const FailingFunction* failingFunction(const std::string& name) {
    const auto found =
        std::ranges::find_if(functions, [&](const FailingFunction& each) { return each.name == name; });
    return found == std::end(functions) ? nullptr : &*found;
}

bool isTriedAgain(const std::string& name) {
    constexpr std::string_view names[] = {"CreateDirectoryW",   "CreateFileW",      "CreateSymbolicLinkW",
                                          "DeleteFileW",        "FindFirstFileW",   "GetFileAttributesExW",
                                          "GetFileAttributesW", "GetFileSecurityW", "MoveFileW",
                                          "SetFileAttributesW", "SetFileSecurityW"};
    return std::ranges::find(names, name) != std::end(names);
}

}  // namespace testbed
