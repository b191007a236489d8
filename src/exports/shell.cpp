// Shortcuts, libraries and the system's own paths.
#include "bridge/java_arrays.h"
#include "bridge/java_strings.h"
#include "exports/entry.h"
#include "filesystem/libraries.h"
#include "filesystem/shortcuts.h"
#include "filesystem/system_paths.h"

using namespace winutil;

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isShortcut(JNIEnv* env, jobject,
                                                                          jstring path) {
    const Arguments arguments(env, wide(path));
    return toJava(arguments.orOutOfMemory() && orOutOfMemory(env, arguments.pass(filesystem::isShortcut)));
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getShortcutTarget(JNIEnv* env, jobject,
                                                                                jstring path) {
    const Arguments arguments(env, wide(path));
    if (!arguments.orOutOfMemory()) {
        return nullptr;
    }
    filesystem::ShortcutTarget target;
    filesystem::readShortcutTarget(arguments.get<0>(), target);
    return newJavaString(env, target);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isLibrary(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, wide(path));
    return toJava(arguments.orOutOfMemory() && arguments.pass(filesystem::isLibrary));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLibraryFolders(JNIEnv* env, jobject,
                                                                             jstring path,
                                                                             jobject collection) {
    const Arguments arguments(env, wide(path));
    if (arguments.orOutOfMemory()) {
        filesystem::listLibraryFolders(env, arguments.get<0>(), collection);
    }
}

JNIEXPORT jbyteArray JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLibraryIcon(JNIEnv* env, jobject,
                                                                                jstring path) {
    const Arguments arguments(env, wide(path));
    if (!arguments.orOutOfMemory()) {
        return nullptr;
    }
    const filesystem::ImageFile image = arguments.pass(filesystem::libraryIcon);
    return image.bytes ? newByteArray(env, {image.bytes.get(), image.size}) : nullptr;
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_searchPathFromLibrary(JNIEnv* env, jobject,
                                                                                    jstring name) {
    const Arguments arguments(env, wide(name));
    if (!arguments.orOutOfMemory()) {
        return nullptr;
    }
    filesystem::FoundPath path;
    filesystem::searchSystemPath(arguments.get<0>(), path);
    return newJavaString(env, path);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSystemExcludeFolders(JNIEnv* env, jobject,
                                                                                   jobject collection) {
    filesystem::listExcludeFolders(env, collection);
}
