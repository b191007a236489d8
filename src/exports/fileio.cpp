// File handles: opening, reading, writing, positioning, and what unbuffered I/O needs to know.
#include "bridge/java_strings.h"
#include "bridge/legacy.h"
#include "exports/entry.h"
#include "fileio/open.h"
#include "fileio/preallocation.h"
#include "fileio/sector_size.h"
#include "fileio/transfer.h"

using namespace winutil;
using fileio::toRecord;

namespace {

jlong toJava(fileio::OpenFileRecord* record) noexcept {
    return reinterpret_cast<jlong>(record);
}

jlong createFile(JNIEnv* env, jstring path, jint access, DWORD disposition, jint flags, jlong size) noexcept {
    const TerminatedChars chars(env, path);
    if (!chars) {
        return 0;
    }
    return toJava(fileio::createFile(env, chars.get(), static_cast<DWORD>(access), disposition,
                                     static_cast<DWORD>(flags), size));
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
    const TerminatedChars chars(env, path);
    return chars ? toJava(fileio::openFile(env, chars.get())) : 0;
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isSupportExtendFileSize(JNIEnv* env, jobject,
                                                                                       jstring path) {
    const TerminatedChars chars(env, path);
    return winutil::toJava(chars && fileio::canExtendFile(chars.get()));
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setFileEndOfFileInfo(JNIEnv* env, jobject,
                                                                                    jlong record,
                                                                                    jlong endOfFile) {
    return winutil::toJava(fileio::setEndOfFileInformation(env, toRecord(record), endOfFile));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_write__J_3BII(JNIEnv* env, jobject, jlong record,
                                                                         jbyteArray data, jint offset,
                                                                         jint length) {
    fileio::writeArray(env, toRecord(record), data, offset, length);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_write__JLjava_nio_ByteBuffer_2III(
    JNIEnv* env, jobject, jlong record, jobject buffer, jint offset, jint length, jint sectorSize) {
    fileio::writeBuffer(env, toRecord(record), buffer, offset, length, sectorSize);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_read__J_3BII(JNIEnv* env, jobject, jlong record,
                                                                        jbyteArray data, jint offset,
                                                                        jint length) {
    return fileio::readArray(env, toRecord(record), data, offset, length);
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_read__JLjava_nio_ByteBuffer_2III(
    JNIEnv* env, jobject, jlong record, jobject buffer, jint offset, jint length, jint sectorSize) {
    return fileio::readBuffer(env, toRecord(record), buffer, offset, length, sectorSize);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_seek(JNIEnv* env, jobject, jlong record,
                                                                 jlong position) {
    return fileio::seek(env, toRecord(record), position);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_skip(JNIEnv* env, jobject, jlong record,
                                                                 jlong distance) {
    return fileio::skip(env, toRecord(record), distance);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_getFilePosition(JNIEnv* env, jobject,
                                                                            jlong record) {
    return fileio::filePosition(env, toRecord(record));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_getFileSize(JNIEnv* env, jobject, jlong record) {
    return fileio::fileSize(env, toRecord(record));
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_closeFile(JNIEnv*, jobject, jlong record) {
    if (fileio::OpenFileRecord* open = toRecord(record)) {
        fileio::closeFile(open);
    }
}

// Kept for the Java side that still declares it: it has never written anything.
JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_WriteHandle(JNIEnv*, jobject, jlong, jbyteArray,
                                                                       jint, jint) {
    return -1;
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSectorSize(JNIEnv* env, jobject, jstring path) {
    const TerminatedChars chars(env, path);
    return chars ? static_cast<jint>(fileio::sectorSize(chars.get())) : 0;
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getPageSize(JNIEnv*, jobject) {
    return static_cast<jint>(fileio::pageSize());
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_GetDirectBufferAddress(JNIEnv* env, jobject,
                                                                                   jobject buffer) {
    return reinterpret_cast<jlong>(env->GetDirectBufferAddress(buffer));
}

// An ordinary array, whatever the name promises: unbuffered I/O wants a direct buffer.
JNIEXPORT jbyteArray JNICALL Java_com_qarvo_kel_util_WindowsUtil_getAlignedByteBuffer(JNIEnv* env, jobject,
                                                                                      jint size) {
    return env->NewByteArray(size);
}
