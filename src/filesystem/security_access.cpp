#include "filesystem/security_access.h"

#include "account/logon.h"
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
    const wchar_t* target = readablePath(path, longForm);
    if (target == nullptr) {
        return false;
    }
    const auto descriptor = readDescriptor(target, recordSecurity, firstDescriptorSize);
    if (!descriptor || !*descriptor) {
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
    return AccessCheck(descriptor->get(), token, access, &mapping, &privileges, &privilegesSize, &granted,
                       &allowed) &&
           allowed;
}

bool checkOrThrow(JNIEnv* env, const wchar_t* path, HANDLE token, DWORD access) noexcept {
    if (checkAccess(path, token, access)) {
        return true;
    }
    throwWin32Error(env, checkAccessTag, GetLastError());
    return false;
}

bool hasUser(const NarrowCredentials& account) noexcept {
    return account.user != nullptr && *account.user != '\0';
}

}  // namespace

bool isAccessRead(JNIEnv* env, const wchar_t* path, const NarrowCredentials& account) noexcept {
    ErrorBuffer errorBuffer;
    if (!hasUser(account) || !account::logonAndImpersonate(account, errorBuffer)) {
        throwIOException(env, errorBuffer.text());
        return false;
    }
    const account::SelfAtEnd self;
    KernelHandle token;
    // Required: unlike the check for writing, this one makes do with the process when the thread has no
    // token, because the Java side relies on it.
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.receive()) &&
        !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.receive())) {
        // Required: the doubled negation, because the message is known by its wording.
        throwIOException(env, L"Cannot not get current process");
        return false;
    }
    return checkOrThrow(env, path, token.get(), readRight);
}

bool isAccessWrite(JNIEnv* env, const wchar_t* path, const NarrowCredentials& account) noexcept {
    ErrorBuffer errorBuffer;
    if (hasUser(account)) {
        // Required: not asked how it went, because without the logon the thread's own token decides.
        account::logonAndImpersonate(account, errorBuffer);
    }
    KernelHandle token;
    if (!OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.receive())) {
        throwIOException(env, errorBuffer.text());
        return false;
    }
    return checkOrThrow(env, path, token.get(), writeRight);
}

}  // namespace winutil::filesystem
