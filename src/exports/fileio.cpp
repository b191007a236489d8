// File handles: opening, reading, writing, positioning, and what unbuffered I/O needs to know.
#include "exports/entry.h"
#include "fileio/open.h"
#include "fileio/preallocation.h"
#include "fileio/sector_size.h"
#include "fileio/transfer.h"

using namespace winutil;
using fileio::OpenFileRecord;

namespace {

// Gives a record to Java, or raises why there is none to give.
jlong handOut(JNIEnv* env, OpenFileRecord* record, const ErrorBuffer& errorBuffer) noexcept {
    if (record == nullptr) {
        throwOpenError(env, errorBuffer.code(), errorBuffer.text());
        return 0;
    }
    if (!errorBuffer.empty()) {
        // Required: the record is let go as it is, its file open, because this leak is accepted.
        throwIOException(env, errorBuffer.text());
        return 0;
    }
    return toJavaHandle(record);
}

jlong createFile(JNIEnv* env, jstring path, jint access, DWORD disposition, jint flags, jlong size) noexcept {
    const Arguments arguments(env, inPlace(path));
    if (!arguments.orThrow(L"createFileN")) {
        return 0;
    }
    ErrorBuffer errorBuffer;
    OpenFileRecord* record = fileio::createFile(arguments.get<0>(), static_cast<DWORD>(access), disposition,
                                                static_cast<DWORD>(flags), size, errorBuffer);
    return handOut(env, record, errorBuffer);
}

void throwWriteFailure(JNIEnv* env, const ErrorBuffer& errorBuffer) noexcept {
    if (errorBuffer.code() == ERROR_DISK_FULL) {
        throwDiskFullException(env, errorBuffer.text());
    } else {
        throwFailure(env, errorBuffer);
    }
}

jint countOrThrow(JNIEnv* env, jint count, const ErrorBuffer& errorBuffer) noexcept {
    if (count == fileio::readFailed) {
        throwIOException(env, errorBuffer.text());
    }
    return count;
}

// `failed` goes back beside the exception.
jlong numberOrThrow(JNIEnv* env, std::optional<std::int64_t> number, jlong failed,
                    const ErrorBuffer& errorBuffer) noexcept {
    if (!number) {
        throwIOException(env, errorBuffer.text());
    }
    return number.value_or(failed);
}

}  // namespace

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_createFileNC__Ljava_lang_String_2IIIJ(
    JNIEnv* env, jobject, jstring path, jint access, jint disposition, jint flags, jlong size) {
    return createFile(env, path, access, static_cast<DWORD>(disposition), flags, size);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_createFileNC__Ljava_lang_String_2III(
    JNIEnv* env, jobject, jstring path, jint access, jint disposition, jint flags) {
    return createFile(env, path, access, static_cast<DWORD>(disposition), flags, 0);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_createFileN(JNIEnv* env, jobject, jstring path,
                                                                        jint access, jint flags) {
    return createFile(env, path, access, OPEN_ALWAYS, flags, 0);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_openFile(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, inPlace(path));
    if (!arguments.orThrow(L"openFile")) {
        return 0;
    }
    ErrorBuffer errorBuffer;
    OpenFileRecord* record = fileio::openFile(arguments.get<0>(), errorBuffer);
    return handOut(env, record, errorBuffer);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isSupportExtendFileSize(JNIEnv* env, jobject,
                                                                                       jstring path) {
    const Arguments arguments(env, inPlace(path));
    return toJava(arguments.orOutOfMemory() && orOutOfMemory(env, arguments.pass(fileio::canExtendFile)));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setFileEndOfFileInfo(JNIEnv* env, jobject,
                                                                                    jlong record,
                                                                                    jlong endOfFile) {
    ErrorBuffer errorBuffer;
    const bool done =
        fileio::setEndOfFileInformation(fromJavaHandle<OpenFileRecord>(record), endOfFile, errorBuffer);
    throwFailure(env, errorBuffer);
    return toJava(done);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_write__J_3BII(JNIEnv* env, jobject, jlong record,
                                                                         jbyteArray data, jint offset,
                                                                         jint length) {
    ErrorBuffer errorBuffer;
    fileio::writeArray(env, fromJavaHandle<OpenFileRecord>(record), data, offset, length, errorBuffer);
    throwWriteFailure(env, errorBuffer);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_write__JLjava_nio_ByteBuffer_2III(
    JNIEnv* env, jobject, jlong record, jobject buffer, jint offset, jint length, jint sectorSize) {
    ErrorBuffer errorBuffer;
    fileio::writeBuffer(env, fromJavaHandle<OpenFileRecord>(record), buffer, offset, length, sectorSize,
                        errorBuffer);
    throwWriteFailure(env, errorBuffer);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_read__J_3BII(JNIEnv* env, jobject, jlong record,
                                                                        jbyteArray data, jint offset,
                                                                        jint length) {
    ErrorBuffer errorBuffer;
    const jint count =
        fileio::readArray(env, fromJavaHandle<OpenFileRecord>(record), data, offset, length, errorBuffer);
    return countOrThrow(env, count, errorBuffer);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_read__JLjava_nio_ByteBuffer_2III(
    JNIEnv* env, jobject, jlong record, jobject buffer, jint offset, jint length, jint sectorSize) {
    ErrorBuffer errorBuffer;
    const jint count = fileio::readBuffer(env, fromJavaHandle<OpenFileRecord>(record), buffer, offset, length,
                                          sectorSize, errorBuffer);
    return countOrThrow(env, count, errorBuffer);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_seek(JNIEnv* env, jobject, jlong record,
                                                                 jlong position) {
    ErrorBuffer errorBuffer;
    const auto moved = fileio::seek(fromJavaHandle<OpenFileRecord>(record), position, errorBuffer);
    return numberOrThrow(env, moved, -1, errorBuffer);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_skip(JNIEnv* env, jobject, jlong record,
                                                                 jlong distance) {
    ErrorBuffer errorBuffer;
    const auto moved = fileio::skip(fromJavaHandle<OpenFileRecord>(record), distance, errorBuffer);
    return numberOrThrow(env, moved, -1, errorBuffer);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_getFilePosition(JNIEnv* env, jobject,
                                                                            jlong record) {
    ErrorBuffer errorBuffer;
    const auto position = fileio::filePosition(fromJavaHandle<OpenFileRecord>(record), errorBuffer);
    return numberOrThrow(env, position, -1, errorBuffer);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_getFileSize(JNIEnv* env, jobject, jlong record) {
    ErrorBuffer errorBuffer;
    const auto size = fileio::fileSize(fromJavaHandle<OpenFileRecord>(record), errorBuffer);
    return numberOrThrow(env, size, 0, errorBuffer);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_closeFile(JNIEnv*, jobject, jlong record) {
    if (auto* open = fromJavaHandle<OpenFileRecord>(record)) {
        fileio::closeFile(open);
    }
}

// Required: it writes nothing, because writing to a child is not supported and Java still declares it.
JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_WriteHandle(JNIEnv*, jobject, jlong, jbyteArray,
                                                                       jint, jint) {
    return -1;
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSectorSize(JNIEnv* env, jobject, jstring path) {
    const Arguments arguments(env, inPlace(path));
    return arguments.orOutOfMemory() ? static_cast<jint>(arguments.pass(fileio::sectorSize)) : 0;
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getPageSize(JNIEnv*, jobject) {
    return static_cast<jint>(fileio::pageSize());
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_GetDirectBufferAddress(JNIEnv* env, jobject,
                                                                                   jobject buffer) {
    return reinterpret_cast<jlong>(env->GetDirectBufferAddress(buffer));
}

// Required: an ordinary array, whatever the name promises, because unbuffered I/O takes direct buffers.
JNIEXPORT jbyteArray JNICALL Java_com_qarvo_kel_util_WindowsUtil_getAlignedByteBuffer(JNIEnv* env, jobject,
                                                                                      jint size) {
    return env->NewByteArray(size);
}
