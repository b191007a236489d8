// Network drives: connecting, listing, and the names behind a drive letter.
#include "bridge/java_strings.h"
#include "exports/entry.h"
#include "network/connections.h"
#include "network/net_resources.h"
#include "network/universal_name.h"

using namespace winutil;

namespace {

// Raises what made a connection, or its end, fail.
void throwConnectionError(JNIEnv* env, DWORD code) noexcept {
    if (code != NO_ERROR) {
        // Required: cancelling fails under the tag of the other call, because the Java side knows both by it.
        throwWin32Error(env, L"WNetUseConnectionW", code);
    }
}

}  // namespace

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_netUse(JNIEnv* env, jobject, jstring user,
                                                                  jstring password, jstring remoteName) {
    const Arguments arguments(env, wide(user), wideSecret(password), wide(remoteName));
    throwConnectionError(env,
                         arguments ? arguments.pass(network::connectShare) : DWORD{ERROR_NOT_ENOUGH_MEMORY});
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_removeNetUsed(JNIEnv* env, jobject, jstring name) {
    const Arguments arguments(env, wide(name));
    throwConnectionError(
        env, arguments ? arguments.pass(network::disconnectShare) : DWORD{ERROR_NOT_ENOUGH_MEMORY});
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_getNetUsed(JNIEnv* env, jobject,
                                                                          jobject collector) {
    return toJava(network::listNetResources(env, collector));
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getUserByNetUsedPath(JNIEnv* env, jobject,
                                                                                   jstring path) {
    const Arguments arguments(env, wide(path));
    network::ConnectionUser user = {};
    const DWORD code =
        arguments ? network::readConnectionUser(arguments.get<0>(), user) : DWORD{ERROR_NOT_ENOUGH_MEMORY};
    jstring text = newJavaString(env, user);
    if (code != NO_ERROR) {
        throwWin32Error(env, L"WNetGetUserW", code);
    }
    return text;
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getUNC(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, wide(path));
    const WideString universal = arguments ? arguments.pass(network::universalNameOf) : WideString();
    return universal ? newJavaString(env, universal.get()) : path;
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isNetworkConnected(JNIEnv*, jobject) {
    return toJava(network::isConnected());
}
