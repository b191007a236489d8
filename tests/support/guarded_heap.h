// Gives the DLL memory in which every mistake shows: a block ends at a guard page, holds no zeros by chance,
// and is gone as soon as it is freed.
#pragma once

#include <map>
#include <mutex>
#include <vector>

#include "guard_pages.h"
#include "system_calls.h"

namespace testbed {

// Stands in for malloc, calloc and free until it goes out of scope; the library resizes nothing. Blocks from
// before are freed as ever.
class GuardedHeap {
public:
    explicit GuardedHeap(SystemCalls& system, std::byte filling = std::byte{0xCD});

private:
    void* allocate(std::size_t size, std::byte filling);
    bool release(void* block);

    std::byte filling_;  // of what malloc gives
    std::mutex mutex_;
    std::map<void*, GuardedBuffer> blocks_;
    std::vector<Replacement> replacements_;  // last, so that they end first
};

}  // namespace testbed
