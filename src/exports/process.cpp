// Processes: launching them, what becomes of them, and looking at others.
#include "bridge/java_strings.h"
#include "exports/entry.h"
#include "process/child.h"
#include "process/command_line.h"
#include "process/launch.h"
#include "process/own_process.h"
#include "process/process_list.h"
#include "process/services.h"
#include "process/termination.h"

using namespace winutil;

JNIEXPORT jobject JNICALL Java_com_qarvo_kel_util_WindowsUtil_createProcessAsUserN(
    JNIEnv* env, jobject, jstring application, jstring commandLine, jobject, jstring workingDirectory,
    jstring domain, jstring user, jstring password) {
    ErrorBuffer errorBuffer;
    const jobject launched = process::launchAsUser(
        env, {.application = application, .commandLine = commandLine, .workingDirectory = workingDirectory},
        {.domain = domain, .user = user, .password = password}, errorBuffer);
    throwFailure(env, errorBuffer);
    return launched;
}

JNIEXPORT jobject JNICALL Java_com_qarvo_kel_util_WindowsUtil_createProcessAsUserSession(
    JNIEnv* env, jobject, jstring application, jstring commandLine, jobject, jstring workingDirectory,
    jint sessionId) {
    ErrorBuffer errorBuffer;
    const jobject launched = process::launchInSession(
        env, {.application = application, .commandLine = commandLine, .workingDirectory = workingDirectory},
        static_cast<DWORD>(sessionId), errorBuffer);
    throwFailure(env, errorBuffer);
    return launched;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_closeHandle(JNIEnv*, jobject, jlong cell) {
    process::closeCell(fromJavaHandle<HANDLE>(cell));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_unloadUserProfile(JNIEnv*, jobject,
                                                                             jlong tokenCell,
                                                                             jlong profileCell) {
    process::unloadProfile(fromJavaHandle<HANDLE>(tokenCell), fromJavaHandle<HANDLE>(profileCell));
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_waitForSingleObject(JNIEnv*, jobject, jlong cell) {
    return static_cast<jint>(process::waitForEnd(fromJavaHandle<HANDLE>(cell)));
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_exitValue(JNIEnv* env, jobject, jlong cell) {
    ErrorBuffer errorBuffer;
    const DWORD code = process::exitCode(fromJavaHandle<HANDLE>(cell), errorBuffer);
    throwFailure(env, errorBuffer);
    return static_cast<jint>(code);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_endProcess(JNIEnv* env, jobject, jlong cell) {
    ErrorBuffer errorBuffer;
    process::endChild(fromJavaHandle<HANDLE>(cell), errorBuffer);
    throwFailure(env, errorBuffer);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_readHandle(JNIEnv* env, jobject, jlong cell,
                                                                      jbyteArray buffer, jint offset,
                                                                      jint length) {
    ErrorBuffer errorBuffer;
    const jint count =
        process::readOutput(env, fromJavaHandle<HANDLE>(cell), buffer, offset, length, errorBuffer);
    throwFailure(env, errorBuffer);
    return count;
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_setPriority(JNIEnv*, jobject) {
    return process::lowerPriority();
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSessionId(JNIEnv*, jobject) {
    return static_cast<jint>(process::ownSession());
}

JNIEXPORT jobject JNICALL Java_com_qarvo_kel_util_WindowsUtil_getProcessInfo(JNIEnv* env, jobject,
                                                                             jstring executableName) {
    ErrorBuffer errorBuffer;
    const jobject list = process::listProcesses(env, executableName, errorBuffer);
    throwFailure(env, errorBuffer);
    return list;
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getProcessCommandLineArguments(
    JNIEnv* env, jobject, jlong processId, jboolean verbose) {
    process::ForeignText commandLine;
    ErrorBuffer errorBuffer;
    if (process::readCommandLine(processId, fromJava(verbose), commandLine, errorBuffer)) {
        return newJavaString(env, commandLine.view());
    }
    throwFailure(env, errorBuffer);
    return nullptr;
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_terminateProcessByProcessID(JNIEnv* env,
                                                                                           jobject,
                                                                                           jlong processId,
                                                                                           jboolean verbose) {
    ErrorBuffer errorBuffer;
    const bool ended = process::terminate(processId, fromJava(verbose), errorBuffer);
    throwFailure(env, errorBuffer);
    return toJava(ended);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isServiceRunning(JNIEnv* env, jobject,
                                                                                jstring serviceName) {
    const Arguments arguments(env, wide(serviceName));
    ErrorBuffer errorBuffer;
    if (!arguments) {
        errorBuffer.format(process::serviceTag, L"", ERROR_NOT_ENOUGH_MEMORY);
    }
    const bool running = arguments && process::isServiceRunning(arguments.get<0>(), errorBuffer);
    throwFailure(env, errorBuffer);
    return toJava(running);
}
