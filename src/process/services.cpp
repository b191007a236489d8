#include "process/services.h"

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winsvc.h>

#include "process/failure.h"

namespace winutil::process {

namespace {

// The service manager, or a service.
using ServiceHandle = Resource<SC_HANDLE, CloseServiceHandle>;

bool stepFailed(DWORD code, const wchar_t* step, ErrorBuffer& errorBuffer) noexcept {
    return failed(errorBuffer, code, L"%s %s failed.", serviceTag, step);
}

}  // namespace

bool isServiceRunning(const wchar_t* name, ErrorBuffer& errorBuffer) noexcept {
    const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (!manager) {
        return stepFailed(GetLastError(), L"OpenSCManager", errorBuffer);
    }
    const ServiceHandle service(OpenServiceW(manager.get(), name, SERVICE_QUERY_STATUS));
    if (!service) {
        return stepFailed(GetLastError(), L"OpenService", errorBuffer);
    }
    SERVICE_STATUS_PROCESS status = {};
    static_assert(sizeof(status) == 36);
    DWORD needed = 0;
    if (!QueryServiceStatusEx(service.get(), SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                              sizeof(status), &needed)) {
        return stepFailed(GetLastError(), L"QueryServiceStatusEx", errorBuffer);
    }
    return status.dwCurrentState == SERVICE_RUNNING;
}

}  // namespace winutil::process
