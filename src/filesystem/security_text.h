#pragma once

#include <windows.h>

#include <cstddef>
#include <optional>

#include "bridge/text.h"

namespace winutil::filesystem {

// What the file records carry of a security descriptor.
inline constexpr SECURITY_INFORMATION recordSecurity =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
static_assert(recordSecurity == 7);

// Both leave the reason in the thread's last error where they give none. None at all is given where memory is
// exhausted; that the system has none to give is an empty owner.

// Returns the security descriptor of a path. The first attempt has room for `firstSize` bytes, a second one
// for as many as the system asks for.
std::optional<HeapMemory<std::byte>> readDescriptor(const wchar_t* path,
                                                    SECURITY_INFORMATION securityInformation,
                                                    DWORD firstSize) noexcept;

// Returns the security descriptor of a path as SDDL text, an empty text when not `enabled`. With
// `tryLongForm` the long form stands in for a path whose attributes cannot be read.
std::optional<WideString> getSecurityDescriptorText(const wchar_t* path,
                                                    SECURITY_INFORMATION securityInformation,
                                                    bool tryLongForm, bool enabled) noexcept;

}  // namespace winutil::filesystem
