// The host: named pipes, the event log, the environment and facts about the system.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <combaseapi.h>
#include <conio.h>
#include <shlobj.h>

#include "bridge/errors.h"
#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "bridge/legacy.h"
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

// The bytes of the message go to Java as they are, deliberately: of UTF-16 text in English its first
// character arrives.
JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_connectPipe(JNIEnv* env, jobject,
                                                                          jstring name) {
    const WideString wideName = toWideString(env, name);
    if (!wideName) {
        return emptyUnlessPending(env);
    }
    host::MessageBytes message;
    host::serveClient(wideName.get(), message);
    return env->NewStringUTF(message);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_sendPipe(JNIEnv* env, jobject, jstring name,
                                                                    jstring message) {
    const WideString wideName = toWideString(env, name);
    if (!wideName) {
        return 0;
    }
    const WideString wideMessage = toWideString(env, message);
    return wideMessage ? host::sendMessage(wideName.get(), wideMessage.get()) : 0;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_createEventLog(JNIEnv* env, jobject,
                                                                          jstring source, jstring message,
                                                                          jint kind,
                                                                          jboolean alternativeEvent) {
    const WideString wideSource = toWideString(env, source);
    if (!wideSource) {
        return;
    }
    const WideString wideMessage = message == nullptr ? copyText(L"", 0) : toWideString(env, message);
    if (wideMessage) {
        host::writeEvent(wideSource.get(), wideMessage.get(), kind, fromJava(alternativeEvent));
    }
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getEnv(JNIEnv* env, jobject, jstring name) {
    const WideString wideName = toWideString(env, name);
    if (!wideName) {
        return nullptr;
    }
    const WideString value = host::environmentVariable(wideName.get());
    return value ? newJavaString(env, value.get()) : nullptr;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_setEnvironmentVariable(JNIEnv* env, jobject,
                                                                                  jstring name,
                                                                                  jstring value) {
    const WideString wideName = toWideString(env, name);
    const WideString wideValue = wideName ? toWideString(env, value) : WideString();
    if (!wideValue && exceptionPending(env)) {
        return;
    }
    const std::optional<DWORD> failure = wideValue
                                             ? host::setEnvironmentVariable(wideName.get(), wideValue.get())
                                             : DWORD{ERROR_NOT_ENOUGH_MEMORY};
    if (failure) {
        ErrorBuffer text;
        formatWin32Error(L"SetEnvironmentVariableW", *failure, text.text(), ErrorBuffer::capacity);
        throwIOException(env, text.text());
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

// Whether this is a 32-bit process on a 64-bit system: this build's answer is no, on a 64-bit system too, and
// the Java side knows which build it loaded.
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
