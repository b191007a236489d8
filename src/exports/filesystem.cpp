// File records, directory listing and file operations.
#include <memory>

#include "bridge/errors.h"
#include "bridge/ex_callback.h"
#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "bridge/legacy.h"
#include "bridge/paths.h"
#include "exports/entry.h"
#include "filesystem/file_operations.h"
#include "filesystem/file_records.h"
#include "filesystem/listing.h"

using namespace winutil;

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_listWinFiles(
    JNIEnv* env, jobject caller, jobject collector, jstring directory, jboolean withSecurity,
    jboolean withAttributes, jobject listener, jboolean securityOnFiles) {
    const std::unique_ptr<CExCallback> events(new CExCallback(env, caller, listener));
    const TerminatedChars chars(env, directory);
    if (!chars) {
        return;
    }
    const filesystem::ListingOptions options{.withSecurity = fromJava(withSecurity),
                                             .withAttributes = fromJava(withAttributes),
                                             .securityOnFiles = fromJava(securityOnFiles)};
    filesystem::listWinFiles(env, collector, chars.get(), options, events.get());
}

JNIEXPORT jobject JNICALL Java_com_qarvo_kel_util_WindowsUtil_WinFile(JNIEnv* env, jobject, jstring path,
                                                                      jboolean withSecurity,
                                                                      jboolean securityOnFiles) {
    const WideString widePath = toWideString(env, path);
    ErrorBuffer reason;
    jobject record = widePath ? filesystem::makeWinFile(env, widePath.get(), fromJava(withSecurity),
                                                        fromJava(securityOnFiles), reason)
                              : nullptr;
    if (record == nullptr && !exceptionPending(env)) {
        // Without its reason: callers know a missing file by the class alone.
        throwFileNotFoundException(env, L"");
    }
    return record;
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getFileAttr(JNIEnv* env, jobject, jstring path) {
    const WideString widePath = toWideString(env, path);
    return static_cast<jint>(widePath ? filesystem::getFileAttr(widePath.get()) : INVALID_FILE_ATTRIBUTES);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_mkdir(JNIEnv* env, jobject, jstring path) {
    const WideString widePath = toWideString(env, path);
    return toJava(widePath && filesystem::makeDirectory(env, widePath.get()));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_delete(JNIEnv* env, jobject, jstring path) {
    const WideString widePath = toWideString(env, path);
    return toJava(widePath && orOutOfMemory(env, filesystem::deleteExistingFile(widePath.get())));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_renameTo(JNIEnv* env, jobject, jstring from,
                                                                        jstring to) {
    const WideString wideFrom = toWideString(env, from);
    if (!wideFrom) {
        return JNI_FALSE;
    }
    const WideString wideTo = toWideString(env, to);
    return toJava(wideTo && renamePath(wideFrom.get(), wideTo.get()));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_exists(JNIEnv* env, jobject, jstring path) {
    const WideString widePath = toWideString(env, path);
    return toJava(widePath && orOutOfMemory(env, pathExists(widePath.get())));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isDir(JNIEnv* env, jobject, jstring path) {
    const WideString widePath = toWideString(env, path);
    return toJava(widePath && orOutOfMemory(env, isDirectoryPath(widePath.get())));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_lastModified(JNIEnv* env, jobject, jstring path) {
    const WideString widePath = toWideString(env, path);
    return widePath ? orOutOfMemory(env, lastModifiedTime(widePath.get())) : 0;
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setLastModified(JNIEnv* env, jobject,
                                                                               jstring path,
                                                                               jlong milliseconds) {
    const WideString widePath = toWideString(env, path);
    return toJava(widePath && orOutOfMemory(env, setLastModifiedTime(widePath.get(), milliseconds)));
}
