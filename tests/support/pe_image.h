// Reads headers, imports and exports of a PE image: one that the loader has mapped, or a file on disk.
#pragma once

#include <windows.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace testbed {

// One function that an image takes from another module.
struct Import {
    std::string module;
    std::string name;       // empty when imported by its ordinal
    WORD ordinal = 0;       // only then
    DWORD addressCell = 0;  // where in the image the loader writes the function's address
};

// One entry of a module's export table.
struct Export {
    std::string name;
    DWORD target = 0;         // offset of the function in the image
    DWORD targetCell = 0;     // where in the image that offset is kept
    std::string forwardedTo;  // "MODULE.Function" when another module has the function
};

class PeImage {
public:
    // The image at the base address of a loaded module; nothing is copied.
    static PeImage ofModule(HMODULE module);

    // A file, its sections laid out as the loader would lay them out. Nothing in it runs.
    static std::optional<PeImage> ofFile(const std::wstring& path);

    const IMAGE_NT_HEADERS64& headers() const;
    std::vector<Import> imports() const;
    std::vector<Export> exports() const;

    // The export of that name, or of that ordinal.
    std::optional<Export> findExport(const std::string& name) const;
    std::optional<Export> findExport(WORD ordinal) const;

    // Whether an address of the loaded image lies in a section that holds code.
    bool isCode(const void* address) const;

    const std::byte* base() const { return base_; }

    template <class T>
    const T* at(DWORD offset) const {
        return reinterpret_cast<const T*>(base_ + offset);
    }

private:
    explicit PeImage(const std::byte* base) : base_(base) {}

    const IMAGE_EXPORT_DIRECTORY* exportDirectory() const;
    Export exportAt(DWORD index) const;

    const std::byte* base_ = nullptr;
    std::vector<std::byte> copy_;  // what base_ points at when the image was read from a file
};

}  // namespace testbed
