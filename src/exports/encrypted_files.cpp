// Encrypted-file raw streaming.
#include "filesystem/encrypted_files.h"
#include "exports/entry.h"

using namespace winutil;

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_openEncryptFile(JNIEnv* env, jobject,
                                                                            jstring path, jlong flags) {
    const Arguments arguments(env, inPlace(path));
    if (!arguments.orThrow(filesystem::openEncryptedTag)) {
        return 0;
    }
    ErrorBuffer errorBuffer;
    const PVOID context =
        filesystem::openEncryptedFile(arguments.get<0>(), static_cast<ULONG>(flags), errorBuffer);
    if (!errorBuffer.empty()) {
        throwIOException(env, errorBuffer.text());
    }
    return toJavaHandle(context);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_readEncryptFile(JNIEnv* env, jobject,
                                                                           jlong context, jobject out) {
    return static_cast<jint>(filesystem::exportEncryptedFile(env, fromJavaHandle<void>(context), out));
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_writeEncryptFile(JNIEnv* env, jobject,
                                                                            jlong context, jobject in) {
    return static_cast<jint>(filesystem::importEncryptedFile(env, fromJavaHandle<void>(context), in));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_closeEncryptFile(JNIEnv*, jobject, jlong context) {
    CloseEncryptedFileRaw(fromJavaHandle<void>(context));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_interruptEncryptFile(JNIEnv*, jobject) {
    filesystem::interruptExports();
}
