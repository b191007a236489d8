#pragma once

#include <windows.h>

#include <cstdlib>

#include "bridge/owners.h"

namespace winutil {

// A heap cell with one handle in it, or that kind's none. Closes the handle, if there is one, and frees the
// cell.
template <class Handle>
struct HandleCellKind {
    using Value = HANDLE*;
    static Value none() noexcept { return nullptr; }
    static void close(Value cell) noexcept {
        Handle(*cell).reset();
        std::free(static_cast<void*>(cell));
    }
};

// The cells of files, and those of processes, pipes and accounts' tokens.
using FileCell = Owned<HandleCellKind<FileHandle>>;
using KernelCell = Owned<HandleCellKind<KernelHandle>>;

}  // namespace winutil
