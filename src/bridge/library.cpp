// What happens when the library is loaded and unloaded. All of it runs under the loader lock.
#include <windows.h>

#include "bridge/optional_functions.h"
#include "bridge/privileges.h"

namespace {

// Required: no operation enters it, because it is only made and deleted with the library.
CRITICAL_SECTION librarySection;
constexpr DWORD librarySectionSpinCount = 1024;

void attach() noexcept {
    using winutil::setPrivilege;
    // A process without the right to one of these simply works without it.
    setPrivilege("SeRestorePrivilege", TRUE);
    setPrivilege("SeTakeOwnershipPrivilege", TRUE);
    setPrivilege("SeSecurityPrivilege", TRUE);
    winutil::resolveOptionalFunctions();
    InitializeCriticalSectionAndSpinCount(&librarySection, librarySectionSpinCount);
}

void detach() noexcept {
    winutil::releaseOptionalFunctions();
    DeleteCriticalSection(&librarySection);
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        attach();
    } else if (reason == DLL_PROCESS_DETACH) {
        detach();
    }
    return TRUE;
}
