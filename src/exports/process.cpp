// Processes: launching them, what becomes of them, and looking at others.
#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "exports/entry.h"
#include "process/child.h"
#include "process/command_line.h"
#include "process/handle_cell.h"
#include "process/launch.h"
#include "process/own_process.h"
#include "process/process_list.h"
#include "process/services.h"
#include "process/termination.h"

using namespace winutil;
using process::toCell;

JNIEXPORT jobject JNICALL Java_com_qarvo_kel_util_WindowsUtil_createProcessAsUserN(
    JNIEnv* env, jobject, jstring application, jstring commandLine, jobject, jstring workingDirectory,
    jstring domain, jstring user, jstring password) {
    return process::launchAsUser(
        env, {.application = application, .commandLine = commandLine, .workingDirectory = workingDirectory},
        {.domain = domain, .user = user, .password = password});
}

JNIEXPORT jobject JNICALL Java_com_qarvo_kel_util_WindowsUtil_createProcessAsUserSession(
    JNIEnv* env, jobject, jstring application, jstring commandLine, jobject, jstring workingDirectory,
    jint sessionId) {
    return process::launchInSession(
        env, {.application = application, .commandLine = commandLine, .workingDirectory = workingDirectory},
        static_cast<DWORD>(sessionId));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_closeHandle(JNIEnv*, jobject, jlong cell) {
    process::closeCell(toCell(cell));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_unloadUserProfile(JNIEnv*, jobject,
                                                                             jlong tokenCell,
                                                                             jlong profileCell) {
    process::unloadProfile(toCell(tokenCell), toCell(profileCell));
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_waitForSingleObject(JNIEnv*, jobject, jlong cell) {
    return static_cast<jint>(process::waitForEnd(toCell(cell)));
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_exitValue(JNIEnv* env, jobject, jlong cell) {
    return static_cast<jint>(process::exitCode(env, toCell(cell)));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_endProcess(JNIEnv* env, jobject, jlong cell) {
    process::endChild(env, toCell(cell));
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_readHandle(JNIEnv* env, jobject, jlong cell,
                                                                      jbyteArray buffer, jint offset,
                                                                      jint length) {
    return process::readOutput(env, toCell(cell), buffer, offset, length);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_setPriority(JNIEnv*, jobject) {
    return process::lowerPriority();
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSessionId(JNIEnv*, jobject) {
    return static_cast<jint>(process::ownSession());
}

JNIEXPORT jobject JNICALL Java_com_qarvo_kel_util_WindowsUtil_getProcessInfo(JNIEnv* env, jobject,
                                                                             jstring executableName) {
    return process::listProcesses(env, executableName);
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getProcessCommandLineArguments(
    JNIEnv* env, jobject, jlong processId, jboolean verbose) {
    return process::processCommandLine(env, static_cast<DWORD>(processId), fromJava(verbose));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_terminateProcessByProcessID(JNIEnv* env,
                                                                                           jobject,
                                                                                           jlong processId,
                                                                                           jboolean verbose) {
    return toJava(process::terminate(env, static_cast<DWORD>(processId), fromJava(verbose)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isServiceRunning(JNIEnv* env, jobject,
                                                                                jstring serviceName) {
    const WideString name = toWideString(env, serviceName);
    if (!name && exceptionPending(env)) {
        return JNI_FALSE;
    }
    return toJava(process::isServiceRunning(env, name.get()));
}
