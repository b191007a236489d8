// The functions of a JNI environment, by name. The macro gets each in turn, as FUNCTION(FindClass).
#pragma once

#include <jni.h>

// clang-format off
#ifdef JNI_VERSION_21
#define JNI_FUNCTIONS_SINCE_21(FUNCTION) FUNCTION(IsVirtualThread)
#else
#define JNI_FUNCTIONS_SINCE_21(FUNCTION)
#endif
#ifdef JNI_VERSION_24
#define JNI_FUNCTIONS_SINCE_24(FUNCTION) FUNCTION(GetStringUTFLengthAsLong)
#else
#define JNI_FUNCTIONS_SINCE_24(FUNCTION)
#endif

#define JNI_FUNCTIONS(FUNCTION) \
    FUNCTION(GetVersion) FUNCTION(DefineClass) FUNCTION(FindClass) FUNCTION(FromReflectedMethod) \
    FUNCTION(FromReflectedField) FUNCTION(ToReflectedMethod) FUNCTION(GetSuperclass) \
    FUNCTION(IsAssignableFrom) FUNCTION(ToReflectedField) FUNCTION(Throw) FUNCTION(ThrowNew) \
    FUNCTION(ExceptionOccurred) FUNCTION(ExceptionDescribe) FUNCTION(ExceptionClear) FUNCTION(FatalError) \
    FUNCTION(PushLocalFrame) FUNCTION(PopLocalFrame) FUNCTION(NewGlobalRef) FUNCTION(DeleteGlobalRef) \
    FUNCTION(DeleteLocalRef) FUNCTION(IsSameObject) FUNCTION(NewLocalRef) FUNCTION(EnsureLocalCapacity) \
    FUNCTION(AllocObject) FUNCTION(NewObject) FUNCTION(NewObjectV) FUNCTION(NewObjectA) \
    FUNCTION(GetObjectClass) FUNCTION(IsInstanceOf) FUNCTION(GetMethodID) FUNCTION(CallObjectMethod) \
    FUNCTION(CallObjectMethodV) FUNCTION(CallObjectMethodA) FUNCTION(CallBooleanMethod) \
    FUNCTION(CallBooleanMethodV) FUNCTION(CallBooleanMethodA) FUNCTION(CallByteMethod) \
    FUNCTION(CallByteMethodV) FUNCTION(CallByteMethodA) FUNCTION(CallCharMethod) FUNCTION(CallCharMethodV) \
    FUNCTION(CallCharMethodA) FUNCTION(CallShortMethod) FUNCTION(CallShortMethodV) \
    FUNCTION(CallShortMethodA) FUNCTION(CallIntMethod) FUNCTION(CallIntMethodV) FUNCTION(CallIntMethodA) \
    FUNCTION(CallLongMethod) FUNCTION(CallLongMethodV) FUNCTION(CallLongMethodA) FUNCTION(CallFloatMethod) \
    FUNCTION(CallFloatMethodV) FUNCTION(CallFloatMethodA) FUNCTION(CallDoubleMethod) \
    FUNCTION(CallDoubleMethodV) FUNCTION(CallDoubleMethodA) FUNCTION(CallVoidMethod) \
    FUNCTION(CallVoidMethodV) FUNCTION(CallVoidMethodA) FUNCTION(CallNonvirtualObjectMethod) \
    FUNCTION(CallNonvirtualObjectMethodV) FUNCTION(CallNonvirtualObjectMethodA) \
    FUNCTION(CallNonvirtualBooleanMethod) FUNCTION(CallNonvirtualBooleanMethodV) \
    FUNCTION(CallNonvirtualBooleanMethodA) FUNCTION(CallNonvirtualByteMethod) \
    FUNCTION(CallNonvirtualByteMethodV) FUNCTION(CallNonvirtualByteMethodA) \
    FUNCTION(CallNonvirtualCharMethod) FUNCTION(CallNonvirtualCharMethodV) \
    FUNCTION(CallNonvirtualCharMethodA) FUNCTION(CallNonvirtualShortMethod) \
    FUNCTION(CallNonvirtualShortMethodV) FUNCTION(CallNonvirtualShortMethodA) \
    FUNCTION(CallNonvirtualIntMethod) FUNCTION(CallNonvirtualIntMethodV) \
    FUNCTION(CallNonvirtualIntMethodA) FUNCTION(CallNonvirtualLongMethod) \
    FUNCTION(CallNonvirtualLongMethodV) FUNCTION(CallNonvirtualLongMethodA) \
    FUNCTION(CallNonvirtualFloatMethod) FUNCTION(CallNonvirtualFloatMethodV) \
    FUNCTION(CallNonvirtualFloatMethodA) FUNCTION(CallNonvirtualDoubleMethod) \
    FUNCTION(CallNonvirtualDoubleMethodV) FUNCTION(CallNonvirtualDoubleMethodA) \
    FUNCTION(CallNonvirtualVoidMethod) FUNCTION(CallNonvirtualVoidMethodV) \
    FUNCTION(CallNonvirtualVoidMethodA) FUNCTION(GetFieldID) FUNCTION(GetObjectField) \
    FUNCTION(GetBooleanField) FUNCTION(GetByteField) FUNCTION(GetCharField) FUNCTION(GetShortField) \
    FUNCTION(GetIntField) FUNCTION(GetLongField) FUNCTION(GetFloatField) FUNCTION(GetDoubleField) \
    FUNCTION(SetObjectField) FUNCTION(SetBooleanField) FUNCTION(SetByteField) FUNCTION(SetCharField) \
    FUNCTION(SetShortField) FUNCTION(SetIntField) FUNCTION(SetLongField) FUNCTION(SetFloatField) \
    FUNCTION(SetDoubleField) FUNCTION(GetStaticMethodID) FUNCTION(CallStaticObjectMethod) \
    FUNCTION(CallStaticObjectMethodV) FUNCTION(CallStaticObjectMethodA) FUNCTION(CallStaticBooleanMethod) \
    FUNCTION(CallStaticBooleanMethodV) FUNCTION(CallStaticBooleanMethodA) FUNCTION(CallStaticByteMethod) \
    FUNCTION(CallStaticByteMethodV) FUNCTION(CallStaticByteMethodA) FUNCTION(CallStaticCharMethod) \
    FUNCTION(CallStaticCharMethodV) FUNCTION(CallStaticCharMethodA) FUNCTION(CallStaticShortMethod) \
    FUNCTION(CallStaticShortMethodV) FUNCTION(CallStaticShortMethodA) FUNCTION(CallStaticIntMethod) \
    FUNCTION(CallStaticIntMethodV) FUNCTION(CallStaticIntMethodA) FUNCTION(CallStaticLongMethod) \
    FUNCTION(CallStaticLongMethodV) FUNCTION(CallStaticLongMethodA) FUNCTION(CallStaticFloatMethod) \
    FUNCTION(CallStaticFloatMethodV) FUNCTION(CallStaticFloatMethodA) FUNCTION(CallStaticDoubleMethod) \
    FUNCTION(CallStaticDoubleMethodV) FUNCTION(CallStaticDoubleMethodA) FUNCTION(CallStaticVoidMethod) \
    FUNCTION(CallStaticVoidMethodV) FUNCTION(CallStaticVoidMethodA) FUNCTION(GetStaticFieldID) \
    FUNCTION(GetStaticObjectField) FUNCTION(GetStaticBooleanField) FUNCTION(GetStaticByteField) \
    FUNCTION(GetStaticCharField) FUNCTION(GetStaticShortField) FUNCTION(GetStaticIntField) \
    FUNCTION(GetStaticLongField) FUNCTION(GetStaticFloatField) FUNCTION(GetStaticDoubleField) \
    FUNCTION(SetStaticObjectField) FUNCTION(SetStaticBooleanField) FUNCTION(SetStaticByteField) \
    FUNCTION(SetStaticCharField) FUNCTION(SetStaticShortField) FUNCTION(SetStaticIntField) \
    FUNCTION(SetStaticLongField) FUNCTION(SetStaticFloatField) FUNCTION(SetStaticDoubleField) \
    FUNCTION(NewString) FUNCTION(GetStringLength) FUNCTION(GetStringChars) FUNCTION(ReleaseStringChars) \
    FUNCTION(NewStringUTF) FUNCTION(GetStringUTFLength) FUNCTION(GetStringUTFChars) \
    FUNCTION(ReleaseStringUTFChars) FUNCTION(GetArrayLength) FUNCTION(NewObjectArray) \
    FUNCTION(GetObjectArrayElement) FUNCTION(SetObjectArrayElement) FUNCTION(NewBooleanArray) \
    FUNCTION(NewByteArray) FUNCTION(NewCharArray) FUNCTION(NewShortArray) FUNCTION(NewIntArray) \
    FUNCTION(NewLongArray) FUNCTION(NewFloatArray) FUNCTION(NewDoubleArray) \
    FUNCTION(GetBooleanArrayElements) FUNCTION(GetByteArrayElements) FUNCTION(GetCharArrayElements) \
    FUNCTION(GetShortArrayElements) FUNCTION(GetIntArrayElements) FUNCTION(GetLongArrayElements) \
    FUNCTION(GetFloatArrayElements) FUNCTION(GetDoubleArrayElements) FUNCTION(ReleaseBooleanArrayElements) \
    FUNCTION(ReleaseByteArrayElements) FUNCTION(ReleaseCharArrayElements) \
    FUNCTION(ReleaseShortArrayElements) FUNCTION(ReleaseIntArrayElements) \
    FUNCTION(ReleaseLongArrayElements) FUNCTION(ReleaseFloatArrayElements) \
    FUNCTION(ReleaseDoubleArrayElements) FUNCTION(GetBooleanArrayRegion) FUNCTION(GetByteArrayRegion) \
    FUNCTION(GetCharArrayRegion) FUNCTION(GetShortArrayRegion) FUNCTION(GetIntArrayRegion) \
    FUNCTION(GetLongArrayRegion) FUNCTION(GetFloatArrayRegion) FUNCTION(GetDoubleArrayRegion) \
    FUNCTION(SetBooleanArrayRegion) FUNCTION(SetByteArrayRegion) FUNCTION(SetCharArrayRegion) \
    FUNCTION(SetShortArrayRegion) FUNCTION(SetIntArrayRegion) FUNCTION(SetLongArrayRegion) \
    FUNCTION(SetFloatArrayRegion) FUNCTION(SetDoubleArrayRegion) FUNCTION(RegisterNatives) \
    FUNCTION(UnregisterNatives) FUNCTION(MonitorEnter) FUNCTION(MonitorExit) FUNCTION(GetJavaVM) \
    FUNCTION(GetStringRegion) FUNCTION(GetStringUTFRegion) FUNCTION(GetPrimitiveArrayCritical) \
    FUNCTION(ReleasePrimitiveArrayCritical) FUNCTION(GetStringCritical) FUNCTION(ReleaseStringCritical) \
    FUNCTION(NewWeakGlobalRef) FUNCTION(DeleteWeakGlobalRef) FUNCTION(ExceptionCheck) \
    FUNCTION(NewDirectByteBuffer) FUNCTION(GetDirectBufferAddress) FUNCTION(GetDirectBufferCapacity) \
    FUNCTION(GetObjectRefType) FUNCTION(GetModule) \
    JNI_FUNCTIONS_SINCE_21(FUNCTION) JNI_FUNCTIONS_SINCE_24(FUNCTION)
// clang-format on
