// The handle cells of a launch.
#pragma once

#include "bridge/errors.h"
#include "bridge/owners.h"
#include "process/failure.h"
#include "process/handle_cell.h"

namespace winutil::process {

// The cells that Java receives; null where a launch has none. They have no owner: those of a failed launch
// are let go, and so is what they hold, deliberately.
struct LaunchCells {
    HANDLE* process = nullptr;
    HANDLE* output = nullptr;
    HANDLE* error = nullptr;
    HANDLE* token = nullptr;
    HANDLE* profile = nullptr;
};

// Makes empty cells. Returns false, with the reason in `failure`, when memory is exhausted.
template <class... Cells>
bool allocateCells(const wchar_t* tag, ErrorBuffer& failure, Cells&... cells) noexcept {
    const auto allocateCell = [](HANDLE*& cell) noexcept {
        cell = allocateZeroed<HANDLE>(1).release();
        return cell != nullptr;
    };
    return (allocateCell(cells) && ...) || failed(failure, ERROR_NOT_ENOUGH_MEMORY, L"%s", tag);
}

}  // namespace winutil::process
