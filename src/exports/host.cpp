// The host: named pipes, the event log, the environment and facts about the system.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <combaseapi.h>
#include <conio.h>
#include <shlobj.h>

#include "bridge/java_strings.h"
#include "bridge/optional_functions.h"
#include "exports/entry.h"
#include "host/environment.h"
#include "host/event_log.h"
#include "host/pipes.h"
#include "host/system_facts.h"

using namespace winutil;

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getPipeSlotPath(JNIEnv* env, jobject) {
    return newJavaString(env, host::backupPipeName);
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getMessagePipeSlotPath(JNIEnv* env, jobject) {
    return newJavaString(env, host::messagePipeName);
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_connectPipe(JNIEnv* env, jobject,
                                                                          jstring name) {
    const Arguments arguments(env, wide(name));
    if (!arguments.orOutOfMemory()) {
        return nullptr;
    }
    host::MessageBytes message;
    host::serveClient(arguments.get<0>(), message);
    // Required: the bytes as they are, because callers know a message so: of UTF-16 text in English its first
    // character.
    return env->NewStringUTF(message);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_sendPipe(JNIEnv* env, jobject, jstring name,
                                                                    jstring message) {
    const Arguments arguments(env, wide(name), wide(message));
    return arguments.orOutOfMemory() ? arguments.pass(host::sendMessage) : 0;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_createEventLog(JNIEnv* env, jobject,
                                                                          jstring source, jstring message,
                                                                          jint kind,
                                                                          jboolean alternativeEvent) {
    const Arguments arguments(env, wide(source), wideOrEmpty(message));
    if (arguments.orOutOfMemory()) {
        host::writeEvent(arguments.get<0>(), arguments.get<1>(), kind, fromJava(alternativeEvent));
    }
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getEnv(JNIEnv* env, jobject, jstring name) {
    const Arguments arguments(env, wide(name));
    if (!arguments.orOutOfMemory()) {
        return nullptr;
    }
    const std::optional<WideString> value = arguments.pass(host::environmentVariable);
    if (!value) {
        throwOutOfMemoryError(env);
        return nullptr;
    }
    return *value ? newJavaString(env, value->get()) : nullptr;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_setEnvironmentVariable(JNIEnv* env, jobject,
                                                                                  jstring name,
                                                                                  jstring value) {
    constexpr wchar_t tag[] = L"SetEnvironmentVariableW";
    const Arguments arguments(env, wide(name), wide(value));
    if (!arguments.orThrow(tag)) {
        return;
    }
    if (const std::optional<DWORD> failure = arguments.pass(host::setEnvironmentVariable)) {
        throwWin32Error(env, tag, *failure);
    }
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSHfolderPath(JNIEnv* env, jobject,
                                                                              jint folderId) {
    host::FolderPath path;
    return host::specialFolder(folderId, path) ? newJavaString(env, path) : nullptr;
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getMajorVersion(JNIEnv*, jobject) {
    return static_cast<jint>(host::systemVersion().dwMajorVersion);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getMinorVersion(JNIEnv*, jobject) {
    return static_cast<jint>(host::systemVersion().dwMinorVersion);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getProductType(JNIEnv*, jobject) {
    return host::productType();
}

// Required: no from a 64-bit build whatever the system, because the Java side knows which build it loaded.
JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isWindows64(JNIEnv*, jobject) {
    return toJava(isWow64());
}

JNIEXPORT jboolean JNICALL
Java_com_qarvo_kel_util_WindowsUtil_Wow64EnableWow64FsRedirection(JNIEnv*, jobject, jboolean enable) {
    return toJava(enableWow64Redirection(fromJava(enable)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isUserAnAdmin(JNIEnv*, jobject) {
    return toJava(IsUserAnAdmin() != FALSE);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLocationID(JNIEnv*, jobject) {
    return GetUserGeoID(GEOCLASS_NATION);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getConsoleChar(JNIEnv*, jobject) {
    return _getch();
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_CoInitializeEx(JNIEnv*, jobject,
                                                                          jint concurrencyModel) {
    return CoInitializeEx(nullptr, static_cast<DWORD>(concurrencyModel));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_CoUninitialize(JNIEnv*, jobject) {
    CoUninitialize();
}
