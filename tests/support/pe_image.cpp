#include "pe_image.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace testbed {

namespace {

bool isImage(const std::vector<char>& file) {
    if (file.size() < sizeof(IMAGE_DOS_HEADER)) {
        return false;
    }
    IMAGE_DOS_HEADER dos;
    std::memcpy(&dos, file.data(), sizeof dos);
    const auto headers = static_cast<std::size_t>(dos.e_lfanew);
    return dos.e_magic == IMAGE_DOS_SIGNATURE && headers + sizeof(IMAGE_NT_HEADERS64) <= file.size();
}

}  // namespace

PeImage PeImage::ofModule(HMODULE module) {
    return PeImage(reinterpret_cast<const std::byte*>(module));
}

std::optional<PeImage> PeImage::ofFile(const std::wstring& path) {
    std::ifstream stream(std::filesystem::path(path), std::ios::binary);
    const std::vector<char> file{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!isImage(file)) {
        return std::nullopt;
    }
    const PeImage flat(reinterpret_cast<const std::byte*>(file.data()));
    const IMAGE_NT_HEADERS64& headers = flat.headers();

    PeImage image(nullptr);
    image.copy_.resize(headers.OptionalHeader.SizeOfImage);
    image.base_ = image.copy_.data();
    std::memcpy(image.copy_.data(), file.data(),
                std::min<std::size_t>(headers.OptionalHeader.SizeOfHeaders, file.size()));
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(&headers);
    for (WORD i = 0; i < headers.FileHeader.NumberOfSections; ++i, ++section) {
        const DWORD size = std::min(section->SizeOfRawData, section->Misc.VirtualSize);
        if (size != 0 && section->PointerToRawData + size <= file.size() &&
            section->VirtualAddress + size <= image.copy_.size()) {
            std::memcpy(image.copy_.data() + section->VirtualAddress, file.data() + section->PointerToRawData,
                        size);
        }
    }
    return image;
}

const IMAGE_NT_HEADERS64& PeImage::headers() const {
    return *at<IMAGE_NT_HEADERS64>(static_cast<DWORD>(at<IMAGE_DOS_HEADER>(0)->e_lfanew));
}

std::vector<Import> PeImage::imports() const {
    std::vector<Import> found;
    const auto& directory = headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (directory.VirtualAddress == 0) {
        return found;
    }
    for (const auto* module = at<IMAGE_IMPORT_DESCRIPTOR>(directory.VirtualAddress); module->Name != 0;
         ++module) {
        const DWORD names = module->OriginalFirstThunk != 0 ? module->OriginalFirstThunk : module->FirstThunk;
        DWORD cell = module->FirstThunk;
        for (const auto* name = at<IMAGE_THUNK_DATA64>(names); name->u1.AddressOfData != 0;
             ++name, cell += sizeof(IMAGE_THUNK_DATA64)) {
            Import import{.module = at<char>(module->Name), .name = {}, .addressCell = cell};
            if (IMAGE_SNAP_BY_ORDINAL64(name->u1.Ordinal)) {
                import.ordinal = static_cast<WORD>(IMAGE_ORDINAL64(name->u1.Ordinal));
            } else {
                import.name = at<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(name->u1.AddressOfData))->Name;
            }
            found.push_back(std::move(import));
        }
    }
    return found;
}

const IMAGE_EXPORT_DIRECTORY* PeImage::exportDirectory() const {
    const auto& directory = headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    return directory.VirtualAddress == 0 ? nullptr : at<IMAGE_EXPORT_DIRECTORY>(directory.VirtualAddress);
}

Export PeImage::exportAt(DWORD index) const {
    const auto& directory = headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const DWORD cell = exportDirectory()->AddressOfFunctions + index * static_cast<DWORD>(sizeof(DWORD));
    Export found{.name = {}, .target = *at<DWORD>(cell), .targetCell = cell, .forwardedTo = {}};
    // A target inside the export directory is not code but the name of a function elsewhere.
    if (found.target >= directory.VirtualAddress &&
        found.target < directory.VirtualAddress + directory.Size) {
        found.forwardedTo = at<char>(found.target);
    }
    return found;
}

std::vector<Export> PeImage::exports() const {
    std::vector<Export> found;
    const IMAGE_EXPORT_DIRECTORY* directory = exportDirectory();
    if (directory == nullptr) {
        return found;
    }
    const auto* names = at<DWORD>(directory->AddressOfNames);
    const auto* indexes = at<WORD>(directory->AddressOfNameOrdinals);
    for (DWORD i = 0; i < directory->NumberOfNames; ++i) {
        Export entry = exportAt(indexes[i]);
        entry.name = at<char>(names[i]);
        found.push_back(std::move(entry));
    }
    return found;
}

std::optional<Export> PeImage::findExport(const std::string& name) const {
    const IMAGE_EXPORT_DIRECTORY* directory = exportDirectory();
    if (directory == nullptr) {
        return std::nullopt;
    }
    const auto* names = at<DWORD>(directory->AddressOfNames);
    for (DWORD i = 0; i < directory->NumberOfNames; ++i) {
        if (name == at<char>(names[i])) {
            Export entry = exportAt(at<WORD>(directory->AddressOfNameOrdinals)[i]);
            entry.name = name;
            return entry;
        }
    }
    return std::nullopt;
}

std::optional<Export> PeImage::findExport(WORD ordinal) const {
    const IMAGE_EXPORT_DIRECTORY* directory = exportDirectory();
    if (directory == nullptr || ordinal < directory->Base ||
        ordinal - directory->Base >= directory->NumberOfFunctions) {
        return std::nullopt;
    }
    return exportAt(ordinal - directory->Base);
}

bool PeImage::isCode(const void* address) const {
    const auto* byte = static_cast<const std::byte*>(address);
    if (byte < base_ || byte >= base_ + headers().OptionalHeader.SizeOfImage) {
        return false;
    }
    const auto offset = static_cast<DWORD>(byte - base_);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(&headers());
    for (WORD i = 0; i < headers().FileHeader.NumberOfSections; ++i, ++section) {
        if (offset >= section->VirtualAddress &&
            offset - section->VirtualAddress < section->Misc.VirtualSize) {
            return (section->Characteristics & IMAGE_SCN_MEM_EXECUTE) != 0;
        }
    }
    return false;
}

}  // namespace testbed
