#include "process/services.h"

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winsvc.h>

#include "process/failure.h"

namespace winutil::process {

namespace {

constexpr wchar_t tag[] = L"[WindowsUtil:getServiceStatus]";

// The service manager, or a service.
struct ServiceHandleKind {
    using Value = SC_HANDLE;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { CloseServiceHandle(value); }
};
using ServiceHandle = Owned<ServiceHandleKind>;

bool queryState(const wchar_t* name, DWORD& state, ErrorBuffer& failure) noexcept {
    if (name == nullptr) {
        return failed(failure, ERROR_NOT_ENOUGH_MEMORY, L"%s", tag);
    }
    const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (!manager) {
        return failed(failure, GetLastError(), L"%s OpenSCManager failed.", tag);
    }
    const ServiceHandle service(OpenServiceW(manager.get(), name, SERVICE_QUERY_STATUS));
    if (!service) {
        return failed(failure, GetLastError(), L"%s OpenService failed.", tag);
    }
    SERVICE_STATUS_PROCESS status = {};
    static_assert(sizeof(status) == 36);
    DWORD needed = 0;
    if (!QueryServiceStatusEx(service.get(), SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                              sizeof(status), &needed)) {
        return failed(failure, GetLastError(), L"%s QueryServiceStatusEx failed.", tag);
    }
    state = status.dwCurrentState;
    return true;
}

}  // namespace

bool isServiceRunning(JNIEnv* env, const wchar_t* name) noexcept {
    DWORD state = 0;
    ErrorBuffer failure;
    if (!queryState(name, state, failure)) {
        throwIOException(env, failure.text());
        return false;
    }
    return state == SERVICE_RUNNING;
}

}  // namespace winutil::process
