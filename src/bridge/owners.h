// Scoped owners, one type per kind of resource. Nothing in the library frees or closes by hand what an owner
// can hold.
#pragma once

// windows.h comes first: the others build on it.
#include <windows.h>

#include <lmcons.h>
// lmapibuf.h needs the types of lmcons.h.
#include <lmapibuf.h>

#include <cstdint>
#include <cstdlib>
#include <utility>

namespace winutil {

// Closes what an owner has, and leaves the thread's last error as it was. Out of line, since every owner in
// the library has it at its end.
void closeKeepingError(void (*close)(void*) noexcept, void* value) noexcept;

// Owns what a call handed out. Closing leaves the thread's last error as it was, so that a failure still
// carries its own code after the clean-up behind it.
template <class Kind>
class Owned {
public:
    using Value = typename Kind::Value;

    Owned() noexcept = default;
    explicit Owned(Value value) noexcept : value_(value) {}
    Owned(Owned&& other) noexcept : value_(other.release()) {}
    Owned& operator=(Owned&& other) noexcept {
        reset(other.release());
        return *this;
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() { reset(); }

    explicit operator bool() const noexcept { return value_ != Kind::none(); }
    Value get() const noexcept { return value_; }
    Value release() noexcept { return std::exchange(value_, Kind::none()); }
    void reset(Value next = Kind::none()) noexcept {
        const Value old = std::exchange(value_, next);
        if (old != Kind::none()) {
            closeKeepingError([](void* value) noexcept { Kind::close(static_cast<Value>(value)); },
                              static_cast<void*>(old));
        }
    }

    // The address for a call that hands out its result through a pointer; what was owned before is closed.
    Value* receive() noexcept {
        reset();
        return &value_;
    }

private:
    Value value_ = Kind::none();
};

// What one call closes or frees, and the value that stands for none.
template <class T, auto closeFunction, std::intptr_t noneValue = 0>
struct ResourceKind {
    using Value = T;
    static Value none() noexcept { return reinterpret_cast<Value>(noneValue); }
    static void close(Value value) noexcept { closeFunction(value); }
};
template <class T, auto closeFunction, std::intptr_t noneValue = 0>
using Resource = Owned<ResourceKind<T, closeFunction, noneValue>>;

// INVALID_HANDLE_VALUE as the number that it is.
inline constexpr std::intptr_t invalidHandle = -1;

// Files and devices.
using FileHandle = Resource<HANDLE, CloseHandle, invalidHandle>;

// Tokens, processes, threads, events.
using KernelHandle = Resource<HANDLE, CloseHandle>;

// A directory search, and a search for volumes.
using SearchHandle = Resource<HANDLE, FindClose, invalidHandle>;
using VolumeSearch = Resource<HANDLE, FindVolumeClose, invalidHandle>;

// A module reference taken with LoadLibrary.
using Module = Resource<HMODULE, FreeLibrary>;

// An open registry key.
using RegistryKey = Resource<HKEY, RegCloseKey>;

// Memory that the system allocated with LocalAlloc: message texts, security descriptors and their texts.
template <class T>
using LocalMemory = Resource<T*, LocalFree>;

// Memory from GlobalAlloc.
using GlobalMemory = Resource<void*, GlobalFree>;

// Holds a lock for the length of a scope: alone, or with all others that hold it shared. A thread that has it
// must not take it again.
template <void(WINAPI* acquire)(PSRWLOCK), void(WINAPI* release)(PSRWLOCK)>
class LockScope {
public:
    explicit LockScope(SRWLOCK& lock) noexcept : lock_(lock) { acquire(&lock_); }
    LockScope(const LockScope&) = delete;
    LockScope& operator=(const LockScope&) = delete;
    ~LockScope() { release(&lock_); }

private:
    SRWLOCK& lock_;
};
using ExclusiveLock = LockScope<AcquireSRWLockExclusive, ReleaseSRWLockExclusive>;
using SharedLock = LockScope<AcquireSRWLockShared, ReleaseSRWLockShared>;

inline void freeToProcessHeap(void* memory) noexcept {
    HeapFree(GetProcessHeap(), 0, memory);
}

// Memory from the process heap.
template <class T>
using ProcessHeapMemory = Resource<T*, freeToProcessHeap>;

// A buffer that a Net... call handed out.
template <class T>
using NetMemory = Resource<T*, NetApiBufferFree>;

template <class T>
void freeToHeap(T* memory) noexcept {
    std::free(static_cast<void*>(memory));
}

// Memory from malloc.
template <class T>
using HeapMemory = Resource<T*, freeToHeap<T>>;

// New memory for `count` elements of T, or none when there is none left.
template <class T>
HeapMemory<T> allocate(std::size_t count) noexcept {
    if (count > SIZE_MAX / sizeof(T)) {
        return {};
    }
    return HeapMemory<T>(static_cast<T*>(std::malloc(count * sizeof(T))));
}

// The same, every byte of it zero.
template <class T>
HeapMemory<T> allocateZeroed(std::size_t count) noexcept {
    return HeapMemory<T>(static_cast<T*>(std::calloc(count, sizeof(T))));
}

}  // namespace winutil
