// Network drives: connecting, listing, and the names behind a drive letter.
#include "bridge/errors.h"
#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "bridge/secret_text.h"
#include "exports/entry.h"
#include "network/connections.h"
#include "network/net_resources.h"
#include "network/universal_name.h"

using namespace winutil;

namespace {

// Raises an IOException for a code that is not 0.
void throwOnFailure(JNIEnv* env, const wchar_t* tag, DWORD code) noexcept {
    if (code != NO_ERROR) {
        ErrorBuffer message;
        formatWin32Error(tag, code, message.text(), ErrorBuffer::capacity);
        throwIOException(env, message.text());
    }
}

// Connecting and cancelling fail under the tag of the one call, so that both read alike.
void throwConnectionError(JNIEnv* env, DWORD code) noexcept {
    throwOnFailure(env, L"WNetUseConnectionW", code);
}

// What stands for an argument that there was no memory for: no exception would say that the call succeeded.
void throwNoMemory(JNIEnv* env, const wchar_t* tag) noexcept {
    if (!exceptionPending(env)) {
        throwOnFailure(env, tag, ERROR_NOT_ENOUGH_MEMORY);
    }
}

}  // namespace

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_netUse(JNIEnv* env, jobject, jstring user,
                                                                  jstring password, jstring remoteName) {
    const WideString wideUser = toWideString(env, user);
    if (!wideUser) {
        return throwNoMemory(env, L"WNetUseConnectionW");
    }
    const SecretText widePassword(env, password);
    if (!widePassword) {
        return throwNoMemory(env, L"WNetUseConnectionW");
    }
    const WideString wideName = toWideString(env, remoteName);
    if (!wideName) {
        return throwNoMemory(env, L"WNetUseConnectionW");
    }
    throwConnectionError(env, network::connectShare(wideUser.get(), widePassword.get(), wideName.get()));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_removeNetUsed(JNIEnv* env, jobject, jstring name) {
    const WideString wideName = toWideString(env, name);
    if (!wideName) {
        return throwNoMemory(env, L"WNetUseConnectionW");
    }
    throwConnectionError(env, network::disconnectShare(wideName.get()));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_getNetUsed(JNIEnv* env, jobject,
                                                                          jobject collector) {
    return toJava(network::listNetResources(env, collector));
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getUserByNetUsedPath(JNIEnv* env, jobject,
                                                                                   jstring path) {
    const WideString widePath = toWideString(env, path);
    if (!widePath && exceptionPending(env)) {
        return nullptr;
    }
    network::ConnectionUser user = {};
    const DWORD code =
        widePath ? network::readConnectionUser(widePath.get(), user) : DWORD{ERROR_NOT_ENOUGH_MEMORY};
    jstring text = newJavaString(env, user);
    if (text != nullptr) {
        throwOnFailure(env, L"WNetGetUserW", code);
    }
    return text;
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getUNC(JNIEnv* env, jobject, jstring path) {
    const WideString widePath = toWideString(env, path);
    if (!widePath) {
        return path;
    }
    const WideString universal = network::universalName(widePath.get());
    return newJavaString(env, universal ? universal.get() : widePath.get());
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isNetworkConnected(JNIEnv*, jobject) {
    return toJava(network::isConnected());
}
