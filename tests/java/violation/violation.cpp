// Natives that break the rules of the JNI, one rule each, under names of the library's own methods: loaded in
// place of the library, they show that the gate over the checked natives is awake.
#include <com_qarvo_kel_util_WindowsUtil.h>

namespace {

jmethodID toStringMethod(JNIEnv* env, jobject object) {
    return env->GetMethodID(env->GetObjectClass(object), "toString", "()Ljava/lang/String;");
}

}  // namespace

// Goes on after a call into Java without a look for its exception.
JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_exists(JNIEnv* env, jobject caller, jstring) {
    const jmethodID toString = toStringMethod(env, caller);
    env->CallObjectMethod(caller, toString);
    env->CallObjectMethod(caller, toString);
    return JNI_FALSE;
}

// Keeps a local reference for every one of forty items; a native method has room for 32.
JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isDir(JNIEnv* env, jobject caller, jstring) {
    for (int i = 0; i < 40; ++i) {
        env->GetObjectClass(caller);
    }
    return JNI_FALSE;
}

// Takes the length of what is no array.
JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_mkdir(JNIEnv* env, jobject caller, jstring) {
    env->GetArrayLength(static_cast<jarray>(caller));
    return JNI_FALSE;
}

// Asks for a class by its descriptor where a name is due.
JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getFileAttr(JNIEnv* env, jobject, jstring name) {
    const char* descriptor = env->GetStringUTFChars(name, nullptr);
    env->FindClass(descriptor);
    env->ReleaseStringUTFChars(name, descriptor);
    return 0;
}
