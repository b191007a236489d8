// Path forms and optional system functions.
#include "bridge/errors.h"
#include "bridge/java_strings.h"
#include "bridge/optional_functions.h"
#include "bridge/paths.h"
#include "exports/entry.h"

using namespace winutil;

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLongPathName(JNIEnv* env, jobject,
                                                                              jstring path) {
    CallText expanded;
    {
        const TerminatedChars chars(env, path);
        if (!chars) {
            return nullptr;
        }
        expanded = expandShortNames(chars.get());
    }
    return expanded.text ? newJavaString(env, {expanded.text.get(), expanded.length}) : path;
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_CovertEnvPathToFilePath(JNIEnv* env, jobject,
                                                                                      jstring path) {
    const TerminatedChars chars(env, path);
    if (!chars) {
        return nullptr;
    }
    const CallText expanded = expandEnvironmentVariables(chars.get());
    if (!expanded.text) {
        ErrorBuffer message;
        formatWin32Error(L"CovertEnvPathToFilePath", GetLastError(), message.text(), ErrorBuffer::capacity);
        throwRuntimeException(env, message.text());
        return nullptr;
    }
    return newJavaString(env, {expanded.text.get(), expanded.length});
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isMethodSupported(JNIEnv* env, jobject,
                                                                                 jstring library,
                                                                                 jstring function) {
    const NarrowChars libraryName(env, library);
    if (!libraryName) {
        return JNI_FALSE;
    }
    const NarrowChars functionName(env, function);
    return toJava(functionName && isFunctionSupported(libraryName.get(), functionName.get()));
}
