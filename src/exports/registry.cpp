// The registry: one-level listing, single values, keys and hives.
#include <cstring>

#include "bridge/java_arrays.h"
#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "bridge/legacy.h"
#include "exports/entry.h"
#include "registry/hives.h"
#include "registry/keys.h"
#include "registry/listing.h"
#include "registry/values.h"

using namespace winutil;

namespace {

// The text that was read, or the empty one of a failure; null behind a failure of the JVM's own.
jstring toJava(JNIEnv* env, const WideString& text) noexcept {
    if (!text && exceptionPending(env)) {
        return nullptr;
    }
    return newJavaString(env, text ? text.get() : L"");
}

jboolean writeText(JNIEnv* env, jstring path, jstring text, DWORD type) noexcept {
    const NarrowChars narrowPath(env, path);
    if (narrowPath.get() == nullptr) {
        return JNI_FALSE;
    }
    const NarrowChars narrowText(env, text);
    // Without the terminating zero, which is kept so on purpose.
    return winutil::toJava(
        narrowText.get() != nullptr &&
        registry::writeValue(narrowPath.get(), type, narrowText.get(), std::strlen(narrowText.get())));
}

}  // namespace

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_listRegistry(JNIEnv* env, jobject,
                                                                        jobject collector, jstring rootName,
                                                                        jstring keyPath) {
    const NarrowChars narrowRoot(env, rootName);
    if (narrowRoot.get() == nullptr) {
        return;
    }
    const NarrowChars narrowPath(env, keyPath);
    if (narrowPath.get() != nullptr) {
        registry::listRegistry(env, collector, narrowRoot.get(), narrowPath.get());
    }
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setRegistryDWORD(JNIEnv* env, jobject,
                                                                                jstring path, jlong value) {
    const NarrowChars narrowPath(env, path);
    const auto number = static_cast<DWORD>(value);
    return winutil::toJava(narrowPath.get() != nullptr &&
                           registry::writeValue(narrowPath.get(), REG_DWORD, &number, sizeof(number)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setRegistryDWORDW(JNIEnv* env, jobject,
                                                                                 jstring path, jlong value) {
    const WideString widePath = toWideString(env, path);
    const auto number = static_cast<DWORD>(value);
    return winutil::toJava(widePath &&
                           registry::writeValue(widePath.get(), REG_DWORD, &number, sizeof(number)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setRegistryString(JNIEnv* env, jobject,
                                                                                 jstring path, jstring text) {
    return writeText(env, path, text, REG_SZ);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setRegistryStringW(JNIEnv* env, jobject,
                                                                                  jstring path,
                                                                                  jstring text) {
    const WideString widePath = toWideString(env, path);
    if (!widePath) {
        return JNI_FALSE;
    }
    const TerminatedChars chars(env, text);
    if (!chars) {
        return JNI_FALSE;
    }
    // Without the terminating zero, like its narrow sibling.
    const auto length = static_cast<std::size_t>(env->GetStringLength(text));
    return winutil::toJava(
        registry::writeValue(widePath.get(), REG_SZ, chars.get(), length * sizeof(wchar_t)));
}

// A U+0000 in the text arrives as the two bytes that stand for it in modified UTF-8: it separates nothing.
JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setRegistryMultiString(JNIEnv* env, jobject,
                                                                                      jstring path,
                                                                                      jstring text) {
    return writeText(env, path, text, REG_MULTI_SZ);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setRegistryBinary(JNIEnv* env, jobject,
                                                                                 jstring path,
                                                                                 jbyteArray data, jint offset,
                                                                                 jint length) {
    const NarrowChars narrowPath(env, path);
    if (narrowPath.get() == nullptr) {
        return JNI_FALSE;
    }
    const ByteElements elements(env, data, 0);
    // The bounds are the caller's.
    return winutil::toJava(elements &&
                           registry::writeValue(narrowPath.get(), REG_BINARY, elements.get() + offset,
                                                static_cast<std::size_t>(length)));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_getRegistryDWORD(JNIEnv* env, jobject,
                                                                             jstring path) {
    const NarrowChars narrowPath(env, path);
    return narrowPath.get() == nullptr ? -1 : registry::readDword(narrowPath.get());
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getRegistryString(JNIEnv* env, jobject,
                                                                                jstring path) {
    const NarrowChars narrowPath(env, path);
    return toJava(env, narrowPath.get() == nullptr ? WideString() : registry::readText(narrowPath.get()));
}

JNIEXPORT jbyteArray JNICALL Java_com_qarvo_kel_util_WindowsUtil_getRegistryBinary(JNIEnv* env, jobject,
                                                                                   jstring path) {
    const NarrowChars narrowPath(env, path);
    if (!narrowPath) {
        return nullptr;
    }
    if (narrowPath.get() == nullptr) {
        return newByteArray(env, {});
    }
    return newByteArray(env, registry::SmallValue(narrowPath.get()).bytes());
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getRegistryValueString(JNIEnv* env, jobject,
                                                                                     jstring key,
                                                                                     jstring valueName) {
    const NarrowChars narrowKey(env, key);
    if (narrowKey.get() == nullptr) {
        return toJava(env, {});
    }
    const NarrowChars narrowName(env, valueName);
    return toJava(env, narrowName.get() == nullptr ? WideString()
                                                   : registry::readText(narrowKey.get(), narrowName.get()));
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getRegistryValue(JNIEnv* env, jobject,
                                                                               jstring path, jint extraAccess,
                                                                               jint expectedType) {
    const WideString widePath = toWideString(env, path);
    return toJava(env, widePath ? registry::readText(widePath.get(), static_cast<REGSAM>(extraAccess),
                                                     static_cast<DWORD>(expectedType))
                                : WideString());
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_makeNewRegistryKey(JNIEnv* env, jobject,
                                                                                  jstring rootName,
                                                                                  jstring keyPath) {
    const WideString wideRoot = toWideString(env, rootName);
    if (!wideRoot) {
        return JNI_FALSE;
    }
    const WideString widePath = toWideString(env, keyPath);
    return winutil::toJava(widePath && registry::makeKey(wideRoot.get(), widePath.get()));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_loadRegistry(JNIEnv* env, jobject,
                                                                            jstring rootName, jstring keyName,
                                                                            jstring hiveFile) {
    const WideString wideRoot = toWideString(env, rootName);
    if (!wideRoot) {
        return JNI_FALSE;
    }
    const WideString wideName = toWideString(env, keyName);
    if (!wideName) {
        return JNI_FALSE;
    }
    const WideString wideFile = toWideString(env, hiveFile);
    return winutil::toJava(wideFile && registry::loadHive(wideRoot.get(), wideName.get(), wideFile.get()));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_unloadRegistry(JNIEnv* env, jobject,
                                                                              jstring rootName,
                                                                              jstring keyName) {
    const WideString wideRoot = toWideString(env, rootName);
    if (!wideRoot) {
        return JNI_FALSE;
    }
    const WideString wideName = toWideString(env, keyName);
    return winutil::toJava(wideName && registry::unloadHive(wideRoot.get(), wideName.get()));
}
