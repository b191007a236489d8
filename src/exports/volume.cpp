// Volumes, partitions and drives, and the serial numbers of disks.
#include "bridge/java_strings.h"
#include "bridge/optional_functions.h"
#include "exports/entry.h"
#include "volume/disk_serials.h"
#include "volume/disk_volumes.h"
#include "volume/drives.h"
#include "volume/volumes.h"

using namespace winutil;

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_listPartitions(JNIEnv* env, jobject,
                                                                          jobject collector) {
    volume::listPartitions(env, collector);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_listNTFSPartitions(JNIEnv* env, jobject,
                                                                              jstring diskPath,
                                                                              jobject collector) {
    const Arguments arguments(env, inPlace(diskPath));
    const DWORD code = arguments ? volume::listNtfsPartitions(env, arguments.get<0>(), collector)
                                 : DWORD{ERROR_NOT_ENOUGH_MEMORY};
    if (code == ERROR_SUCCESS) {
        return;
    }
    const SystemText text(code);
    if (code == ERROR_FILE_NOT_FOUND) {
        throwFileNotFoundException(env, text.get());
    } else {
        throwIOException(env, text.get());
    }
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getVolumeName(JNIEnv* env, jobject,
                                                                            jstring path) {
    const Arguments arguments(env, wide(path));
    if (!arguments.orOutOfMemory()) {
        return nullptr;
    }
    VolumePath volume;
    findVolumePath(arguments.get<0>(), volume);
    return newJavaString(env, volume);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isNTFSVolume(JNIEnv* env, jobject,
                                                                            jstring path) {
    const Arguments arguments(env, wide(path));
    return toJava(arguments.orOutOfMemory() && arguments.pass(isNtfsVolume));
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSystemVolumeDriveLetter(JNIEnv* env,
                                                                                         jobject) {
    volume::DriveText letter;
    if (!volume::systemDriveLetter(letter)) {
        return nullptr;
    }
    wchar_t text[volume::drivePathCapacity] = {};
    ansiToWide(text, letter, volume::drivePathCapacity);
    return newJavaString(env, text);
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getVolumeLabel(JNIEnv* env, jobject,
                                                                             jstring root) {
    const Arguments arguments(env, wide(root));
    if (!arguments.orOutOfMemory()) {
        return nullptr;
    }
    volume::VolumeLabel label;
    volume::readVolumeLabel(arguments.get<0>(), label);
    return newJavaString(env, label);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setVolumeLabel(JNIEnv* env, jobject,
                                                                              jstring root, jstring label) {
    const Arguments arguments(env, narrow(root), narrow(label));
    return toJava(arguments.orOutOfMemory() && arguments.pass(volume::setVolumeLabel));
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getDriveType(JNIEnv* env, jobject, jstring root) {
    const Arguments arguments(env, narrow(root));
    return arguments.orOutOfMemory() ? arguments.pass(volume::driveType) : 0;
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_getTotalDiskSpace(JNIEnv* env, jobject,
                                                                              jstring path) {
    const Arguments arguments(env, narrow(path));
    return arguments.orOutOfMemory() ? arguments.pass(volume::totalSpace) : 0;
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_getFreeDiskSpace(JNIEnv* env, jobject,
                                                                             jstring path) {
    const Arguments arguments(env, narrow(path));
    return arguments.orOutOfMemory() ? arguments.pass(volume::freeSpace) : 0;
}

JNIEXPORT jobjectArray JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLogicalDrives(JNIEnv* env, jobject) {
    return volume::logicalDrives(env);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getHardDiskSN(JNIEnv* env, jobject,
                                                                         jobject collector) {
    ErrorBuffer errorBuffer;
    volume::listDiskSerials(env, collector, errorBuffer);
    throwFailure(env, errorBuffer);
}
