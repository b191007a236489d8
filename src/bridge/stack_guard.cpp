// What the compiler's stack protector asks for. Visual C++ has its own; that of GCC's library would fetch the
// guard from a cryptographic provider, and load that, while the loader lock is held.
#ifndef _MSC_VER

#include <windows.h>

#include <cstdint>

extern "C" {

std::uintptr_t __stack_chk_guard = 0;

[[noreturn]] void __stack_chk_fail() {
    // Nothing of this process can be relied on any more: the system ends it at once, as it does behind a
    // guard of Visual C++.
    asm volatile("int $0x29" : : "c"(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE));
    __builtin_unreachable();
}
}

namespace {

// Mixed of what differs from process to process and from load to load. The lowest byte is zero, which no text
// copies over.
std::uintptr_t makeGuard() noexcept {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    std::uint64_t guard = std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    guard ^= static_cast<std::uint64_t>(counter.QuadPart) << 24;
    guard ^= std::uint64_t{GetCurrentProcessId()} << 40 | std::uint64_t{GetCurrentThreadId()} << 8;
    guard ^= reinterpret_cast<std::uintptr_t>(&time) ^ reinterpret_cast<std::uintptr_t>(&__stack_chk_guard);
    // A finalizer: each bit of the input reaches each bit of the guard.
    guard = (guard ^ guard >> 33) * 0xFF51AFD7ED558CCD;
    guard = (guard ^ guard >> 33) * 0xC4CEB9FE1A85EC53;
    return (guard ^ guard >> 33) & ~std::uintptr_t{0xFF};
}

// Set by static initialisation, when no function with a guard in its frame is under way.
[[maybe_unused]] const bool guardIsSet = (__stack_chk_guard = makeGuard()) != 0;

}  // namespace

#endif
