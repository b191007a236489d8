#include "account/security_provider.h"

#include <bit>

#include "bridge/system_version.h"

namespace winutil::account {

namespace {

template <class Function>
bool resolve(Function& entry, HMODULE module, const char* name) noexcept {
    entry = std::bit_cast<Function>(GetProcAddress(module, name));
    return entry != nullptr;
}

// Resolves in this order, up to the first that is missing and must be there.
bool resolveAll(SspiFunctionTable& table, HMODULE module) noexcept {
    if (!resolve(table.acceptSecurityContext, module, "AcceptSecurityContext") ||
        !resolve(table.acquireCredentialsHandle, module, "AcquireCredentialsHandleW")) {
        return false;
    }
    resolve(table.completeAuthToken, module, "CompleteAuthToken");
    if (!resolve(table.deleteSecurityContext, module, "DeleteSecurityContext") ||
        !resolve(table.freeContextBuffer, module, "FreeContextBuffer") ||
        !resolve(table.freeCredentialsHandle, module, "FreeCredentialsHandle") ||
        !resolve(table.initializeSecurityContext, module, "InitializeSecurityContextW") ||
        !resolve(table.querySecurityPackageInfo, module, "QuerySecurityPackageInfoW")) {
        return false;
    }
    resolve(table.querySecurityContextToken, module, "QuerySecurityContextToken");
    return true;
}

}  // namespace

Module loadSecurityProvider(SspiFunctionTable& table) noexcept {
    OSVERSIONINFOA version;
    if (!readSystemVersion(version)) {
        return {};
    }
    const bool nt40 = version.dwPlatformId == VER_PLATFORM_WIN32_NT && version.dwMajorVersion == 4 &&
                      version.dwMinorVersion == 0;
    Module module(LoadLibraryA(nt40 ? "security.dll" : "secur32.dll"));
    if (module && !resolveAll(table, module.get())) {
        module.reset();
        table = {};
    }
    return module;
}

}  // namespace winutil::account
