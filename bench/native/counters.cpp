#include "counters.h"

#include <windows.h>

#include <com_qarvo_winutil_bench_Counters.h>
#include <psapi.h>

#include <memory>

#include "java_text.h"

namespace bench {

namespace {

// The entry of the system's handle list, as far as the process goes; the list begins with their number.
struct SystemHandle {
    USHORT process;
    USHORT backTrace;
    UCHAR type;
    UCHAR flags;
    USHORT value;
    void* object;
    ULONG access;
};
static_assert(sizeof(SystemHandle) == 24);

struct SystemHandles {
    ULONG count;
    SystemHandle handles[1];
};

constexpr ULONG systemHandleInformation = 16;
constexpr ULONG listSize = 4 << 20;  // bytes

template <class Function>
Function findFunction(const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll"), name)));
}

}  // namespace

// GetProcessHandleCount would do, were it not for systems on which it always answers 0.
std::int64_t openHandles() {
    using Query = LONG(NTAPI*)(ULONG, void*, ULONG, ULONG*);
    const auto query = findFunction<Query>("NtQuerySystemInformation");
    const auto memory = std::make_unique<char[]>(listSize);
    if (query == nullptr || query(systemHandleInformation, memory.get(), listSize, nullptr) < 0) {
        return -1;
    }
    const auto* list = reinterpret_cast<const SystemHandles*>(memory.get());
    std::int64_t count = 0;
    for (ULONG i = 0; i < list->count; ++i) {
        if (list->handles[i].process == static_cast<USHORT>(GetCurrentProcessId())) {
            ++count;
        }
    }
    return count;
}

std::int64_t privateBytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    counters.cb = sizeof counters;
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<std::int64_t>(counters.PagefileUsage);
}

}  // namespace bench

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Counters_privateBytes(JNIEnv*, jclass) {
    return bench::privateBytes();
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Counters_openHandles(JNIEnv*, jclass) {
    return bench::openHandles();
}

JNIEXPORT jstring JNICALL Java_com_qarvo_winutil_bench_Counters_wineVersion(JNIEnv* env, jclass) {
    using Version = const char*(__cdecl*)();
    const auto version = bench::findFunction<Version>("wine_get_version");
    return version == nullptr ? nullptr : env->NewStringUTF(version());
}
