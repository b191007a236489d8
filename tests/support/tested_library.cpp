#include "tested_library.h"

#include <cstring>
#include <map>
#include <stdexcept>

#include "pe_image.h"
#include "text.h"

namespace testbed {

namespace {

constexpr std::size_t trampolineSize = 16;

// Modules that the DLL under test loads by itself while its imports are redirected. They must be there
// before, or they would be given the redirected functions as well.
constexpr const wchar_t* loadedByTheLibrary[] = {L"advapi32.dll", L"shell32.dll", L"ntdll.dll"};

// A word of a loaded image, read-only or not.
template <class T>
void overwrite(std::byte* place, T value) {
    DWORD protection = 0;
    if (!VirtualProtect(place, sizeof value, PAGE_READWRITE, &protection)) {
        throw std::runtime_error("a table of a loaded module cannot be written");
    }
    std::memcpy(place, &value, sizeof value);
    VirtualProtect(place, sizeof value, protection, &protection);
}

std::byte* base(HMODULE module) {
    return reinterpret_cast<std::byte*>(module);
}

// What the import means, and where its module keeps it; nothing for a variable, which has no slot.
std::optional<Export> findFunction(HMODULE module, const Import& import) {
    const PeImage image = PeImage::ofModule(module);
    const auto found = import.name.empty() ? image.findExport(import.ordinal) : image.findExport(import.name);
    if (!found) {
        throw std::runtime_error(import.module + " has no " + import.name);
    }
    if (found->forwardedTo.empty() && !image.isCode(base(module) + found->target)) {
        return std::nullopt;
    }
    return found;
}

}  // namespace

LibraryUnderTest::LibraryUnderTest(std::wstring file) : file_(std::move(file)), system_(ledger_) {
    for (const wchar_t* name : loadedByTheLibrary) {
        LoadLibraryW(name);
    }
    prepare();
}

LibraryUnderTest::~LibraryUnderTest() {
    unload();
}

void LibraryUnderTest::prepare() {
    const auto image = PeImage::ofFile(file_);
    if (!image) {
        throw std::runtime_error("not a library: " + toUtf8(file_));
    }
    std::map<std::string, std::vector<Import>> modules;
    for (Import& import : image->imports()) {
        modules[import.module].push_back(std::move(import));
    }
    for (const auto& [moduleName, imports] : modules) {
        const HMODULE module = LoadLibraryA(moduleName.c_str());
        if (module == nullptr) {
            throw std::runtime_error("cannot load " + moduleName);
        }
        CodeArea& code = code_.emplace_back(CodeArea::behind(module, imports.size() * trampolineSize));
        for (const Import& import : imports) {
            const auto function = findFunction(module, import);
            if (!function) {
                continue;
            }
            const bool byName = !import.name.empty();
            const std::string name = byName ? import.name : moduleName + "#" + std::to_string(import.ordinal);
            const char* wanted = byName ? import.name.c_str() : MAKEINTRESOURCEA(import.ordinal);
            const FARPROC real = GetProcAddress(module, wanted);
            const auto trampoline = system_.trampolineFor(name, reinterpret_cast<const void*>(real));
            redirections_.push_back({module, function->targetCell, code.add(trampoline), import.addressCell});
        }
    }
}

// Points the functions' entries in the export tables of their own modules at the trampolines, for as long as
// the loader reads them: even what the DLL calls while it is initialised then leads through the slots.
std::vector<DWORD> LibraryUnderTest::redirectExports() const {
    std::vector<DWORD> targets;
    for (const Redirection& redirection : redirections_) {
        std::byte* cell = base(redirection.module) + redirection.targetCell;
        DWORD& target = targets.emplace_back();
        std::memcpy(&target, cell, sizeof target);
        const auto offset = static_cast<const std::byte*>(redirection.trampoline) - base(redirection.module);
        overwrite(cell, static_cast<DWORD>(offset));
    }
    return targets;
}

// In reverse: two imports of one function would otherwise leave the trampoline of the first behind.
void LibraryUnderTest::restoreExports(const std::vector<DWORD>& targets) const {
    for (std::size_t i = redirections_.size(); i-- > 0;) {
        overwrite(base(redirections_[i].module) + redirections_[i].targetCell, targets[i]);
    }
}

// What the loader did not take from the redirected tables, forwarded functions on some systems.
void LibraryUnderTest::redirectImports() const {
    for (const Redirection& redirection : redirections_) {
        overwrite(base(module_) + redirection.importCell, redirection.trampoline);
    }
}

bool LibraryUnderTest::load() {
    const std::vector<DWORD> targets = redirectExports();
    module_ = LoadLibraryW(file_.c_str());
    const DWORD lastError = GetLastError();
    restoreExports(targets);
    if (module_ != nullptr) {
        redirectImports();
        system_.expectNoNewNames();
    }
    SetLastError(lastError);
    return module_ != nullptr;
}

void LibraryUnderTest::unload() {
    if (module_ != nullptr) {
        FreeLibrary(module_);
        module_ = nullptr;
    }
}

}  // namespace testbed
