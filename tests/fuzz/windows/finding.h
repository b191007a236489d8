// What ends a fuzz target besides its sanitizers: a property that an input breaks.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void require(bool holds, const char* broken) {
    if (!holds) {
        std::fprintf(stderr, "FINDING: %s\n", broken);
        std::abort();
    }
}

}  // namespace fuzz
