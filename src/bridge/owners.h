// Scoped owners, one type per kind of resource. Nothing in the library frees or closes by hand what an owner
// can hold.
#pragma once

// windows.h comes first: the others build on it.
#include <windows.h>

#include <lmcons.h>
// lmapibuf.h needs the types of lmcons.h.
#include <lmapibuf.h>

#include <cstdlib>
#include <utility>

namespace winutil {

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
            const DWORD error = GetLastError();
            Kind::close(old);
            SetLastError(error);
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

// A handle whose "none" is INVALID_HANDLE_VALUE: files and devices.
struct FileHandleKind {
    using Value = HANDLE;
    static Value none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Value value) noexcept { CloseHandle(value); }
};
using FileHandle = Owned<FileHandleKind>;

// A handle whose "none" is null: tokens, processes, threads, events.
struct KernelHandleKind {
    using Value = HANDLE;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { CloseHandle(value); }
};
using KernelHandle = Owned<KernelHandleKind>;

// A directory search; closed with FindClose, not CloseHandle.
struct SearchHandleKind {
    using Value = HANDLE;
    static Value none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Value value) noexcept { FindClose(value); }
};
using SearchHandle = Owned<SearchHandleKind>;

// A search for volumes.
struct VolumeSearchKind {
    using Value = HANDLE;
    static Value none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Value value) noexcept { FindVolumeClose(value); }
};
using VolumeSearch = Owned<VolumeSearchKind>;

// A module reference taken with LoadLibrary.
struct ModuleKind {
    using Value = HMODULE;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { FreeLibrary(value); }
};
using Module = Owned<ModuleKind>;

// An open registry key.
struct RegistryKeyKind {
    using Value = HKEY;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { RegCloseKey(value); }
};
using RegistryKey = Owned<RegistryKeyKind>;

// Memory that the system allocated with LocalAlloc: message texts, security descriptors and their texts.
template <class T>
struct LocalMemoryKind {
    using Value = T*;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { LocalFree(value); }
};
template <class T>
using LocalMemory = Owned<LocalMemoryKind<T>>;

// Memory from the process heap.
template <class T>
struct ProcessHeapMemoryKind {
    using Value = T*;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { HeapFree(GetProcessHeap(), 0, value); }
};
template <class T>
using ProcessHeapMemory = Owned<ProcessHeapMemoryKind<T>>;

// A buffer that a Net... call handed out.
template <class T>
struct NetMemoryKind {
    using Value = T*;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { NetApiBufferFree(value); }
};
template <class T>
using NetMemory = Owned<NetMemoryKind<T>>;

// Memory from malloc.
template <class T>
struct HeapMemoryKind {
    using Value = T*;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { std::free(static_cast<void*>(value)); }
};
template <class T>
using HeapMemory = Owned<HeapMemoryKind<T>>;

// Zero-terminated UTF-16 text in memory from malloc.
using WideString = HeapMemory<wchar_t>;

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
