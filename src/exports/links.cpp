// Junctions and symbolic links.
#include "filesystem/links.h"

#include "bridge/java_strings.h"
#include "exports/entry.h"

using namespace winutil;

namespace {

// Makes a link from `link` to `target`, or raises an IOException that names the method.
jboolean createLink(JNIEnv* env, const wchar_t* method, jstring link, jstring target,
                    decltype(filesystem::createJunctionPoint)* make) noexcept {
    const Arguments arguments(env, wide(link), wide(target));
    if (!arguments.orThrow(method)) {
        return JNI_FALSE;
    }
    if (!arguments.pass(make)) {
        throwWin32Error(env, method, GetLastError());
        return JNI_FALSE;
    }
    return JNI_TRUE;
}

// Reads the kind of a link and its target; none with an OutOfMemoryError pending.
std::optional<DWORD> readLink(JNIEnv* env, jstring path, filesystem::LinkTarget& target) noexcept {
    const Arguments arguments(env, wide(path));
    const std::optional<DWORD> kind =
        arguments ? filesystem::linkType(arguments.get<0>(), target) : std::nullopt;
    if (!kind) {
        throwOutOfMemoryError(env);
    }
    return kind;
}

}  // namespace

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_createJunctionPoint(JNIEnv* env, jobject,
                                                                                   jstring link,
                                                                                   jstring target) {
    return createLink(env, L"CreateJunctionPoint", link, target, filesystem::createJunctionPoint);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_createDirectorySymbolicLink(JNIEnv* env,
                                                                                           jobject,
                                                                                           jstring link,
                                                                                           jstring target) {
    return createLink(env, L"CreateDirectorySymbolicLink", link, target,
                      filesystem::createDirectorySymbolicLink);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_createFileSymbolicLink(JNIEnv* env, jobject,
                                                                                      jstring link,
                                                                                      jstring target) {
    return createLink(env, L"CreateFileSymbolicLink", link, target, filesystem::createFileSymbolicLink);
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLinkTarget(JNIEnv* env, jobject,
                                                                            jstring path) {
    filesystem::LinkTarget target;
    const std::optional<DWORD> kind = readLink(env, path, target);
    return kind && *kind < filesystem::linkKindNone ? newJavaString(env, target) : nullptr;
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLinkType(JNIEnv* env, jobject, jstring path) {
    filesystem::LinkTarget target;
    return static_cast<jint>(readLink(env, path, target).value_or(filesystem::linkKindNone));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isLink(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, wide(path));
    return toJava(arguments.orOutOfMemory() && orOutOfMemory(env, arguments.pass(filesystem::isLink)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isDirectoryJunction(JNIEnv* env, jobject,
                                                                                   jstring path) {
    const Arguments arguments(env, wide(path));
    return toJava(arguments.orOutOfMemory() &&
                  orOutOfMemory(env, arguments.pass(filesystem::isDirectoryJunction)));
}
