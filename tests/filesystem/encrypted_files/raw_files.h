// Encrypted files in memory, behind the system's raw calls: they hand their blocks to the callbacks as the
// system does, and stop where a callback says so.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "winutil_fixture.h"

namespace testbed {

class RawFiles {
public:
    explicit RawFiles(SystemCalls& system);

    // What the raw form of each file is.
    std::map<std::wstring, std::string> files;
    std::size_t blockSize = 8;

    // What the next streaming call answers when its blocks are through, whatever a callback answered.
    std::optional<DWORD> failure;
    // How often an import is asked for more behind its end, the one with an error too.
    int extraBlocks = 0;
    // Runs before each block of an export.
    std::function<void(std::size_t number)> beforeBlock = [](std::size_t) {};

    // What the callbacks answered, block by block, and the lengths that an import gave.
    const std::vector<DWORD>& answers() const { return answers_; }
    const std::vector<ULONG>& lengths() const { return lengths_; }

private:
    DWORD open(const wchar_t* path, ULONG flags, PVOID* context);
    DWORD exportFile(PFE_EXPORT_FUNC callback, PVOID record, PVOID context);
    DWORD importFile(PFE_IMPORT_FUNC callback, PVOID record, PVOID context);
    // One block of an import: its bytes, or none when the callback refused.
    std::optional<std::string> takeBlock(PFE_IMPORT_FUNC callback, PVOID record);
    DWORD finish(DWORD code) { return std::exchange(failure, {}).value_or(code); }

    struct Context {
        std::wstring path;
        ULONG flags;
    };
    std::map<PVOID, Context> contexts_;
    std::vector<DWORD> answers_;
    std::vector<ULONG> lengths_;
    std::vector<Replacement> replacements_;
};

}  // namespace testbed
