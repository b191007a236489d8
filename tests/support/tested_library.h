// Loads a DLL so that all its calls of other modules lead through slots, from its first instruction on.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "code_area.h"
#include "ledger.h"
#include "system_calls.h"

namespace testbed {

class LibraryUnderTest {
public:
    // Reads the file's imports and makes their slots; nothing is loaded yet, so that a test can replace what
    // the DLL calls while it loads.
    explicit LibraryUnderTest(std::wstring file);
    LibraryUnderTest(const LibraryUnderTest&) = delete;
    LibraryUnderTest& operator=(const LibraryUnderTest&) = delete;
    ~LibraryUnderTest();

    // False when the loader refuses; the last error then says why.
    bool load();
    void unload();
    bool isLoaded() const { return module_ != nullptr; }

    const std::wstring& file() const { return file_; }
    HMODULE module() const { return module_; }
    SystemCalls& system() { return system_; }
    Ledger& ledger() { return ledger_; }

    // A function that the DLL exports, or null.
    template <class Function>
    Function* exported(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }

private:
    struct Redirection {
        HMODULE module;    // the one that has the function
        DWORD targetCell;  // where its export table keeps the function's offset
        const void* trampoline;
        DWORD importCell;  // where the DLL under test keeps the address
    };

    void prepare();
    std::vector<DWORD> redirectExports() const;
    void restoreExports(const std::vector<DWORD>& targets) const;
    void redirectImports() const;

    std::wstring file_;
    Ledger ledger_;
    SystemCalls system_;
    std::vector<CodeArea> code_;
    std::vector<Redirection> redirections_;
    HMODULE module_ = nullptr;
};

}  // namespace testbed
