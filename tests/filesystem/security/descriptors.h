// Security descriptors of tests.
#pragma once

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace testbed {

inline std::vector<std::byte> descriptorOf(const std::wstring& sddl) {
    PSECURITY_DESCRIPTOR made = nullptr;
    ULONG size = 0;
    ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl.c_str(), SDDL_REVISION_1, &made, &size);
    std::vector<std::byte> bytes(size);
    std::memcpy(bytes.data(), made, size);
    LocalFree(made);
    return bytes;
}

inline std::wstring textOf(PSECURITY_DESCRIPTOR descriptor, SECURITY_INFORMATION parts) {
    LPWSTR made = nullptr;
    ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1, parts, &made, nullptr);
    std::wstring text = made == nullptr ? L"" : made;
    LocalFree(made);
    return text;
}

}  // namespace testbed
