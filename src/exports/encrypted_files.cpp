// Encrypted-file raw streaming.
#include "filesystem/encrypted_files.h"
#include "exports/entry.h"

using namespace winutil;

namespace {

// The system's own word, as it gave it: any value is one.
PVOID toContext(jlong context) noexcept {
    return reinterpret_cast<PVOID>(context);
}

}  // namespace

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_openEncryptFile(JNIEnv* env, jobject,
                                                                            jstring path, jlong flags) {
    const Arguments arguments(env, inPlace(path));
    if (!arguments.orThrow(filesystem::openEncryptedTag)) {
        return 0;
    }
    ErrorBuffer errorBuffer;
    const PVOID context =
        filesystem::openEncryptedFile(arguments.get<0>(), static_cast<ULONG>(flags), errorBuffer);
    throwFailure(env, errorBuffer);
    return reinterpret_cast<jlong>(context);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_readEncryptFile(JNIEnv* env, jobject,
                                                                           jlong context, jobject out) {
    return static_cast<jint>(filesystem::exportEncryptedFile(env, toContext(context), out));
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_writeEncryptFile(JNIEnv* env, jobject,
                                                                            jlong context, jobject in) {
    return static_cast<jint>(filesystem::importEncryptedFile(env, toContext(context), in));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_closeEncryptFile(JNIEnv*, jobject, jlong context) {
    CloseEncryptedFileRaw(toContext(context));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_interruptEncryptFile(JNIEnv*, jobject) {
    filesystem::interruptExports();
}
