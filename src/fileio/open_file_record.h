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
        std::free(cell);
    }
};
using HandleCell = Owned<HandleCellKind>;

struct OpenFileRecord {
    wchar_t* path;  // a copy of the path as given
    HANDLE* handleCell;
    std::int64_t position;          // bytes read so far through the read methods
    std::int64_t fileSize;          // at open
    DWORD flags;                    // flags and attributes as given; 0 from openFile
    DWORD access;                   // access as given, before anything was added; 0 from openFile
    std::int64_t preallocatedSize;  // bytes; 0 where nothing was preallocated

    HANDLE handle() const noexcept { return *handleCell; }
};

// The record behind a Java long, or null for 0 and below, which no open method ever gave.
inline OpenFileRecord* toRecord(jlong value) noexcept {
    return value > 0 ? reinterpret_cast<OpenFileRecord*>(value) : nullptr;
}

}  // namespace winutil::fileio
