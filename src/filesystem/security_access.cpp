#include "filesystem/security_access.h"

#include "bridge/errors.h"
#include "bridge/owners.h"
#include "bridge/paths.h"
#include "filesystem/security_text.h"

namespace winutil::filesystem {

namespace {

constexpr DWORD firstDescriptorSize = 256;  // bytes

// Rights of the check's own making, which the generic mapping translates a descriptor's generic rights to.
constexpr DWORD readRight = 1;
constexpr DWORD writeRight = 2;

// Returns whether the token may do to the path what `access` says; a no has its reason in the last error.
bool checkAccess(const wchar_t* path, HANDLE token, DWORD access) noexcept {
    WideString longForm;
    const wchar_t* target = path;
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!readAttributeData(path, &data) && !hasLongPrefix(path)) {
        longForm = toLongPath(path);
        target = longForm.get();
    }
    const HeapMemory<std::byte> descriptor = readDescriptor(target, recordSecurity, firstDescriptorSize);
    if (!descriptor) {
        return false;
    }
    GENERIC_MAPPING mapping = {.GenericRead = readRight,
                               .GenericWrite = writeRight,
                               .GenericExecute = 0,
                               .GenericAll = readRight | writeRight};
    PRIVILEGE_SET privileges = {};
    static_assert(sizeof(privileges) == 20);
    DWORD privilegesSize = sizeof(privileges);
    DWORD granted = 0;
    BOOL allowed = FALSE;
    return AccessCheck(descriptor.get(), token, access, &mapping, &privileges, &privilegesSize, &granted,
                       &allowed) &&
           allowed;
}

bool checkOrThrow(JNIEnv* env, const wchar_t* path, HANDLE token, DWORD access) noexcept {
    if (checkAccess(path, token, access)) {
        return true;
    }
    ErrorBuffer message;
    formatWin32Error(L"CheckAccessToFile", GetLastError(), message.text(), ErrorBuffer::capacity);
    throwIOException(env, message.text());
    return false;
}

bool hasUser(const account::NarrowCredentials& account) noexcept {
    return account.user != nullptr && *account.user != '\0';
}

}  // namespace

bool isAccessRead(JNIEnv* env, const wchar_t* path, const account::NarrowCredentials& account) noexcept {
    ErrorBuffer message;
    if (!hasUser(account) || !account::logonAndImpersonate(account, message)) {
        throwIOException(env, message.text());
        return false;
    }
    const account::SelfAtEnd self;
    KernelHandle token;
    // Unlike the check for writing, this one makes do with the process when the thread has no token.
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.receive()) &&
        !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.receive())) {
        // The doubled negation is no slip to mend: the message is known by its wording.
        throwIOException(env, L"Cannot not get current process");
        return false;
    }
    return checkOrThrow(env, path, token.get(), readRight);
}

bool isAccessWrite(JNIEnv* env, const wchar_t* path, const account::NarrowCredentials& account) noexcept {
    ErrorBuffer message;
    if (hasUser(account)) {
        // Not asked how it went: without the logon, the thread's token decides.
        account::logonAndImpersonate(account, message);
    }
    KernelHandle token;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.receive())) {
        throwIOException(env, message.text());
        return false;
    }
    return checkOrThrow(env, path, token.get(), writeRight);
}

}  // namespace winutil::filesystem
