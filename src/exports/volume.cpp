// Volumes, partitions and drives, and the serial numbers of disks.
#include "bridge/errors.h"
#include "bridge/java_strings.h"
#include "bridge/legacy.h"
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
    const TerminatedChars path(env, diskPath);
    if (path) {
        volume::listNtfsPartitions(env, path.get(), collector);
    }
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getVolumeName(JNIEnv* env, jobject,
                                                                            jstring path) {
    const WideString widePath = toWideString(env, path);
    if (!widePath) {
        return emptyUnlessPending(env);
    }
    VolumePath volume;
    findVolumePath(widePath.get(), volume);
    return newJavaString(env, volume);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_isNTFSVolume(JNIEnv* env, jobject,
                                                                            jstring path) {
    const WideString widePath = toWideString(env, path);
    return toJava(widePath && isNtfsVolume(widePath.get()));
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
    const WideString wideRoot = toWideString(env, root);
    if (!wideRoot) {
        return emptyUnlessPending(env);
    }
    volume::VolumeLabel label;
    volume::readVolumeLabel(wideRoot.get(), label);
    return newJavaString(env, label);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_kel_util_WindowsUtil_setVolumeLabel(JNIEnv* env, jobject,
                                                                              jstring root, jstring label) {
    const NarrowChars narrowRoot(env, root);
    if (narrowRoot.get() == nullptr) {
        return JNI_FALSE;
    }
    const NarrowChars narrowLabel(env, label);
    return toJava(narrowLabel.get() != nullptr &&
                  volume::setVolumeLabel(narrowRoot.get(), narrowLabel.get()));
}

JNIEXPORT jint JNICALL Java_com_qarvo_kel_util_WindowsUtil_getDriveType(JNIEnv* env, jobject, jstring root) {
    const NarrowChars narrowRoot(env, root);
    return narrowRoot.get() == nullptr ? 0 : volume::driveType(narrowRoot.get());
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_getTotalDiskSpace(JNIEnv* env, jobject,
                                                                              jstring path) {
    const NarrowChars narrowPath(env, path);
    return narrowPath.get() == nullptr ? 0 : volume::totalSpace(narrowPath.get());
}

JNIEXPORT jlong JNICALL Java_com_qarvo_kel_util_WindowsUtil_getFreeDiskSpace(JNIEnv* env, jobject,
                                                                             jstring path) {
    const NarrowChars narrowPath(env, path);
    return narrowPath.get() == nullptr ? 0 : volume::freeSpace(narrowPath.get());
}

JNIEXPORT jobjectArray JNICALL Java_com_qarvo_kel_util_WindowsUtil_getLogicalDrives(JNIEnv* env, jobject) {
    return volume::logicalDrives(env);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getHardDiskSN(JNIEnv* env, jobject,
                                                                         jobject collector) {
    ErrorBuffer errorBuffer;
    if (!volume::listDiskSerials(env, collector, errorBuffer)) {
        throwIOException(env, errorBuffer.text());
    }
}
