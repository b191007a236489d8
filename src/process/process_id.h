#pragma once

#include <windows.h>

#include <cstdint>

#include "bridge/owners.h"

namespace winutil::process {

// A process id as Java has it. That of a process has 32 bits; one beyond them is no process's, although its
// lower half may be.
class ProcessId {
public:
    explicit ProcessId(std::int64_t value) noexcept : value_(value) {}

    // Returns the process; none, with the reason as the last error, when it cannot be opened.
    KernelHandle open(DWORD access) const noexcept {
        if (!isPossible()) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return {};
        }
        return KernelHandle(OpenProcess(access, FALSE, static_cast<DWORD>(value_)));
    }

    // The number that messages show: a possible id as 32 bits with their sign.
    std::int64_t number() const noexcept { return isPossible() ? static_cast<std::int32_t>(value_) : value_; }

private:
    bool isPossible() const noexcept { return value_ >= 0 && value_ <= MAXDWORD; }

    std::int64_t value_;
};

}  // namespace winutil::process
