#include "filesystem/security_acl.h"

#include <aclapi.h>

#include <cstring>

#include "bridge/owners.h"

namespace winutil::filesystem {

void setFileAcl(wchar_t* path, wchar_t* trustee, DWORD permissions, DWORD mode) noexcept {
    // Required: silence about every failure, because callers cannot tell it from success and do not ask.
    PACL oldDacl = nullptr;
    LocalMemory<void> descriptor;
    if (GetNamedSecurityInfoW(path, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &oldDacl,
                              nullptr, descriptor.receive()) != ERROR_SUCCESS) {
        return;
    }
    EXPLICIT_ACCESS_W entry = {};
    entry.grfAccessPermissions = permissions;
    // Any number goes through: the system refuses what is no mode, which no value of the enumeration could
    // hold.
    static_assert(sizeof(entry.grfAccessMode) == sizeof(mode));
    std::memcpy(&entry.grfAccessMode, &mode, sizeof(mode));
    entry.grfInheritance = SUB_CONTAINERS_AND_OBJECTS_INHERIT;
    static_assert(SUB_CONTAINERS_AND_OBJECTS_INHERIT == 3);
    entry.Trustee.MultipleTrusteeOperation = NO_MULTIPLE_TRUSTEE;
    entry.Trustee.TrusteeForm = TRUSTEE_IS_NAME;
    entry.Trustee.TrusteeType = TRUSTEE_IS_UNKNOWN;
    entry.Trustee.ptstrName = trustee;
    LocalMemory<ACL> newDacl;
    if (SetEntriesInAclW(1, &entry, oldDacl, newDacl.receive()) == ERROR_SUCCESS) {
        SetNamedSecurityInfoW(path, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                              newDacl.get(), nullptr);
    }
}

}  // namespace winutil::filesystem
