// Stands between modules of a Java process and what they import: refuses the JVM a block of memory, and
// answers calls of the library that this system does not implement.
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cwchar>
#include <vector>

#include "pe_image.h"

namespace {

// One function that a loaded module imports, which can be replaced and put back.
class ImportedFunction {
public:
    // Returns false when the module is not loaded, or imports nothing of that name.
    bool replace(const wchar_t* moduleName, const char* name, const void* replacement) {
        const HMODULE module = GetModuleHandleW(moduleName);
        if (module == nullptr) {
            return false;
        }
        const auto imports = testbed::PeImage::ofModule(module).imports();
        const auto found = std::ranges::find(imports, name, &testbed::Import::name);
        if (found == imports.end()) {
            return false;
        }
        cell_ = reinterpret_cast<PVOID*>(reinterpret_cast<std::byte*>(module) + found->addressCell);
        // Known before the first call arrives, and kept: a thread may still be inside when it is put back.
        original_ = *cell_;
        return point(const_cast<PVOID>(replacement));
    }

    void restore() { point(original_); }

    template <class Function>
    Function* original() const {
        return reinterpret_cast<Function*>(original_);
    }

private:
    bool point(PVOID target) {
        DWORD protection = 0;
        if (!VirtualProtect(cell_, sizeof *cell_, PAGE_READWRITE, &protection)) {
            return false;
        }
        // In one piece: other threads call through it meanwhile.
        InterlockedExchangePointer(cell_, target);
        return VirtualProtect(cell_, sizeof *cell_, protection, &protection) != FALSE;
    }

    PVOID* cell_ = nullptr;
    PVOID original_ = nullptr;
};

ImportedFunction jvmMalloc;
std::atomic<std::size_t> refusedSize;
std::atomic<DWORD> refusedThread;
std::atomic<int> refusals;

void* refusingMalloc(std::size_t size) {
    if (size != refusedSize || GetCurrentThreadId() != refusedThread) {
        return jvmMalloc.original<void*(std::size_t)>()(size);
    }
    ++refusals;
    // Whoever needs a code must not find it by chance: no allocator promises a last error.
    SetLastError(ERROR_SUCCESS);
    return nullptr;
}

ImportedFunction logon;
int logons;

// Logs everybody on as the user of the process.
BOOL WINAPI logOnAsSelf(LPCSTR, LPCSTR, LPCSTR, DWORD, DWORD, PHANDLE token) {
    ++logons;
    HANDLE own = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_DUPLICATE | TOKEN_QUERY, &own)) {
        return FALSE;
    }
    const BOOL done =
        DuplicateTokenEx(own, MAXIMUM_ALLOWED, nullptr, SecurityImpersonation, TokenPrimary, token);
    CloseHandle(own);
    return done;
}

ImportedFunction attributes;
ImportedFunction attributeWord;
wchar_t deniedName[MAX_PATH];

// Tells whether only the privilege to back up gives access to a path.
bool isDenied(LPCWSTR path) {
    if (std::wcsstr(path, deniedName) == nullptr) {
        return false;
    }
    SetLastError(ERROR_ACCESS_DENIED);
    return true;
}

BOOL WINAPI denyAttributes(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data) {
    const auto original = attributes.original<BOOL WINAPI(LPCWSTR, GET_FILEEX_INFO_LEVELS, LPVOID)>();
    return isDenied(path) ? FALSE : original(path, level, data);
}

DWORD WINAPI denyAttributeWord(LPCWSTR path) {
    return isDenied(path) ? INVALID_FILE_ATTRIBUTES : attributeWord.original<DWORD WINAPI(LPCWSTR)>()(path);
}

constexpr ULONG importBlockSize = 70'003;  // a size that nobody else asks for

ImportedFunction rawImport;
ULONGLONG importedBytes;
DWORD importCode;

// Takes block after block until one is empty, or until the callback has a code, which is then the result: the
// first is a complete file, the second is not.
DWORD WINAPI importRaw(PFE_IMPORT_FUNC nextBlock, PVOID callbackContext, PVOID) {
    std::vector<BYTE> block(importBlockSize);
    importedBytes = 0;
    for (;;) {
        ULONG length = importBlockSize;
        importCode = nextBlock(block.data(), callbackContext, &length);
        if (importCode != ERROR_SUCCESS || length == 0) {
            return importCode;
        }
        importedBytes += length;
    }
}

}  // namespace

#define EXPORTED extern "C" __declspec(dllexport)

// From here on the JVM gets no block of this size on the calling thread.
EXPORTED BOOL refuseMemory(std::size_t size) {
    refusals = 0;
    refusedSize = size;
    refusedThread = GetCurrentThreadId();
    return jvmMalloc.replace(L"jvm.dll", "malloc", reinterpret_cast<const void*>(refusingMalloc));
}

// Ends it, and returns how many blocks were refused.
EXPORTED int allowMemory() {
    jvmMalloc.restore();
    return refusals;
}

// From here on the library's logons and raw imports end here.
EXPORTED BOOL standIn(const wchar_t* library) {
    logons = 0;
    return logon.replace(library, "LogonUserA", reinterpret_cast<const void*>(logOnAsSelf)) &&
           rawImport.replace(library, "WriteEncryptedFileRaw", reinterpret_cast<const void*>(importRaw));
}

EXPORTED void standAside() {
    logon.restore();
    rawImport.restore();
}

// From here on the library does not get the attributes of what has this in its path.
EXPORTED BOOL denyAttributesOf(const wchar_t* library, const wchar_t* part) {
    lstrcpynW(deniedName, part, MAX_PATH);
    return attributes.replace(library, "GetFileAttributesExW",
                              reinterpret_cast<const void*>(denyAttributes)) &&
           attributeWord.replace(library, "GetFileAttributesW",
                                 reinterpret_cast<const void*>(denyAttributeWord));
}

EXPORTED void allowAttributes() {
    attributes.restore();
    attributeWord.restore();
}

EXPORTED int countLogons() {
    return logons;
}

EXPORTED LONGLONG countImportedBytes() {
    return static_cast<LONGLONG>(importedBytes);
}

// How the last raw import ended: with ERROR_SUCCESS at an empty block, else with this code of the callback.
EXPORTED DWORD lastImportCode() {
    return importCode;
}
