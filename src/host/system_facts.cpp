#include "host/system_facts.h"

namespace winutil::host {

OSVERSIONINFOEXA systemVersion() noexcept {
    OSVERSIONINFOEXA version = {};
    static_assert(sizeof(version) == 156);
    version.dwOSVersionInfoSize = sizeof(version);
#ifdef _MSC_VER
    // Deprecated because newer systems show an older version to a process that does not name them; what they
    // show is what is asked for here.
#pragma warning(suppress : 4996)
#endif
    GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&version));
    return version;
}

int productType() noexcept {
    const OSVERSIONINFOEXA version = systemVersion();
    return version.dwPlatformId == VER_PLATFORM_WIN32_NT ? version.wProductType : -1;
}

}  // namespace winutil::host
