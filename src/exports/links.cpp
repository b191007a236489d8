// Junctions and symbolic links.
#include "filesystem/links.h"

#include "bridge/errors.h"
#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "exports/entry.h"

using namespace winutil;

namespace {

// Makes a link from `link` to `target`, or raises an IOException that names the method.
jboolean createLink(JNIEnv* env, const wchar_t* method, jstring link, jstring target,
                    decltype(filesystem::createJunctionPoint)* make) noexcept {
    const WideString wideLink = toWideString(env, link);
    const WideString wideTarget = wideLink ? toWideString(env, target) : WideString();
    if (wideTarget && make(wideLink.get(), wideTarget.get())) {
        return JNI_TRUE;
    }
    const DWORD code = wideTarget ? GetLastError() : ERROR_NOT_ENOUGH_MEMORY;
    if (!exceptionPending(env)) {
        ErrorBuffer message;
        formatWin32Error(method, code, message.text(), ErrorBuffer::capacity);
        throwIOException(env, message.text());
    }
    return JNI_FALSE;
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
    const WideString widePath = toWideString(env, path);
    filesystem::LinkTarget target;
    if (!widePath || filesystem::linkType(widePath.get(), target) >= filesystem::linkKindNone) {
        return nullptr;
    }
    return newJavaString(env, target);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLinkType(JNIEnv* env, jobject, jstring path) {
    const WideString widePath = toWideString(env, path);
    filesystem::LinkTarget target;
    return static_cast<jint>(widePath ? filesystem::linkType(widePath.get(), target)
                                      : filesystem::linkKindNone);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isLink(JNIEnv* env, jobject, jstring path) {
    const WideString widePath = toWideString(env, path);
    return toJava(widePath && filesystem::isLink(widePath.get()));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isDirectoryJunction(JNIEnv* env, jobject,
                                                                                   jstring path) {
    const WideString widePath = toWideString(env, path);
    return toJava(widePath && filesystem::isDirectoryJunction(widePath.get()));
}
