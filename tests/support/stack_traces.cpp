#include "stack_traces.h"

#include <tlhelp32.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "text.h"

namespace testbed {

namespace {

constexpr std::size_t mostFrames = 64;

struct Stack {
    std::array<const void*, mostFrames> frames;
    std::size_t depth = 0;
};

bool isReadable(DWORD64 address) {
    MEMORY_BASIC_INFORMATION region = {};
    return VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) != 0 &&
           region.State == MEM_COMMIT && (region.Protect & (PAGE_NOACCESS | PAGE_GUARD)) == 0;
}

// Allocates nothing: the thread may be suspended, and hold the lock of the heap.
void walk(CONTEXT& context, Stack& stack) {
    while (stack.depth < mostFrames && context.Rip != 0 && isReadable(context.Rsp)) {
        stack.frames[stack.depth++] = reinterpret_cast<const void*>(context.Rip);
        DWORD64 image = 0;
        RUNTIME_FUNCTION* function = RtlLookupFunctionEntry(context.Rip, &image, nullptr);
        if (function == nullptr) {
            // A leaf, which has not touched the stack: the return address lies on top.
            context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
            context.Rsp += sizeof(DWORD64);
        } else {
            void* handlerData = nullptr;
            DWORD64 frame = 0;
            RtlVirtualUnwind(UNW_FLAG_NHANDLER, image, context.Rip, function, &context, &handlerData, &frame,
                             nullptr);
        }
    }
}

std::string print(const Stack& stack) {
    std::string text;
    for (std::size_t i = 0; i < stack.depth; ++i) {
        text += "    " + placeName(stack.frames[i]) + "\n";
    }
    return text;
}

std::vector<DWORD> otherThreads() {
    std::vector<DWORD> found;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId() && entry.th32ThreadID != GetCurrentThreadId()) {
            found.push_back(entry.th32ThreadID);
        }
    }
    CloseHandle(snapshot);
    return found;
}

}  // namespace

std::string placeName(const void* address) {
    HMODULE module = nullptr;
    wchar_t path[MAX_PATH] = L"";
    if (GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<const wchar_t*>(address), &module) == 0 ||
        GetModuleFileNameW(module, path, MAX_PATH) == 0) {
        return hex(reinterpret_cast<std::uint64_t>(address));
    }
    const auto offset = static_cast<const char*>(address) - reinterpret_cast<const char*>(module);
    return toUtf8(std::filesystem::path(path).filename().wstring()) + "+" +
           hex(static_cast<std::uint64_t>(offset));
}

std::string stackOf(CONTEXT context) {
    Stack stack;
    walk(context, stack);
    return print(stack);
}

std::string stacksOfOtherThreads() {
    std::string text;
    for (const DWORD id : otherThreads()) {
        const HANDLE thread = OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT, FALSE, id);
        Stack stack;
        CONTEXT context = {};
        context.ContextFlags = CONTEXT_FULL;
        SuspendThread(thread);
        if (GetThreadContext(thread, &context)) {
            walk(context, stack);
        }
        ResumeThread(thread);
        CloseHandle(thread);
        text += "  thread " + hex(id) + "\n" + print(stack);
    }
    return text;
}

}  // namespace testbed
