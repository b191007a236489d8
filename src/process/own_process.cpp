#include "process/own_process.h"

namespace winutil::process {

BOOL lowerPriority() noexcept {
    return SetPriorityClass(GetCurrentProcess(), BELOW_NORMAL_PRIORITY_CLASS);
}

DWORD ownSession() noexcept {
    DWORD session = 0;
    return ProcessIdToSessionId(GetCurrentProcessId(), &session) ? session : 0;
}

}  // namespace winutil::process
