// Logon, impersonation and credential validation; SIDs, groups and account names.
#include "account/account_names.h"
#include "account/computer_domain.h"
#include "account/group_membership.h"
#include "account/logon.h"
#include "account/system_message.h"
#include "account/user_groups.h"
#include "account/validation.h"
#include "bridge/errors.h"
#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "bridge/secret_text.h"
#include "exports/account_chars.h"
#include "exports/entry.h"

using namespace winutil;

namespace {

// The text of a string that may be null.
WideString textOrEmpty(JNIEnv* env, jstring text) noexcept {
    return text == nullptr ? copyText(L"", 0) : toWideString(env, text);
}

// The three strings of an account for the Unicode calls; null strings count as empty.
class WideAccount {
public:
    // Nothing more is taken behind a string that there was no memory for.
    WideAccount(JNIEnv* env, jstring domain, jstring user, jstring password) noexcept
        : domain_(textOrEmpty(env, domain)),
          user_(domain_ ? textOrEmpty(env, user) : WideString()),
          password_(env, user_ ? password : nullptr) {}

    // False when memory is exhausted.
    explicit operator bool() const noexcept { return domain_ && user_ && password_; }

    account::Credentials get() const noexcept {
        return {.domain = domain_.get(), .user = user_.get(), .password = password_.get()};
    }

private:
    WideString domain_;
    WideString user_;
    SecretText password_;
};

}  // namespace

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_impersonateUser(JNIEnv* env, jobject,
                                                                              jstring domain, jstring user,
                                                                              jstring password) {
    const AccountChars credentials(env, domain, user, password);
    if (!credentials) {
        return nullptr;
    }
    wchar_t message[account::messageCapacity] = {};
    const bool done = account::logonAndImpersonate(credentials.get(), message);
    jstring text = newJavaString(env, message);
    if (!done && text != nullptr) {
        throwIOException(env, message);
    }
    if (done && text == nullptr) {
        // The caller sees the JVM's error and no impersonation that it would have to end.
        const account::SelfAtEnd self;
    }
    return text;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_impersonateToSelf(JNIEnv* env, jobject) {
    wchar_t message[account::messageCapacity] = {};
    if (!account::impersonateToSelf(message)) {
        throwIOException(env, message);
    }
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_validateUserNative(JNIEnv* env, jobject,
                                                                              jstring domain, jstring user,
                                                                              jstring password) {
    const WideAccount credentials(env, domain, user, password);
    if (credentials) {
        account::validateUser(env, credentials.get());
    } else if (!exceptionPending(env)) {
        // No exception would say that the credentials are good.
        throwSystemText(env, ERROR_NOT_ENOUGH_MEMORY);
    }
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_networkAuthenticate(JNIEnv* env, jobject,
                                                                                  jstring domain,
                                                                                  jstring user,
                                                                                  jstring password) {
    const WideAccount credentials(env, domain, user, password);
    if (credentials) {
        account::networkAuthenticate(credentials.get());
    } else if (exceptionPending(env)) {
        return nullptr;
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

// The bytes of the ANSI name go to Java as they are: right for ASCII names.
JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getV6DomainName(JNIEnv* env, jobject) {
    account::AnsiDomain domain;
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
    const WideString wideDomain = textOrEmpty(env, domain);
    const WideString wideUser = wideDomain ? toWideString(env, user) : WideString();
    if (!wideUser && exceptionPending(env)) {
        return nullptr;
    }
    account::SidText text;
    const bool found = wideUser && account::accountSid(wideDomain.get(), wideUser.get(), text);
    return env->NewStringUTF(found ? text : "");
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getDomainUserGroups(JNIEnv* env, jobject,
                                                                               jstring server, jstring user,
                                                                               jobject collector) {
    if (collector == nullptr) {
        return;
    }
    const WideString wideServer = textOrEmpty(env, server);
    if (!wideServer) {
        return;
    }
    const WideString wideUser = toWideString(env, user);
    if (wideUser) {
        account::addUserGroups(env, wideServer.get(), wideUser.get(), collector);
    }
}

JNIEXPORT jobject JNICALL Java_com_qarvo_kel_util_WindowsUtil_isMemberOf(JNIEnv* env, jobject,
                                                                         jobject groups) {
    return groups == nullptr ? nullptr : account::groupsWithoutMembership(env, groups);
}
