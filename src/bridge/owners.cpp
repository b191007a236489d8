#include "bridge/owners.h"

namespace winutil {

void closeKeepingError(void (*close)(void*) noexcept, void* value) noexcept {
    const DWORD error = GetLastError();
    close(value);
    SetLastError(error);
}

}  // namespace winutil
