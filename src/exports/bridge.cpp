// Path forms and optional system functions.
#include "bridge/java_strings.h"
#include "bridge/optional_functions.h"
#include "bridge/paths.h"
#include "exports/entry.h"

using namespace winutil;

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLongPathName(JNIEnv* env, jobject,
                                                                              jstring path) {
    CallText expanded;
    {
        const Arguments arguments(env, inPlace(path));
        expanded = arguments ? arguments.pass(expandShortNames) : CallText{};
    }
    return expanded.text ? newJavaString(env, {expanded.text.get(), expanded.length}) : path;
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_CovertEnvPathToFilePath(JNIEnv* env, jobject,
                                                                                      jstring path) {
    const Arguments arguments(env, inPlace(path));
    const CallText expanded = arguments ? arguments.pass(expandEnvironmentVariables) : CallText{};
    if (expanded.text) {
        return newJavaString(env, {expanded.text.get(), expanded.length});
    }
    ErrorBuffer errorBuffer;
    errorBuffer.format(L"CovertEnvPathToFilePath",
                       arguments ? GetLastError() : DWORD{ERROR_NOT_ENOUGH_MEMORY});
    throwRuntimeException(env, errorBuffer.text());
    return nullptr;
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isMethodSupported(JNIEnv* env, jobject,
                                                                                 jstring library,
                                                                                 jstring function) {
    const Arguments arguments(env, narrow(library), narrow(function));
    return toJava(arguments.orOutOfMemory() && arguments.pass(isFunctionSupported));
}
