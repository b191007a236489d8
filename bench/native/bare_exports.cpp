// The floor without Java, called once per pass.
#include <com_qarvo_winutil_bench_Bare.h>

#include <algorithm>

#include "bare.h"
#include "counters.h"
#include "java_text.h"

using namespace bench;

namespace {

Paths& toPaths(jlong paths) {
    return *reinterpret_cast<Paths*>(paths);
}

char* address(JNIEnv* env, jobject buffer) {
    return static_cast<char*>(env->GetDirectBufferAddress(buffer));
}

}  // namespace

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_preparePaths(JNIEnv* env, jclass,
                                                                       jobjectArray paths) {
    auto* prepared = new Paths;
    for (jsize i = 0; i < env->GetArrayLength(paths); ++i) {
        auto* path = static_cast<jstring>(env->GetObjectArrayElement(paths, i));
        prepared->push_back(toWide(env, path));
        env->DeleteLocalRef(path);
    }
    return reinterpret_cast<jlong>(prepared);
}

JNIEXPORT void JNICALL Java_com_qarvo_winutil_bench_Bare_freePaths(JNIEnv*, jclass, jlong paths) {
    delete &toPaths(paths);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_list(JNIEnv* env, jclass, jstring directory,
                                                               jboolean withSecurity) {
    return listDirectory(toWide(env, directory), withSecurity != JNI_FALSE, -1).entries;
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_digest(JNIEnv* env, jclass, jstring directory,
                                                                 jboolean withSecurity, jint fields) {
    return static_cast<jlong>(
        listDirectory(toWide(env, directory), withSecurity != JNI_FALSE, fields).digest);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_peakOfList(JNIEnv* env, jclass, jstring directory) {
    std::int64_t peak = 0;
    const auto sample = [](void* context) {
        auto& highest = *static_cast<std::int64_t*>(context);
        highest = std::max(highest, privateBytes());
    };
    listDirectory(toWide(env, directory), false, -1, sample, &peak);
    return peak;
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_countNumbers(JNIEnv* env, jclass, jstring key) {
    return countNumbers(toWide(env, key));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_countProcesses(JNIEnv* env, jclass,
                                                                         jstring executableName) {
    return countProcesses(toWide(env, executableName));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_read(JNIEnv* env, jclass, jstring path,
                                                               jobject buffer, jint block) {
    return readFile(toWide(env, path), address(env, buffer), static_cast<DWORD>(block));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_overwrite(JNIEnv* env, jclass, jstring path,
                                                                    jobject buffer, jint block, jlong total) {
    return overwriteFile(toWide(env, path), address(env, buffer), static_cast<DWORD>(block), total);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_readFiles(JNIEnv* env, jclass, jlong paths,
                                                                    jobject buffer) {
    return readFiles(toPaths(paths), address(env, buffer),
                     static_cast<DWORD>(env->GetDirectBufferCapacity(buffer)));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_countExisting(JNIEnv*, jclass, jlong paths) {
    return countExisting(toPaths(paths));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_sumAttributes(JNIEnv*, jclass, jlong paths) {
    return sumAttributes(toPaths(paths));
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Bare_sumLastModified(JNIEnv*, jclass, jlong paths) {
    return sumLastModified(toPaths(paths));
}
