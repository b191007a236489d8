#include <algorithm>
#include <string_view>

#include "fault_table.h"

namespace testbed {

namespace {

struct Reason {
    const char* why;
    std::vector<std::string_view> names;
};

const Reason reasons[] = {
    {"gives back and has no result that says more",
     {"CloseEncryptedFileRaw", "CoTaskMemFree", "CoUninitialize", "DeleteCriticalSection",
      "DeleteSecurityContext", "FreeADsMem", "FreeContextBuffer", "FreeCredentialsHandle", "GlobalFree",
      "GlobalUnlock", "LeaveCriticalSection", "LocalFree", "SysFreeString", "VariantClear", "free",
      "directory.CloseSearchHandle", "directory.FreeColumn"}},
    {"works on memory that is there",
     {"CompareStringOrdinal",
      "EqualSid",
      "GetSidIdentifierAuthority",
      "GetSidLengthRequired",
      "GetSidSubAuthority",
      "GetSidSubAuthorityCount",
      "IsValidSid",
      "PathParseIconLocationW",
      "StringFromGUID2",
      "VariantInit",
      "__stdio_common_vsnprintf_s",
      "__stdio_common_vsnwprintf_s",
      "_snprintf_s",
      "_snwprintf_s",
      "_stricmp",
      "_strnicmp",
      "_wcsicmp",
      "_wcsnicmp",
      "iswctype",
      "lstrcpyW",
      "lstrlenW",
      "memchr",
      "memcmp",
      "memcpy",
      "memmove",
      "memset",
      "strlen",
      "strncmp",
      "strstr",
      "wcscat_s",
      "wcschr",
      "wcscpy_s",
      "wcslen",
      "wcsncat_s",
      "wcsncmp",
      "wcsncpy_s",
      "wcsstr",
      "wsprintfW"}},
    {"has no failure",
     {"AcquireSRWLockExclusive",
      "AcquireSRWLockShared",
      "EnterCriticalSection",
      "GetACP",
      "GetCurrentProcess",
      "GetCurrentProcessId",
      "GetCurrentThread",
      "GetCurrentThreadId",
      "GetLastError",
      "GetProcessHeap",
      "GetSystemInfo",
      "GetSystemTimeAsFileTime",
      "InitializeCriticalSection",
      "InitializeCriticalSectionAndSpinCount",
      "QueryPerformanceCounter",
      "ReleaseSRWLockExclusive",
      "ReleaseSRWLockShared",
      "SetLastError",
      "Sleep",
      "_errno",
      "__acrt_iob_func",
      "__iob_func"}},
    {"answers a question, and its no is no failure", {"IsUserAnAdmin"}},
    {"is called by the compiler's start-up code, while the library loads",
     {"TlsGetValue", "VirtualProtect", "VirtualQuery", "_amsg_exit", "_initterm", "_lock", "_unlock", "abort",
      "vfprintf",
      // That of another compiler
      "__daylight", "__p___argc", "__p___argv", "__p___wargv", "__p__environ", "__p__wenviron",
      "__stdio_common_vfprintf", "__stdio_common_vfwprintf", "__timezone", "__tzname",
      "_configure_narrow_argv", "_configure_wide_argv", "_crt_at_quick_exit", "_crt_atexit",
      "_execute_onexit_table", "_exit", "_initialize_narrow_environment", "_initialize_onexit_table",
      "_initialize_wide_environment", "_register_onexit_function", "_set_new_mode", "_tzset"}},
};

}  // namespace

const char* reasonNotToFail(const std::string& name) {
    for (const Reason& reason : reasons) {
        if (std::ranges::find(reason.names, name) != reason.names.end()) {
            return reason.why;
        }
    }
    return nullptr;
}

}  // namespace testbed
