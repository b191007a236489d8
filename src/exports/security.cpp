// Security descriptors, access checks and privilege switches.
#include <memory>

#include "account/logon.h"
#include "bridge/errors.h"
#include "bridge/ex_callback.h"
#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "bridge/legacy.h"
#include "bridge/privileges.h"
#include "bridge/system_version.h"
#include "exports/account_chars.h"
#include "exports/entry.h"
#include "filesystem/file_attributes.h"
#include "filesystem/security_access.h"
#include "filesystem/security_acl.h"
#include "filesystem/security_setting.h"
#include "filesystem/security_text.h"

using namespace winutil;

namespace {

// Raises that memory ran out, unless the JVM has said so already: for methods whose silence means success.
void throwNoMemory(JNIEnv* env) noexcept {
    if (!exceptionPending(env)) {
        throwSystemText(env, ERROR_NOT_ENOUGH_MEMORY);
    }
}

struct JavaAccount {
    jstring domain;
    jstring user;
    jstring password;
};

using AccessCheckWorker = bool(JNIEnv* env, const wchar_t* path, const account::NarrowCredentials& account);

bool checkAccess(JNIEnv* env, jstring path, const JavaAccount& account, AccessCheckWorker* worker) noexcept {
    const WideString widePath = toWideString(env, path);
    if (!widePath) {
        throwNoMemory(env);
        return false;
    }
    const AccountChars credentials(env, account.domain, account.user, account.password);
    return credentials && worker(env, widePath.get(), credentials.get());
}

}  // namespace

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getWinSecurityDescriptor(
    JNIEnv* env, jobject caller, jstring path, jint securityInformation, jobject listener) {
    const std::unique_ptr<CExCallback> events(new CExCallback(env, caller, listener));
    const WideString widePath = toWideString(env, path);
    if (!widePath) {
        // Without a path there is no file to report.
        return emptyUnlessPending(env);
    }
    OSVERSIONINFOA version;
    WideString text;
    if (readSystemVersion(version) && version.dwMajorVersion >= 5) {
        text = filesystem::getSecurityDescriptorText(
            widePath.get(), static_cast<SECURITY_INFORMATION>(securityInformation), true, true);
    }
    if (text) {
        return newJavaString(env, text.get());
    }
    const SystemText reason(GetLastError());
    jstring empty = newJavaString(env, L"");
    if (events && empty != nullptr) {
        events->fireFileErrorEvent(widePath.get(), reason.get());
    }
    return empty;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_setFileAttr(JNIEnv* env, jobject, jstring path,
                                                                       jint attributes) {
    if (const WideString widePath = toWideString(env, path)) {
        filesystem::setFileAttr(env, widePath.get(), static_cast<DWORD>(attributes));
    }
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setFileAttrWithSecurityDescriptor(
    JNIEnv* env, jobject, jstring path, jint securityInformation, jstring descriptorText, jint attributes) {
    const WideString widePath = toWideString(env, path);
    WideString text;
    if (widePath) {
        text = descriptorText == nullptr ? copyText(L"", 0) : toWideString(env, descriptorText);
    }
    if (!text) {
        throwNoMemory(env);
        return JNI_FALSE;
    }
    return toJava(filesystem::setFileAttrWithSecurityDescriptor(
        env, widePath.get(), static_cast<SECURITY_INFORMATION>(securityInformation), text.get(),
        static_cast<DWORD>(attributes)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isAccessRead(JNIEnv* env, jobject,
                                                                            jstring path, jstring domain,
                                                                            jstring user, jstring password) {
    return toJava(checkAccess(env, path, {domain, user, password}, filesystem::isAccessRead));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isAccessWrite(JNIEnv* env, jobject,
                                                                             jstring path, jstring domain,
                                                                             jstring user, jstring password) {
    // Also on the ways that end before the check, and for an impersonation of the caller's own.
    const account::SelfAtEnd self;
    return toJava(checkAccess(env, path, {domain, user, password}, filesystem::isAccessWrite));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_setFileACL(JNIEnv* env, jobject, jstring path,
                                                                      jstring trustee, jint permissions,
                                                                      jint mode) {
    const TerminatedChars pathChars(env, path);
    if (!pathChars) {
        return;
    }
    const TerminatedChars trusteeChars(env, trustee);
    if (trusteeChars) {
        filesystem::setFileAcl(pathChars.get(), trusteeChars.get(), static_cast<DWORD>(permissions),
                               static_cast<DWORD>(mode));
    }
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_enableSecurityPrivilege(JNIEnv*, jobject) {
    return toJava(setPrivilege("SeSecurityPrivilege", TRUE) == 0);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_enableTakeOwnershipPrivilege(JNIEnv*,
                                                                                            jobject) {
    return toJava(setPrivilege("SeTakeOwnershipPrivilege", TRUE) == 0);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_enableRestorePrivilege(JNIEnv*, jobject) {
    return toJava(setPrivilege("SeRestorePrivilege", TRUE) == 0);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_enableBackupPrivilege(JNIEnv*, jobject) {
    return toJava(setPrivilege("SeBackupPrivilege", TRUE) == 0);
}
