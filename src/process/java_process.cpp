#include "process/java_process.h"

#include "bridge/java_calls.h"
#include "bridge/java_values.h"
#include "process/java_lookups.h"

namespace winutil::process {

namespace {

// The Java objects of the read ends; none where one could not be made.
struct JavaPipes {
    LocalRef<> output;
    LocalRef<> error;
};

LocalRef<> newJavaPipe(JNIEnv* env, jclass type, jmethodID constructor, HANDLE* cell,
                       const KernelHandle& readEnd) noexcept {
    *cell = readEnd.get();
    return newObject(env, type, constructor, toJavaHandle(cell));
}

JavaPipes newJavaPipes(JNIEnv* env, const wchar_t* tag, const LaunchCells& cells, const OutputPipes& pipes,
                       ErrorBuffer& errorBuffer) noexcept {
    const LocalRef type = requireClass(env, tag, java_class::winPipe, errorBuffer);
    if (!type) {
        return {};
    }
    const jmethodID constructor =
        requireConstructor(env, tag, type.get(), java_class::winPipe, java_method::newWinPipe, errorBuffer);
    if (constructor == nullptr) {
        return {};
    }
    JavaPipes made;
    made.output = newJavaPipe(env, type.get(), constructor, cells.output, pipes.output.readEnd);
    if (made.output) {
        made.error = newJavaPipe(env, type.get(), constructor, cells.error, pipes.error.readEnd);
    }
    return made;
}

}  // namespace

jobject newJavaProcess(JNIEnv* env, const wchar_t* tag, const LaunchCells& cells, OutputPipes& pipes,
                       ErrorBuffer& errorBuffer) noexcept {
    const JavaPipes javaPipes = newJavaPipes(env, tag, cells, pipes, errorBuffer);
    if (!javaPipes.output || !javaPipes.error) {
        return nullptr;
    }
    const LocalRef type = requireClass(env, tag, java_class::winProcess, errorBuffer);
    if (!type) {
        return nullptr;
    }
    const jmethodID constructor = requireConstructor(env, tag, type.get(), java_class::winProcess,
                                                     java_method::newWinProcess, errorBuffer);
    if (constructor == nullptr) {
        return nullptr;
    }
    // Required: standard error comes first, because the constructor takes it so.
    LocalRef<> process = newObject(env, type.get(), constructor, toJavaHandle(cells.process), javaPipes.error,
                                   javaPipes.output, toJavaHandle(cells.token), toJavaHandle(cells.profile));
    if (process) {
        pipes.output.readEnd.release();
        pipes.error.readEnd.release();
    }
    return process.release();
}

}  // namespace winutil::process
