// The object behind the Java long of an open file.
#pragma once

#include <jni.h>
#include <windows.h>

#include <cstdint>

#include "bridge/owners.h"

namespace winutil::fileio {

// A heap cell that holds one handle, INVALID_HANDLE_VALUE included; closes the handle and frees the cell.
struct HandleCellKind {
    using Value = HANDLE*;
    static Value none() noexcept { return nullptr; }
    static void close(Value cell) noexcept {
        if (*cell != INVALID_HANDLE_VALUE) {
            CloseHandle(*cell);
        }
        std::free(static_cast<void*>(cell));
    }
};
using HandleCell = Owned<HandleCellKind>;

struct OpenFileRecord {
    wchar_t* path = nullptr;  // a copy of the path as given
    HANDLE* handleCell = nullptr;
    std::int64_t position = 0;          // bytes read so far through the read methods
    std::int64_t fileSize = 0;          // bytes, at open
    DWORD flags = 0;                    // flags and attributes as given; 0 from openFile
    DWORD access = 0;                   // as given, before anything was added; 0 from openFile
    std::int64_t preallocatedSize = 0;  // bytes; 0 where nothing was preallocated

    HANDLE handle() const noexcept { return *handleCell; }
};

// The record behind a Java long, or null for 0 and below, which no open method ever gave.
inline OpenFileRecord* toRecord(jlong value) noexcept {
    return value > 0 ? reinterpret_cast<OpenFileRecord*>(value) : nullptr;
}

}  // namespace winutil::fileio
