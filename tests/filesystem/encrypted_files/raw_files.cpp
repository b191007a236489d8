#include "raw_files.h"

#include <cstring>

namespace testbed {

RawFiles::RawFiles(SystemCalls& system) {
    const auto replace = [&]<class Function, class Body>(const char* name, Function*, Body body) {
        replacements_.push_back(system.replace<Function>(name, std::move(body)));
    };
    replace("OpenEncryptedFileRawW", ::OpenEncryptedFileRawW,
            [this](LPCWSTR path, ULONG flags, PVOID* context) { return open(path, flags, context); });
    replace("ReadEncryptedFileRaw", ::ReadEncryptedFileRaw,
            [this](PFE_EXPORT_FUNC callback, PVOID record, PVOID context) {
                return exportFile(callback, record, context);
            });
    replace("WriteEncryptedFileRaw", ::WriteEncryptedFileRaw,
            [this](PFE_IMPORT_FUNC callback, PVOID record, PVOID context) {
                return importFile(callback, record, context);
            });
    replace("CloseEncryptedFileRaw", ::CloseEncryptedFileRaw,
            [this](PVOID context) { EXPECT_EQ(contexts_.erase(context), 1u) << "no open context"; });
}

DWORD RawFiles::open(const wchar_t* path, ULONG flags, PVOID* context) {
    if ((flags & CREATE_FOR_IMPORT) == 0 && !files.contains(path)) {
        return ERROR_FILE_NOT_FOUND;
    }
    *context = Ledger::fakeHandle();
    contexts_[*context] = {path, flags};
    return ERROR_SUCCESS;
}

DWORD RawFiles::exportFile(PFE_EXPORT_FUNC callback, PVOID record, PVOID context) {
    if (!contexts_.contains(context)) {
        return ERROR_INVALID_HANDLE;
    }
    EXPECT_EQ(contexts_[context].flags, 0u) << "the file is not open for export";
    const std::string raw = files[contexts_[context].path];
    for (std::size_t at = 0; at < raw.size(); at += blockSize) {
        beforeBlock(answers_.size() + 1);
        const std::string text = raw.substr(at, blockSize);
        const GuardedBuffer block(std::as_bytes(std::span(text)), "a raw block");
        answers_.push_back(callback(block.as<BYTE>(), record, static_cast<ULONG>(block.size())));
        if (answers_.back() != ERROR_SUCCESS) {
            return finish(answers_.back());
        }
    }
    return finish(ERROR_SUCCESS);
}

std::optional<std::string> RawFiles::takeBlock(PFE_IMPORT_FUNC callback, PVOID record) {
    const GuardedBuffer block(blockSize, "a raw block to be filled");
    auto length = static_cast<ULONG>(blockSize);
    answers_.push_back(callback(block.as<BYTE>(), record, &length));
    lengths_.push_back(length);
    EXPECT_LE(length, blockSize) << "more than the block holds";
    if (answers_.back() != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::string(block.as<char>(), std::min<std::size_t>(length, blockSize));
}

DWORD RawFiles::importFile(PFE_IMPORT_FUNC callback, PVOID record, PVOID context) {
    if (!contexts_.contains(context)) {
        return ERROR_INVALID_HANDLE;
    }
    EXPECT_NE(contexts_[context].flags & CREATE_FOR_IMPORT, 0u) << "the file is not open for import";
    std::string& raw = files[contexts_[context].path];
    raw.clear();
    std::optional<std::string> block = takeBlock(callback, record);
    for (; block && !block->empty(); block = takeBlock(callback, record)) {
        raw += *block;
    }
    const DWORD answer = answers_.back();
    for (int i = 0; i < extraBlocks; ++i) {
        takeBlock(callback, record);
    }
    return finish(answer);
}

}  // namespace testbed
