// The C run time of the DLL under test, which need not be the one of the test program.
#pragma once

#include <windows.h>

#include <string>

#include "system_calls.h"

namespace testbed {

class CRunTime {
public:
    explicit CRunTime(SystemCalls& system);

    template <class Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(const_cast<void*>(find(name)));
    }

private:
    const void* find(const char* name) const;

    HMODULE module_ = nullptr;
};

// Leads what the DLL prints into a file for as long as it lives.
class RedirectedOutput {
public:
    RedirectedOutput(SystemCalls& system, const std::wstring& file);
    RedirectedOutput(const RedirectedOutput&) = delete;
    RedirectedOutput& operator=(const RedirectedOutput&) = delete;
    ~RedirectedOutput();

private:
    CRunTime runTime_;
    int before_;
};

}  // namespace testbed
