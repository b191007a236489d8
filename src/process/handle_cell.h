// The object behind the Java long of a process, a pipe or an account's token.
#pragma once

#include <jni.h>
#include <windows.h>

#include <cstdlib>

#include "bridge/owners.h"

namespace winutil::process {

// The cell behind a Java long, or null for 0 and below, which no launch ever gave.
inline HANDLE* toCell(jlong value) noexcept {
    return value > 0 ? reinterpret_cast<HANDLE*>(value) : nullptr;
}

inline jlong toJava(HANDLE* cell) noexcept {
    return reinterpret_cast<jlong>(cell);
}

// A cell on its way out: its handle is closed, if it holds one, and the cell is freed.
struct HandleCellKind {
    using Value = HANDLE*;
    static Value none() noexcept { return nullptr; }
    static void close(Value cell) noexcept {
        if (*cell != nullptr) {
            CloseHandle(*cell);
        }
        std::free(static_cast<void*>(cell));
    }
};
using HandleCell = Owned<HandleCellKind>;

}  // namespace winutil::process
