// Shortcuts, libraries and the system's own paths.
#include "bridge/java_arrays.h"
#include "bridge/java_strings.h"
#include "bridge/legacy.h"
#include "exports/entry.h"
#include "filesystem/libraries.h"
#include "filesystem/shortcuts.h"
#include "filesystem/system_paths.h"

using namespace winutil;

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isShortcut(JNIEnv* env, jobject,
                                                                          jstring path) {
    const WideString widePath = toWideString(env, path);
    return toJava(widePath && filesystem::isShortcut(widePath.get()));
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getShortcutTarget(JNIEnv* env, jobject,
                                                                                jstring path) {
    const WideString widePath = toWideString(env, path);
    if (!widePath) {
        return emptyUnlessPending(env);
    }
    filesystem::ShortcutTarget target;
    filesystem::readShortcutTarget(widePath.get(), target);
    return newJavaString(env, target);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isLibrary(JNIEnv* env, jobject, jstring path) {
    const WideString widePath = toWideString(env, path);
    return toJava(widePath && filesystem::isLibrary(widePath.get()));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLibraryFolders(JNIEnv* env, jobject,
                                                                             jstring path,
                                                                             jobject collection) {
    const WideString widePath = toWideString(env, path);
    if (widePath) {
        filesystem::listLibraryFolders(env, widePath.get(), collection);
    }
}

JNIEXPORT jbyteArray JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLibraryIcon(JNIEnv* env, jobject,
                                                                                jstring path) {
    const WideString widePath = toWideString(env, path);
    if (!widePath) {
        return nullptr;
    }
    const filesystem::ImageFile image = filesystem::libraryIcon(widePath.get());
    return image.bytes ? newByteArray(env, {image.bytes.get(), image.size}) : nullptr;
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_searchPathFromLibrary(JNIEnv* env, jobject,
                                                                                    jstring name) {
    const WideString wideName = toWideString(env, name);
    if (!wideName) {
        return emptyUnlessPending(env);
    }
    filesystem::FoundPath path;
    filesystem::searchSystemPath(wideName.get(), path);
    return newJavaString(env, path);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSystemExcludeFolders(JNIEnv* env, jobject,
                                                                                   jobject collection) {
    filesystem::listExcludeFolders(env, collection);
}
