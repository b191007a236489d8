#include "process/java_process.h"

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
    return {env, env->NewObject(type, constructor, toJava(cell))};
}

JavaPipes newJavaPipes(JNIEnv* env, const wchar_t* tag, const LaunchCells& cells,
                       const OutputPipes& pipes) noexcept {
    const LocalRef type = requireClass(env, tag, java_class::winPipe);
    if (!type) {
        return {};
    }
    const jmethodID constructor =
        requireConstructor(env, tag, type.get(), java_class::winPipe, java_method::newWinPipe);
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

jobject newJavaProcess(JNIEnv* env, const wchar_t* tag, const LaunchCells& cells,
                       OutputPipes& pipes) noexcept {
    const JavaPipes javaPipes = newJavaPipes(env, tag, cells, pipes);
    if (!javaPipes.output || !javaPipes.error) {
        return nullptr;
    }
    const LocalRef type = requireClass(env, tag, java_class::winProcess);
    if (!type) {
        return nullptr;
    }
    const jmethodID constructor =
        requireConstructor(env, tag, type.get(), java_class::winProcess, java_method::newWinProcess);
    if (constructor == nullptr) {
        return nullptr;
    }
    // Standard error comes first: the order of the constructor's parameters.
    const jobject process =
        env->NewObject(type.get(), constructor, toJava(cells.process), javaPipes.error.get(),
                       javaPipes.output.get(), toJava(cells.token), toJava(cells.profile));
    if (process != nullptr) {
        pipes.output.readEnd.release();
        pipes.error.readEnd.release();
    }
    return process;
}

}  // namespace winutil::process
