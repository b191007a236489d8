// The Java classes that the library constructs and the methods that it calls back: one place for every name
// and signature, so that a change on the Java side is mirrored here and nowhere else.
#pragma once

#include <jni.h>

#include "bridge/java_refs.h"

namespace winutil {

struct JavaMethod {
    const char* name;
    const char* signature;
};

namespace java_class {
inline constexpr char ioException[] = "java/io/IOException";
inline constexpr char fileNotFoundException[] = "java/io/FileNotFoundException";
inline constexpr char outOfMemoryError[] = "java/lang/OutOfMemoryError";
inline constexpr char runtimeException[] = "java/lang/RuntimeException";
inline constexpr char securityException[] = "java/lang/SecurityException";
inline constexpr char diskFullException[] = "com/qarvo/dov/io/DiskFullException";
inline constexpr char sharingViolationException[] = "com/qarvo/dov/io/SharingViolationException";
inline constexpr char accountRestrictionException[] =
    "com/qarvo/kel/util/UtilException$AccountRestrictionException";
inline constexpr char string[] = "java/lang/String";
inline constexpr char winFile[] = "com/qarvo/kel/util/WinFileList$WinFile";
inline constexpr char winPipe[] = "com/qarvo/kel/util/WinPipe";
inline constexpr char winProcess[] = "com/qarvo/kel/util/WinProcess";
inline constexpr char winProcessInfo[] = "com/qarvo/kel/util/WinProcessInfo";
// Required: descriptors where names are due, because the lookups have always been made with them; every JVM
// resolves them.
inline constexpr char arrayList[] = "Ljava/util/ArrayList;";
inline constexpr char winServerFeature[] = "Lcom/qarvo/kel/util/WinServerFeature;";
}  // namespace java_class

namespace java_method {
inline constexpr JavaMethod newException{"<init>", "(Ljava/lang/String;)V"};
inline constexpr JavaMethod fireFileErrorEvent{"fireFileErrorEvent",
                                               "(Ljava/lang/String;Ljava/lang/String;)V"};
inline constexpr JavaMethod add{"add", "(Ljava/lang/Object;)Z"};
inline constexpr JavaMethod get{"get", "(I)Ljava/lang/Object;"};
inline constexpr JavaMethod size{"size", "()I"};
inline constexpr JavaMethod newList{"<init>", "()V"};
inline constexpr JavaMethod write{"write", "([BII)V"};
inline constexpr JavaMethod read{"read", "([BII)I"};
inline constexpr JavaMethod addFile{"addFile", "(Ljava/lang/String;ZJJILjava/lang/String;Z)V"};
// The record with link kind and target, and the older one that only says whether the file is a reparse point.
inline constexpr JavaMethod newWinFile{"<init>",
                                       "(Ljava/lang/String;ZJJILjava/lang/String;BLjava/lang/String;)V"};
inline constexpr JavaMethod newOlderWinFile{"<init>", "(Ljava/lang/String;ZJJILjava/lang/String;Z)V"};
// A child's pipe; a child with its standard error, its standard output, and its token and profile.
inline constexpr JavaMethod newWinPipe{"<init>", "(J)V"};
inline constexpr JavaMethod newWinProcess{"<init>",
                                          "(JLcom/qarvo/kel/util/WinPipe;Lcom/qarvo/kel/util/WinPipe;JJ)V"};
inline constexpr JavaMethod newWinProcessInfo{"<init>",
                                              "(Ljava/lang/String;JJLjava/lang/String;Ljava/lang/String;)V"};
// What a registry key holds: the names of root, key and item, and the value of an item that has one.
inline constexpr JavaMethod addNode{"addNode", "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V"};
inline constexpr JavaMethod addStringNode{
    "addStringNode", "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V"};
inline constexpr JavaMethod addDwordNode{"addDwordNode",
                                         "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;J)V"};
inline constexpr JavaMethod addByteNode{"addByteNode",
                                        "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;[B)V"};
inline constexpr JavaMethod addMultiStringNode{
    "addMultiStringNode", "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;[Ljava/lang/String;)V"};
inline constexpr JavaMethod addCpuInfo{
    "addCpuInfo",
    "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;JLjava/lang/String;II)V"};
inline constexpr JavaMethod addMemoryInfo{"addMemoryInfo", "(Ljava/lang/String;IJ)V"};
inline constexpr JavaMethod newServerFeature{"<init>", "(IILjava/lang/String;)V"};
// Scope, type, display type and usage of a network resource, its local and its remote name, its provider.
inline constexpr JavaMethod addEntry{"addEntry",
                                     "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/"
                                     "String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V"};
// Name, serial number, and whether it is the system disk.
inline constexpr JavaMethod addDiskInfo{"addDiskInfo", "(Ljava/lang/String;Ljava/lang/String;Z)V"};
}  // namespace java_method

// Returns the method of `type`, or null with the JVM's NoSuchMethodError pending.
jmethodID findMethod(JNIEnv* env, jclass type, const JavaMethod& method) noexcept;

// Returns the method of a collector's class, or null with nothing pending: a collector that lacks the method
// is passed over, and the calls behind the lookup must stay legal. So is no collector at all.
jmethodID findCollectorMethod(JNIEnv* env, jobject collector, const JavaMethod& method) noexcept;

}  // namespace winutil
