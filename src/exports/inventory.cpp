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
    if (inventory::readSystemModel(model, errorBuffer)) {
        return newJavaString(env, model);
    }
    throwFailure(env, errorBuffer);
    return nullptr;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getProcessorInfo(JNIEnv* env, jobject,
                                                                            jobject collector) {
    ErrorBuffer errorBuffer;
    inventory::listProcessors(env, collector, errorBuffer);
    throwFailure(env, errorBuffer);
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getMemoryInfo(JNIEnv* env, jobject,
                                                                         jobject collector) {
    ErrorBuffer errorBuffer;
    inventory::listMemoryModules(env, collector, errorBuffer);
    throwFailure(env, errorBuffer);
}

JNIEXPORT jstring JNICALL Java_com_qarvo_kel_util_WindowsUtil_getMotherboardUUID(JNIEnv* env, jobject) {
    ErrorBuffer errorBuffer;
    inventory::ComputerText uuid;
    if (inventory::readMotherboardUuid(uuid, errorBuffer)) {
        return newJavaString(env, uuid);
    }
    throwFailure(env, errorBuffer);
    return nullptr;
}

JNIEXPORT void JNICALL Java_com_qarvo_kel_util_WindowsUtil_getWindowsInstalledFeatures(JNIEnv* env, jobject,
                                                                                       jobject list) {
    ErrorBuffer errorBuffer;
    inventory::listServerFeatures(env, list, errorBuffer);
    throwFailure(env, errorBuffer);
}
