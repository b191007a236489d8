#pragma once

#include <windows.h>

#include "bridge/errors.h"

namespace winutil::filesystem {

// Sets the parts of a path's security descriptor that `securityInformation` names, from SDDL text. Returns 0
// or a Win32 code.
DWORD setSecurityDescriptor(const wchar_t* path, SECURITY_INFORMATION securityInformation,
                            const wchar_t* text) noexcept;

// Sets the security descriptor of a path unless the text is empty, then its attributes unless they are
// INVALID_FILE_ATTRIBUTES; the attributes are tried even when the descriptor failed. False with the reason in
// `errorBuffer` when either failed.
bool setFileAttrWithSecurityDescriptor(const wchar_t* path, SECURITY_INFORMATION securityInformation,
                                       const wchar_t* descriptorText, DWORD attributes,
                                       ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::filesystem
