// What the library asks of Windows in passing, for every fuzz target. What an input answers is in the target
// itself. windows.h comes first: the others build on it.
#include <windows.h>

#include <lmcons.h>
// lmapibuf.h needs the types of lmcons.h.
#include <lmapibuf.h>
#include <oleauto.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "bridge/optional_functions.h"
#include "bridge/standard_output.h"
#include "bridge/system_version.h"
#include "system.h"

namespace {

DWORD lastError = ERROR_SUCCESS;

// The size of an automation text in front of its characters.
constexpr std::size_t textHeader = sizeof(LONGLONG);

}  // namespace

namespace winutil {

OptionalFunctions& fuzzedFunctions() noexcept {
    static OptionalFunctions functions = {};
    return functions;
}
const OptionalFunctions& optionalFunctions() noexcept {
    return fuzzedFunctions();
}
bool isWow64() noexcept {
    return false;
}
bool readSystemVersion(OSVERSIONINFOA& version) noexcept {
    version.dwPlatformId = VER_PLATFORM_WIN32_NT;
    return true;
}
void printText(const char*) noexcept {}
void printText(const wchar_t* text) noexcept {
    static_cast<void>(std::wcslen(text));
}

}  // namespace winutil

extern "C" {

DWORD WINAPI GetLastError() {
    return lastError;
}
void WINAPI SetLastError(DWORD code) {
    lastError = code;
}
BOOL WINAPI CloseHandle(HANDLE) {
    return TRUE;
}

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T size) {
    return (flags & GMEM_ZEROINIT) != 0 ? std::calloc(1, size) : std::malloc(size);
}
LPVOID WINAPI GlobalLock(HGLOBAL block) {
    return block;
}
WINBOOL WINAPI GlobalUnlock(HGLOBAL) {
    return FALSE;
}
HGLOBAL WINAPI GlobalFree(HGLOBAL block) {
    std::free(block);
    return nullptr;
}
HLOCAL WINAPI LocalFree(HLOCAL block) {
    std::free(block);
    return nullptr;
}
HANDLE WINAPI GetProcessHeap() {
    return fuzz::fakeHandle();
}
LPVOID WINAPI HeapAlloc(HANDLE, DWORD, SIZE_T size) {
    return std::calloc(1, size);
}
WINBOOL WINAPI HeapFree(HANDLE, DWORD, LPVOID block) {
    std::free(block);
    return TRUE;
}
DWORD WINAPI NetApiBufferFree(LPVOID buffer) {
    std::free(buffer);
    return 0;
}

int WINAPI lstrlenW(LPCWSTR text) {
    return static_cast<int>(std::wcslen(text));
}
LPWSTR WINAPI lstrcpyW(LPWSTR destination, LPCWSTR source) {
    return std::wmemcpy(destination, source, std::wcslen(source) + 1);
}

// A code page of one byte for each character: all of the source, its terminator included, or as much as there
// is room for.
int WINAPI MultiByteToWideChar(UINT, DWORD, LPCSTR source, int, LPWSTR destination, int room) {
    const std::size_t size = std::strlen(source) + 1;
    const std::size_t count = std::min(size, static_cast<std::size_t>(room));
    std::copy_n(reinterpret_cast<const unsigned char*>(source), count, destination);
    return count == size ? static_cast<int>(size) : 0;
}
int WINAPI WideCharToMultiByte(UINT, DWORD, LPCWSTR source, int, LPSTR destination, int room, LPCSTR,
                               LPBOOL) {
    const std::size_t size = std::wcslen(source) + 1;
    if (room == 0) {
        return static_cast<int>(size);
    }
    const std::size_t count = std::min(size, static_cast<std::size_t>(room));
    std::transform(source, source + count, destination, [](wchar_t unit) { return static_cast<char>(unit); });
    return count == size ? static_cast<int>(size) : 0;
}

DWORD WINAPI FormatMessageW(DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD, va_list*) {
    return 0;
}

WINBOOL WINAPI IsValidSid(PSID sid) {
    const auto* parts = static_cast<const SID*>(sid);
    return parts->Revision == SID_REVISION && parts->SubAuthorityCount <= SID_MAX_SUB_AUTHORITIES;
}
DWORD WINAPI GetSidLengthRequired(UCHAR subAuthorities) {
    return static_cast<DWORD>(offsetof(SID, SubAuthority) + sizeof(DWORD) * subAuthorities);
}

void WINAPI VariantInit(VARIANTARG* value) {
    V_VT(value) = VT_EMPTY;
}
HRESULT WINAPI VariantClear(VARIANTARG* value) {
    if (V_VT(value) == VT_BSTR) {
        SysFreeString(V_BSTR(value));
    }
    V_VT(value) = VT_EMPTY;
    return S_OK;
}
// Numbers convert, texts do not.
HRESULT WINAPI VariantChangeType(VARIANTARG* converted, VARIANTARG* value, USHORT, VARTYPE type) {
    if (V_VT(value) == VT_BSTR) {
        return DISP_E_TYPEMISMATCH;
    }
    V_VT(converted) = type;
    V_I4(converted) = V_I2(value);
    return S_OK;
}
BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length) {
    const std::size_t size = length * sizeof(OLECHAR);
    auto* block = static_cast<char*>(std::malloc(textHeader + size + sizeof(OLECHAR)));
    auto* made = reinterpret_cast<BSTR>(block + textHeader);
    if (text != nullptr) {
        std::memcpy(made, text, size);
    }
    made[length] = L'\0';
    return made;
}
void WINAPI SysFreeString(BSTR text) {
    if (text != nullptr) {
        std::free(reinterpret_cast<char*>(text) - textHeader);
    }
}
}
