#include "bridge/system_version.h"

namespace winutil {

bool readSystemVersion(OSVERSIONINFOA& version) noexcept {
    version = {};
    static_assert(sizeof(version) == 148);
    version.dwOSVersionInfoSize = sizeof(version);
#ifdef _MSC_VER
    // Deprecated because newer systems show an older version to a process that does not name them; only
    // lower bounds and the old NT 4.0 are asked for here.
#pragma warning(suppress : 4996)
#endif
    return GetVersionExA(&version) != FALSE;
}

}  // namespace winutil
