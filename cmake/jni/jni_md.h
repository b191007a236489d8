// The machine-dependent half of <jni.h> for 64-bit Windows, used when the build's own JDK is not a Windows
// one: its jni_md.h would make jlong a 32-bit long and export nothing.
#ifndef WINUTIL_JNI_MD_H
#define WINUTIL_JNI_MD_H

#define JNIEXPORT __declspec(dllexport)
#define JNIIMPORT __declspec(dllimport)
#define JNICALL __stdcall

typedef long jint;
typedef long long jlong;
typedef signed char jbyte;

#endif
