// What this computer is made of.
#include "bridge/errors.h"
#include "bridge/java_strings.h"
#include "exports/entry.h"
#include "inventory/computer.h"
#include "inventory/memory_modules.h"
#include "inventory/processors.h"
#include "inventory/server_features.h"

using namespace winutil;

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getSystemModel(JNIEnv* env, jobject) {
    ErrorBuffer errorBuffer;
    inventory::ComputerText model;
    if (!inventory::readSystemModel(model, errorBuffer)) {
        throwIOException(env, errorBuffer.text());
        return nullptr;
    }
    return newJavaString(env, model);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getProcessorInfo(JNIEnv* env, jobject,
                                                                            jobject collector) {
    ErrorBuffer errorBuffer;
    if (!inventory::listProcessors(env, collector, errorBuffer)) {
        throwIOException(env, errorBuffer.text());
    }
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getMemoryInfo(JNIEnv* env, jobject,
                                                                         jobject collector) {
    ErrorBuffer errorBuffer;
    if (!inventory::listMemoryModules(env, collector, errorBuffer)) {
        throwIOException(env, errorBuffer.text());
    }
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getMotherboardUUID(JNIEnv* env, jobject) {
    ErrorBuffer errorBuffer;
    inventory::ComputerText uuid;
    if (!inventory::readMotherboardUuid(uuid, errorBuffer)) {
        throwIOException(env, errorBuffer.text());
        return nullptr;
    }
    return newJavaString(env, uuid);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getWindowsInstalledFeatures(JNIEnv* env, jobject,
                                                                                       jobject list) {
    ErrorBuffer errorBuffer;
    if (!inventory::listServerFeatures(env, list, errorBuffer)) {
        throwIOException(env, errorBuffer.text());
    }
}
