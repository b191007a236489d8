#pragma once

#include <cstdint>

#include "bridge/errors.h"

namespace winutil::process {

// Ends a process with exit code 0 and waits until it has ended. Returns false, with the reason in
// `errorBuffer`, when it cannot be opened or ended.
bool terminate(std::int64_t processId, bool verbose, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::process
