#include "filesystem/security_setting.h"

#include <cstdio>
#include <iterator>

#include "bridge/optional_functions.h"
#include "bridge/owners.h"
#include "bridge/paths.h"
#include "filesystem/file_attributes.h"

namespace winutil::filesystem {

namespace {

constexpr std::size_t reasonCapacity = 1024;   // characters
constexpr std::size_t messageCapacity = 2048;  // characters

// The second way to set a descriptor, through an open handle. `code` is the reason why the first one failed,
// which stays the reason where the system lacks the second one.
DWORD setThroughHandle(const wchar_t* path, SECURITY_INFORMATION securityInformation,
                       PSECURITY_DESCRIPTOR descriptor, DWORD code) noexcept {
    PSID owner = nullptr;
    PSID group = nullptr;
    PACL dacl = nullptr;
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    if (!GetSecurityDescriptorOwner(descriptor, &owner, &defaulted)) {
        owner = nullptr;
    }
    if (!GetSecurityDescriptorGroup(descriptor, &group, &defaulted)) {
        group = nullptr;
    }
    if (!GetSecurityDescriptorDacl(descriptor, &present, &dacl, &defaulted) || !present) {
        dacl = nullptr;
    }
    constexpr DWORD flags = FILE_FLAG_BACKUP_SEMANTICS | FILE_ATTRIBUTE_NORMAL;
    static_assert(flags == 0x2000080);
    const FileHandle file(CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, flags, nullptr));
    if (!file) {
        return GetLastError();
    }
    const auto setSecurityInfo = optionalFunctions().setSecurityInfo;
    if (setSecurityInfo == nullptr) {
        return code;
    }
    return setSecurityInfo(file.get(), SE_FILE_OBJECT, securityInformation, owner, group, dacl, nullptr);
}

// Says what could not be set. At least one of both failed.
void describeFailure(const wchar_t* path, DWORD code, bool attributesSet, ErrorBuffer& errorBuffer) noexcept {
    wchar_t reason[reasonCapacity];
    formatWin32Error(L"", L"setSecurityDescriptor(): ", code, reason, std::size(reason));
    static_assert(messageCapacity <= ErrorBuffer::capacity);
    wchar_t* message = errorBuffer.text();
    if (code == ERROR_SUCCESS) {
        _snwprintf_s(message, messageCapacity, _TRUNCATE, L"Fail to set file attributes: %s", path);
    } else {
        const wchar_t* format =
            attributesSet ? L"Fail to set security descriptor: %s ErrCode: 0x%x %s"
                          : L"Fail to set both file attributes and security descriptor: %s ErrCode: 0x%x %s";
        _snwprintf_s(message, messageCapacity, _TRUNCATE, format, path, code, reason);
    }
}

}  // namespace

DWORD setSecurityDescriptor(const wchar_t* path, SECURITY_INFORMATION securityInformation,
                            const wchar_t* text) noexcept {
    WideString longForm;
    const wchar_t* target = readablePath(path, longForm);
    if (target == nullptr) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    const auto convert = optionalFunctions().convertStringSecurityDescriptorToSecurityDescriptor;
    if (convert == nullptr) {
        return ERROR_PROC_NOT_FOUND;
    }
    LocalMemory<void> descriptor;
    if (!convert(text, SDDL_REVISION_1, descriptor.receive(), nullptr)) {
        return GetLastError();
    }
    // Required: the last error right behind a success is the result, because the Java side relies on it; an
    // older one must not pass for it.
    SetLastError(ERROR_SUCCESS);
    const bool set = SetFileSecurityW(target, securityInformation, descriptor.get()) != FALSE;
    const DWORD code = GetLastError();
    return set ? code : setThroughHandle(target, securityInformation, descriptor.get(), code);
}

bool setFileAttrWithSecurityDescriptor(const wchar_t* path, SECURITY_INFORMATION securityInformation,
                                       const wchar_t* descriptorText, DWORD attributes,
                                       ErrorBuffer& errorBuffer) noexcept {
    DWORD code = ERROR_SUCCESS;
    if (*descriptorText != L'\0') {
        code = setSecurityDescriptor(path, securityInformation, descriptorText);
    }
    const bool attributesSet =
        attributes == INVALID_FILE_ATTRIBUTES || setFileAttr(path, attributes, errorBuffer).value_or(false);
    // A failed compression or encryption has its own message, and that one stays.
    if (!errorBuffer.empty()) {
        return false;
    }
    if (code == ERROR_SUCCESS && attributesSet) {
        return true;
    }
    describeFailure(path, code, attributesSet, errorBuffer);
    return false;
}

}  // namespace winutil::filesystem
