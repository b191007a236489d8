#include "hostile_test.h"

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <lm.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace testbed {

std::vector<CorpusFile> corpusOf(const std::string& target) {
    std::vector<CorpusFile> files;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(CORPUS) / target)) {
        std::ifstream stream(entry.path(), std::ios::binary);
        files.push_back({.name = target + "/" + entry.path().filename().string(),
                         .bytes = {std::istreambuf_iterator<char>(stream), {}}});
    }
    std::ranges::sort(files, {}, &CorpusFile::name);
    return files;
}

std::wstring describe(const Value& value) {
    const auto* object = std::get_if<JavaObject>(&value.any());
    if (object == nullptr) {
        return std::holds_alternative<bool>(value.any()) ? std::to_wstring(value.boolean())
                                                         : std::to_wstring(value.number());
    }
    if (!*object) {
        return L"null";
    }
    const JavaContent::Any& content = object->content()->any;
    if (const auto* bytes = std::get_if<std::vector<jbyte>>(&content)) {
        return {bytes->begin(), bytes->end()};
    }
    if (std::holds_alternative<ObjectArray>(content)) {
        std::wstring texts;
        for (const std::wstring& text : object->texts()) {
            texts += L"[" + text + L"]";
        }
        return texts;
    }
    return object->text();
}

GuardedSystemMemory::GuardedSystemMemory(SystemCalls& calls) {
    const auto replace = [&]<class Function>(const char* name, Function*, auto body) {
        replacements_.push_back(calls.replace<Function>(name, body));
    };
    replace("GlobalAlloc", GlobalAlloc, [this](UINT, SIZE_T size) -> HGLOBAL { return give(size); });
    replace("GlobalLock", GlobalLock, [](HGLOBAL block) -> LPVOID { return block; });
    replace("GlobalUnlock", GlobalUnlock, [](HGLOBAL) { return FALSE; });
    replace("GlobalFree", GlobalFree, [this](HGLOBAL block) -> HGLOBAL {
        EXPECT_TRUE(release(block));
        return nullptr;
    });
    // The texts of messages are the system's own.
    replace("LocalFree", LocalFree,
            [this](HLOCAL block) -> HLOCAL { return release(block) ? nullptr : ::LocalFree(block); });
    replace("HeapAlloc", HeapAlloc, [this](HANDLE, DWORD, SIZE_T size) -> LPVOID { return give(size); });
    replace("HeapFree", HeapFree, [this](HANDLE, DWORD, LPVOID block) {
        EXPECT_TRUE(release(block));
        return TRUE;
    });
    replace("NetApiBufferFree", NetApiBufferFree, [this](LPVOID block) -> DWORD {
        EXPECT_TRUE(release(block));
        return 0;
    });
}

void* GuardedSystemMemory::give(std::size_t size) {
    GuardedBuffer buffer(size, "a block of " + std::to_string(size) + " bytes of the system's");
    void* block = buffer.data();
    blocks_.emplace(block, std::move(buffer));
    return block;
}

bool GuardedSystemMemory::release(void* block) {
    return blocks_.erase(block) != 0;
}

}  // namespace testbed
