#include <cstdint>

#include "target.h"

// The fuzzer's entry: its inputs lie in blocks of exactly their size.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    hostile::Input input(std::as_bytes(std::span(data, size)));
    fuzz::examine(input);
    return 0;
}
