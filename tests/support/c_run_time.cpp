#include "c_run_time.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <cstdio>
#include <stdexcept>

namespace testbed {

namespace {

constexpr int standardOutput = 1;

}  // namespace

CRunTime::CRunTime(SystemCalls& system) {
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(system.real<void(void*)>("free")), &module_);
}

const void* CRunTime::find(const char* name) const {
    const FARPROC found = GetProcAddress(module_, name);
    if (found == nullptr) {
        throw std::runtime_error(std::string("the library's C run time has no ") + name);
    }
    return reinterpret_cast<const void*>(found);
}

RedirectedOutput::RedirectedOutput(SystemCalls& system, const std::wstring& file) : runTime_(system) {
    // Where both have one run time, what this program has printed goes to its own output.
    std::fflush(stdout);
    before_ = runTime_.function<decltype(_dup)>("_dup")(standardOutput);
    const int opened = runTime_.function<decltype(_wopen)>("_wopen")(
        file.c_str(), _O_WRONLY | _O_CREAT | _O_TRUNC | _O_TEXT, _S_IWRITE);
    runTime_.function<decltype(_dup2)>("_dup2")(opened, standardOutput);
    runTime_.function<decltype(_close)>("_close")(opened);
}

RedirectedOutput::~RedirectedOutput() {
    std::fflush(stdout);
    runTime_.function<decltype(_dup2)>("_dup2")(before_, standardOutput);
    runTime_.function<decltype(_close)>("_close")(before_);
}

}  // namespace testbed
