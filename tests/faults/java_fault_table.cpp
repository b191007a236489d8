#include <algorithm>
#include <iterator>
#include <string_view>

#include "fault_table.h"

namespace testbed {

namespace {

struct JavaFunction {
    std::string_view name;
    const char* exception;  // null where it cannot fail
};

constexpr char outOfMemory[] = "java/lang/OutOfMemoryError";

const JavaFunction javaFunctions[] = {
    {"FindClass", "java/lang/NoClassDefFoundError"},
    {"GetMethodID", "java/lang/NoSuchMethodError"},
    {"NewObject", outOfMemory},
    {"NewString", outOfMemory},
    {"NewStringUTF", outOfMemory},
    {"NewByteArray", outOfMemory},
    {"NewObjectArray", outOfMemory},
    {"GetStringChars", ""},
    {"GetStringUTFChars", ""},
    {"GetByteArrayElements", ""},
    {"CallVoidMethod", "java/lang/IllegalStateException"},
    {"CallBooleanMethod", "java/lang/IllegalStateException"},
    {"CallIntMethod", "java/lang/IllegalStateException"},
    {"CallObjectMethod", "java/lang/IllegalStateException"},
    // With references, indices and lengths that are right these cannot fail.
    {"GetObjectClass", nullptr},
    {"GetStringLength", nullptr},
    {"SetByteArrayRegion", nullptr},
    {"SetObjectArrayElement", nullptr},
    {"GetDirectBufferAddress", nullptr},
    {"Throw", nullptr},
    {"ExceptionOccurred", nullptr},
    {"ExceptionClear", nullptr},
    {"DeleteLocalRef", nullptr},
    {"ReleaseStringChars", nullptr},
    {"ReleaseStringUTFChars", nullptr},
    {"ReleaseByteArrayElements", nullptr},
};

}  // namespace

bool isKnownJavaFunction(const std::string& javaFunction) {
    return std::ranges::find(javaFunctions, javaFunction, &JavaFunction::name) != std::end(javaFunctions);
}

const char* exceptionBehindFailure(const std::string& javaFunction) {
    const auto found = std::ranges::find(javaFunctions, javaFunction, &JavaFunction::name);
    return found == std::end(javaFunctions) ? nullptr : found->exception;
}

}  // namespace testbed
