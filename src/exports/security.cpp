// Security descriptors, access checks and privilege switches.
#include <memory>

#include "account/logon.h"
#include "bridge/ex_callback.h"
#include "bridge/java_strings.h"
#include "bridge/privileges.h"
#include "bridge/system_version.h"
#include "exports/entry.h"
#include "filesystem/file_attributes.h"
#include "filesystem/security_access.h"
#include "filesystem/security_acl.h"
#include "filesystem/security_setting.h"
#include "filesystem/security_text.h"

using namespace winutil;

namespace {

// A path, and the domain, name and password of an account.
using AccessArguments = Arguments<WideText, NarrowText, NarrowText, NarrowText>;

jboolean checkAccess(JNIEnv* env, const AccessArguments& arguments,
                     decltype(filesystem::isAccessRead)* worker) noexcept {
    const NarrowCredentials account{
        .domain = arguments.get<1>(), .user = arguments.get<2>(), .password = arguments.get<3>()};
    return toJava(arguments.orThrow(filesystem::checkAccessTag) && worker(env, arguments.get<0>(), account));
}

}  // namespace

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getWinSecurityDescriptor(
    JNIEnv* env, jobject caller, jstring path, jint securityInformation, jobject listener) {
    const std::unique_ptr<CExCallback> events(new CExCallback(env, caller, listener));
    const Arguments arguments(env, wide(path));
    if (!events || !arguments) {
        throwOutOfMemoryError(env);
        return nullptr;
    }
    OSVERSIONINFOA version;
    WideString text;
    if (readSystemVersion(version) && version.dwMajorVersion >= 5) {
        text = filesystem::getSecurityDescriptorText(
                   arguments.get<0>(), static_cast<SECURITY_INFORMATION>(securityInformation), true, true)
                   .value_or(WideString());
    }
    if (text) {
        return newJavaString(env, text.get());
    }
    const SystemText reason(GetLastError());
    jstring empty = newJavaString(env, L"");
    if (empty != nullptr) {
        events->fireFileErrorEvent(arguments.get<0>(), reason.get());
    }
    return empty;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_setFileAttr(JNIEnv* env, jobject, jstring path,
                                                                       jint attributes) {
    const Arguments arguments(env, wide(path));
    if (!arguments.orOutOfMemory()) {
        return;
    }
    ErrorBuffer errorBuffer;
    orOutOfMemory(env,
                  filesystem::setFileAttr(arguments.get<0>(), static_cast<DWORD>(attributes), errorBuffer));
    throwFailure(env, errorBuffer);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setFileAttrWithSecurityDescriptor(
    JNIEnv* env, jobject, jstring path, jint securityInformation, jstring descriptorText, jint attributes) {
    const Arguments arguments(env, wide(path), wideOrEmpty(descriptorText));
    if (!arguments.orThrow(L"setFileAttrWithSecurityDescriptor")) {
        return JNI_FALSE;
    }
    ErrorBuffer errorBuffer;
    const bool set = filesystem::setFileAttrWithSecurityDescriptor(
        arguments.get<0>(), static_cast<SECURITY_INFORMATION>(securityInformation), arguments.get<1>(),
        static_cast<DWORD>(attributes), errorBuffer);
    throwFailure(env, errorBuffer);
    return toJava(set);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isAccessRead(JNIEnv* env, jobject,
                                                                            jstring path, jstring domain,
                                                                            jstring user, jstring password) {
    const AccessArguments arguments(env, wide(path), narrow(domain), narrow(user), narrowSecret(password));
    return checkAccess(env, arguments, filesystem::isAccessRead);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isAccessWrite(JNIEnv* env, jobject,
                                                                             jstring path, jstring domain,
                                                                             jstring user, jstring password) {
    const AccessArguments arguments(env, wide(path), narrow(domain), narrow(user), narrowSecret(password));
    // Also on the ways that end before the check, and for an impersonation of the caller's own.
    const account::SelfAtEnd self;
    return checkAccess(env, arguments, filesystem::isAccessWrite);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_setFileACL(JNIEnv* env, jobject, jstring path,
                                                                      jstring trustee, jint permissions,
                                                                      jint mode) {
    if (const Arguments arguments(env, inPlace(path), inPlace(trustee)); arguments) {
        filesystem::setFileAcl(arguments.get<0>(), arguments.get<1>(), static_cast<DWORD>(permissions),
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
