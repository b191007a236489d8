// Logon, impersonation and credential validation; SIDs, groups and account names.
#include "account/account_names.h"
#include "account/computer_domain.h"
#include "account/group_membership.h"
#include "account/logon.h"
#include "account/system_message.h"
#include "account/user_groups.h"
#include "account/validation.h"
#include "bridge/java_strings.h"
#include "exports/entry.h"

using namespace winutil;

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_impersonateUser(JNIEnv* env, jobject,
                                                                              jstring domain, jstring user,
                                                                              jstring password) {
    const Arguments arguments(env, narrow(domain), narrow(user), narrowSecret(password));
    ErrorBuffer errorBuffer;
    bool done = false;
    if (arguments) {
        done = arguments.pass(
            [&](auto... texts) noexcept { return account::logonAndImpersonate({texts...}, errorBuffer); });
    } else {
        account::appendSystemMessage(errorBuffer, account::logonTag, ERROR_NOT_ENOUGH_MEMORY);
    }
    account::cutMessage(errorBuffer);
    jstring text = newJavaString(env, errorBuffer.text());
    if (!done) {
        throwIOException(env, errorBuffer.text());
    }
    if (done && text == nullptr) {
        // The caller sees the JVM's error and no impersonation that it would have to end.
        const account::SelfAtEnd self;
    }
    return text;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_impersonateToSelf(JNIEnv* env, jobject) {
    ErrorBuffer errorBuffer;
    if (!account::impersonateToSelf(errorBuffer)) {
        account::cutMessage(errorBuffer);
        throwIOException(env, errorBuffer.text());
    }
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_validateUserNative(JNIEnv* env, jobject,
                                                                              jstring domain, jstring user,
                                                                              jstring password) {
    const Arguments arguments(env, wideOrEmpty(domain), wideOrEmpty(user), wideSecret(password));
    ErrorBuffer errorBuffer;
    auto verdict = account::Verdict::refused;
    if (arguments) {
        verdict = arguments.pass(
            [&](auto... texts) noexcept { return account::validateUser({texts...}, errorBuffer); });
    } else {
        account::appendSystemMessage(errorBuffer, L"", ERROR_NOT_ENOUGH_MEMORY);
    }
    if (verdict == account::Verdict::restricted) {
        throwAccountRestrictionException(env, errorBuffer.text());
    } else if (verdict == account::Verdict::refused) {
        throwIOException(env, errorBuffer.text());
    }
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_networkAuthenticate(JNIEnv* env, jobject,
                                                                                  jstring domain,
                                                                                  jstring user,
                                                                                  jstring password) {
    const Arguments arguments(env, wideOrEmpty(domain), wideOrEmpty(user), wideSecret(password));
    if (arguments) {
        arguments.pass([](auto... texts) noexcept { account::networkAuthenticate({texts...}); });
    }
    return newJavaString(env, L"");
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getUsername(JNIEnv* env, jobject) {
    account::UserName name;
    return newJavaString(env, account::userName(name) ? name : L"");
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getDomainName(JNIEnv* env, jobject) {
    account::ComputerName domain;
    return newJavaString(env, account::computerDnsDomain(domain) ? domain : L"UNKNOWN-DOMAIN");
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getV6DomainName(JNIEnv* env, jobject) {
    account::AnsiDomain domain;
    // Required: the ANSI name goes to Java as modified UTF-8, because the Java side has ASCII names, which
    // are the same in both.
    return env->NewStringUTF(account::currentUserDomain(domain) ? domain : "");
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getNetBIOSComputerName(JNIEnv* env, jobject) {
    const WideString name = account::netBiosComputerName();
    return newJavaString(env, name ? name.get() : L"");
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSID(JNIEnv* env, jobject) {
    account::SidText text;
    return env->NewStringUTF(account::currentUserSid(text) ? text : "");
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSIDForUser(JNIEnv* env, jobject,
                                                                            jstring domain, jstring user) {
    if (user == nullptr) {
        return env->NewStringUTF("");
    }
    const Arguments arguments(env, wideOrEmpty(domain), wide(user));
    if (!arguments.orOutOfMemory()) {
        return nullptr;
    }
    account::SidText text;
    const std::optional<bool> found =
        arguments.pass([&](auto... names) noexcept { return account::accountSid(names..., text); });
    if (!found) {
        throwOutOfMemoryError(env);
        return nullptr;
    }
    return env->NewStringUTF(*found ? text : "");
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getDomainUserGroups(JNIEnv* env, jobject,
                                                                               jstring server, jstring user,
                                                                               jobject collector) {
    if (collector == nullptr) {
        return;
    }
    const Arguments arguments(env, wideOrEmpty(server), wide(user));
    if (arguments.orOutOfMemory()) {
        account::addUserGroups(env, arguments.get<0>(), arguments.get<1>(), collector);
    }
}

JNIEXPORT jobject JNICALL Java_com_qarvo_kel_util_WindowsUtil_isMemberOf(JNIEnv* env, jobject,
                                                                         jobject groups) {
    return groups == nullptr ? nullptr : account::groupsWithoutMembership(env, groups);
}
