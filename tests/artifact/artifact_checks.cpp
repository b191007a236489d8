#include "artifact_checks.h"

#include <windows.h>

#include <delayimp.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <regex>
#include <string_view>

namespace testbed {

namespace {

// The system libraries that the library has business with.
constexpr std::string_view systemModules[] = {
    "activeds.dll", "advapi32.dll", "gdi32.dll",   "kernel32.dll", "mpr.dll",
    "msvcrt.dll",   "netapi32.dll", "ntdll.dll",   "ole32.dll",    "oleaut32.dll",
    "psapi.dll",    "secur32.dll",  "shell32.dll", "shlwapi.dll",  "user32.dll",
    "userenv.dll",  "version.dll",  "wininet.dll", "wtsapi32.dll",
};

// The C run time of newer systems, in parts.
constexpr std::string_view universalRunTime = "api-ms-win-crt-";

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string nameOf(const IMAGE_SECTION_HEADER& section) {
    const auto* name = reinterpret_cast<const char*>(section.Name);
    return {name, strnlen(name, sizeof section.Name)};
}

}  // namespace

std::set<std::string> nativesOf(const std::string& header) {
    static const std::regex declaration("JNICALL\\s+(Java_\\w+)");
    std::set<std::string> names;
    for (std::sregex_iterator found(header.begin(), header.end(), declaration), end; found != end; ++found) {
        names.insert((*found)[1]);
    }
    return names;
}

std::vector<std::string> foreignExports(const PeImage& image, const std::set<std::string>& natives) {
    std::vector<std::string> found;
    for (const Export& entry : image.exports()) {
        if (!natives.contains(entry.name)) {
            found.push_back(entry.name + " is no native method");
        } else if (!entry.forwardedTo.empty() || !image.isCode(image.base() + entry.target)) {
            found.push_back(entry.name + " is no function");
        }
    }
    return found;
}

std::vector<std::string> missingExports(const PeImage& image, const std::set<std::string>& natives) {
    std::set<std::string> missing = natives;
    for (const Export& entry : image.exports()) {
        missing.erase(entry.name);
    }
    return {missing.begin(), missing.end()};
}

std::set<std::string> importedModules(const PeImage& image) {
    std::set<std::string> modules;
    for (const Import& import : image.imports()) {
        modules.insert(lowerCase(import.module));
    }
    const auto& directory = image.headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT];
    if (directory.VirtualAddress != 0) {
        for (const auto* module = image.at<ImgDelayDescr>(directory.VirtualAddress); module->rvaDLLName != 0;
             ++module) {
            modules.insert(lowerCase(image.at<char>(module->rvaDLLName)));
        }
    }
    return modules;
}

std::vector<std::string> foreignModules(const std::set<std::string>& modules) {
    std::vector<std::string> found;
    std::ranges::copy_if(modules, std::back_inserter(found), [](const std::string& module) {
        return !module.starts_with(universalRunTime) &&
               std::ranges::find(systemModules, module) == std::end(systemModules);
    });
    return found;
}

std::vector<std::string> weaknesses(const PeImage& image) {
    std::vector<std::string> found;
    const IMAGE_NT_HEADERS64& headers = image.headers();
    const auto wants = [&](bool holds, const char* complaint) {
        if (!holds) {
            found.emplace_back(complaint);
        }
    };
    const WORD flags = headers.OptionalHeader.DllCharacteristics;
    wants(headers.FileHeader.Machine == IMAGE_FILE_MACHINE_AMD64, "not for x64");
    wants(headers.OptionalHeader.Magic == IMAGE_NT_OPTIONAL_HDR64_MAGIC, "not a 64-bit image");
    wants((flags & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA) != 0, "no high-entropy addresses");
    wants((flags & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE) != 0, "a fixed address");
    wants((flags & IMAGE_DLLCHARACTERISTICS_NX_COMPAT) != 0, "data may be executed");
    wants((headers.FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED) == 0 &&
              headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size != 0,
          "nothing to relocate it by");
    wants(headers.FileHeader.NumberOfSymbols == 0, "symbols left in the file");
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(&headers);
    for (WORD i = 0; i < headers.FileHeader.NumberOfSections; ++i, ++section) {
        constexpr DWORD writeAndExecute = IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE;
        if ((section->Characteristics & writeAndExecute) == writeAndExecute) {
            found.push_back("section " + nameOf(*section) + " can be written and executed");
        }
    }
    return found;
}

}  // namespace testbed
