// What the process holds right now.
#pragma once

#include <cstdint>

namespace bench {

// Memory of this process that no file backs, in bytes.
std::int64_t privateBytes();

// Open handles of this process, -1 when they cannot be counted.
std::int64_t openHandles();

}  // namespace bench
