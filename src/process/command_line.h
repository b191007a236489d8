#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "bridge/errors.h"

namespace winutil::process {

// A text of another process, or as much of it as there is room for. Its end is not sure to be marked: that
// process wrote it.
class ForeignText {
public:
    static constexpr std::size_t size = 4096;  // bytes

    void* memory() noexcept { return text_; }
    // Ends at the first zero.
    std::wstring_view view() const noexcept;

private:
    // Zero to begin with: an odd length ends in half a character.
    wchar_t text_[size / sizeof(wchar_t)] = {};
};
static_assert(sizeof(ForeignText) == ForeignText::size);

// Reads the command line of a process. Returns false, with the reason in `errorBuffer`, when that fails.
bool readCommandLine(std::int64_t processId, bool verbose, ForeignText& commandLine,
                     ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::process
