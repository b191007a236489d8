// File records, directory listing and file operations.
#include <memory>

#include "bridge/ex_callback.h"
#include "bridge/paths.h"
#include "exports/entry.h"
#include "filesystem/file_operations.h"
#include "filesystem/file_records.h"
#include "filesystem/listing.h"

using namespace winutil;

namespace {

// Raises why a directory could not be made, with its path where there is memory for both.
void throwNotMade(JNIEnv* env, const ErrorBuffer& errorBuffer, const wchar_t* path) noexcept {
    const WideString named = path == nullptr ? WideString() : filesystem::nameFailure(errorBuffer, path);
    const wchar_t* message = named ? named.get() : errorBuffer.text();
    if (errorBuffer.code() == ERROR_DISK_FULL) {
        throwDiskFullException(env, message);
    } else {
        throwSecurityException(env, message);
    }
}

}  // namespace

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_listWinFiles(
    JNIEnv* env, jobject caller, jobject collector, jstring directory, jboolean withSecurity,
    jboolean withAttributes, jobject listener, jboolean securityOnFiles) {
    const std::unique_ptr<CExCallback> events(new CExCallback(env, caller, listener));
    const Arguments arguments(env, inPlace(directory));
    if (!events || !arguments) {
        return throwOutOfMemoryError(env);
    }
    const filesystem::ListingOptions options{.withSecurity = fromJava(withSecurity),
                                             .withAttributes = fromJava(withAttributes),
                                             .securityOnFiles = fromJava(securityOnFiles)};
    filesystem::listWinFiles(env, collector, arguments.get<0>(), options, *events);
}

JNIEXPORT jobject JNICALL Java_com_qarvo_kel_util_WindowsUtil_WinFile(JNIEnv* env, jobject, jstring path,
                                                                      jboolean withSecurity,
                                                                      jboolean securityOnFiles) {
    const Arguments arguments(env, wide(path));
    jobject record = arguments ? filesystem::makeWinFile(env, arguments.get<0>(), fromJava(withSecurity),
                                                         fromJava(securityOnFiles))
                               : nullptr;
    if (record == nullptr) {
        // Required: no reason, because callers know a missing file by the class alone.
        throwFileNotFoundException(env, L"");
    }
    return record;
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getFileAttr(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, inPlace(path));
    const std::optional<DWORD> attributes =
        arguments.orOutOfMemory() ? arguments.pass(filesystem::getFileAttr) : std::nullopt;
    return static_cast<jint>(attributes.value_or(INVALID_FILE_ATTRIBUTES));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_mkdir(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, wide(path));
    ErrorBuffer errorBuffer;
    if (!arguments) {
        errorBuffer.format(filesystem::createDirTag, ERROR_NOT_ENOUGH_MEMORY);
    } else if (filesystem::makeDirectory(arguments.get<0>(), errorBuffer)) {
        return JNI_TRUE;
    }
    if (!errorBuffer.empty()) {
        throwNotMade(env, errorBuffer, arguments.get<0>());
    }
    return JNI_FALSE;
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_delete(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, wide(path));
    return toJava(arguments.orOutOfMemory() &&
                  orOutOfMemory(env, arguments.pass(filesystem::deleteExistingFile)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_renameTo(JNIEnv* env, jobject, jstring from,
                                                                        jstring to) {
    const Arguments arguments(env, wide(from), wide(to));
    return toJava(arguments.orOutOfMemory() && arguments.pass(renamePath));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_exists(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, wide(path));
    return toJava(arguments.orOutOfMemory() && orOutOfMemory(env, arguments.pass(pathExists)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isDir(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, wide(path));
    return toJava(arguments.orOutOfMemory() && orOutOfMemory(env, arguments.pass(isDirectoryPath)));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_lastModified(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, wide(path));
    return arguments.orOutOfMemory() ? orOutOfMemory(env, arguments.pass(lastModifiedTime)) : 0;
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setLastModified(JNIEnv* env, jobject,
                                                                               jstring path,
                                                                               jlong milliseconds) {
    const Arguments arguments(env, wide(path));
    return toJava(arguments.orOutOfMemory() &&
                  orOutOfMemory(env, setLastModifiedTime(arguments.get<0>(), milliseconds)));
}
