// The registry: one-level listing, single values, keys and hives.
#include <cstring>

#include "bridge/java_arrays.h"
#include "bridge/java_strings.h"
#include "exports/entry.h"
#include "registry/hives.h"
#include "registry/keys.h"
#include "registry/listing.h"
#include "registry/values.h"

using namespace winutil;

namespace {

// The text that was read, or the empty one of a failure.
jstring textOrEmpty(JNIEnv* env, const WideString& text) noexcept {
    return newJavaString(env, text ? text.get() : L"");
}

jboolean writeText(JNIEnv* env, jstring path, jstring text, DWORD type) noexcept {
    const Arguments arguments(env, narrow(path), narrow(text));
    const char* const bytes = arguments.get<1>();
    // Required: without the terminating zero, because the Java side has always stored its texts so.
    return toJava(arguments && bytes != nullptr &&
                  registry::writeValue(arguments.get<0>(), type, bytes, std::strlen(bytes)));
}

}  // namespace

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_listRegistry(JNIEnv* env, jobject,
                                                                        jobject collector, jstring rootName,
                                                                        jstring keyPath) {
    const Arguments arguments(env, narrow(rootName), narrow(keyPath));
    if (arguments.orOutOfMemory()) {
        registry::listRegistry(env, collector, arguments.get<0>(), arguments.get<1>());
    }
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setRegistryDWORD(JNIEnv* env, jobject,
                                                                                jstring path, jlong value) {
    const Arguments arguments(env, narrow(path));
    const auto number = static_cast<DWORD>(value);
    return toJava(arguments && registry::writeValue(arguments.get<0>(), REG_DWORD, &number, sizeof(number)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setRegistryDWORDW(JNIEnv* env, jobject,
                                                                                 jstring path, jlong value) {
    const Arguments arguments(env, wide(path));
    const auto number = static_cast<DWORD>(value);
    return toJava(arguments && registry::writeValue(arguments.get<0>(), REG_DWORD, &number, sizeof(number)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setRegistryString(JNIEnv* env, jobject,
                                                                                 jstring path, jstring text) {
    return writeText(env, path, text, REG_SZ);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setRegistryStringW(JNIEnv* env, jobject,
                                                                                  jstring path,
                                                                                  jstring text) {
    const Arguments arguments(env, wide(path), inPlace(text));
    if (!arguments || arguments.get<1>() == nullptr) {
        return JNI_FALSE;
    }
    // Required: without the terminating zero, because its narrow sibling stores none either.
    const auto length = static_cast<std::size_t>(env->GetStringLength(text));
    return toJava(
        registry::writeValue(arguments.get<0>(), REG_SZ, arguments.get<1>(), length * sizeof(wchar_t)));
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
    const Arguments arguments(env, narrow(path));
    if (!arguments) {
        return JNI_FALSE;
    }
    const ByteElements elements(env, data, 0);
    // The bounds are the caller's.
    return toJava(elements && registry::writeValue(arguments.get<0>(), REG_BINARY, elements.get() + offset,
                                                   static_cast<std::size_t>(length)));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_getRegistryDWORD(JNIEnv* env, jobject,
                                                                             jstring path) {
    const Arguments arguments(env, narrow(path));
    return arguments ? arguments.pass(registry::readDword) : -1;
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getRegistryString(JNIEnv* env, jobject,
                                                                                jstring path) {
    const Arguments arguments(env, narrow(path));
    return textOrEmpty(env, arguments ? registry::readText(arguments.get<0>()) : WideString());
}

JNIEXPORT jbyteArray JNICALL Java_com_qarvo_kel_util_WindowsUtil_getRegistryBinary(JNIEnv* env, jobject,
                                                                                   jstring path) {
    const Arguments arguments(env, narrow(path));
    const registry::SmallValue value(arguments ? arguments.get<0>() : nullptr);
    return newByteArray(env, value.bytes());
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getRegistryValueString(JNIEnv* env, jobject,
                                                                                     jstring key,
                                                                                     jstring valueName) {
    const Arguments arguments(env, narrow(key), narrow(valueName));
    return textOrEmpty(env,
                       arguments ? registry::readText(arguments.get<0>(), arguments.get<1>()) : WideString());
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getRegistryValue(JNIEnv* env, jobject,
                                                                               jstring path, jint extraAccess,
                                                                               jint expectedType) {
    const Arguments arguments(env, wide(path));
    return textOrEmpty(env, arguments
                                ? registry::readText(arguments.get<0>(), static_cast<REGSAM>(extraAccess),
                                                     static_cast<DWORD>(expectedType))
                                : WideString());
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_makeNewRegistryKey(JNIEnv* env, jobject,
                                                                                  jstring rootName,
                                                                                  jstring keyPath) {
    const Arguments arguments(env, wide(rootName), wide(keyPath));
    return toJava(arguments && arguments.pass(registry::makeKey));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_loadRegistry(JNIEnv* env, jobject,
                                                                            jstring rootName, jstring keyName,
                                                                            jstring hiveFile) {
    const Arguments arguments(env, wide(rootName), wide(keyName), wide(hiveFile));
    return toJava(arguments && arguments.pass(registry::loadHive));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_unloadRegistry(JNIEnv* env, jobject,
                                                                              jstring rootName,
                                                                              jstring keyName) {
    const Arguments arguments(env, wide(rootName), wide(keyName));
    return toJava(arguments && arguments.pass(registry::unloadHive));
}
