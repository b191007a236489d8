#include "filesystem/security_text.h"

#include <cwchar>

#include "bridge/optional_functions.h"
#include "bridge/paths.h"

namespace winutil::filesystem {

namespace {

constexpr DWORD firstDescriptorSize = 4096;  // bytes

// A copy of a text; none, with that reason in the last error, when memory is exhausted.
std::optional<WideString> copyOrSayWhy(const wchar_t* text, std::size_t length) noexcept {
    WideString copy = copyText(text, length);
    if (!copy) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return std::nullopt;
    }
    return copy;
}

std::optional<WideString> convertToText(PSECURITY_DESCRIPTOR descriptor,
                                        SECURITY_INFORMATION securityInformation) noexcept {
    const auto convert = optionalFunctions().convertSecurityDescriptorToStringSecurityDescriptor;
    if (convert == nullptr) {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return WideString();
    }
    LocalMemory<wchar_t> text;
    ULONG length = 0;
    convert(descriptor, SDDL_REVISION_1, securityInformation, text.receive(), &length);
    if (length == 0 || !text) {
        return WideString();
    }
    // The length may count the terminator and the padding behind it; the text ends at its first zero.
    return copyOrSayWhy(text.get(), wcsnlen(text.get(), length));
}

// Required: the second way to a descriptor never gives a text, because the Java side relies on what it makes
// the caller report: found, the descriptor only turns the reason into "no error"; not found, the conversion
// of no descriptor at all says the reason.
std::optional<WideString> failWithoutDescriptor(const wchar_t* path,
                                                SECURITY_INFORMATION securityInformation) noexcept {
    LocalMemory<void> descriptor;
    if (GetNamedSecurityInfoW(path, SE_FILE_OBJECT, securityInformation, nullptr, nullptr, nullptr, nullptr,
                              descriptor.receive()) == ERROR_SUCCESS) {
        descriptor.reset();
        SetLastError(ERROR_SUCCESS);
        return WideString();
    }
    return convertToText(nullptr, securityInformation);
}

}  // namespace

std::optional<HeapMemory<std::byte>> readDescriptor(const wchar_t* path,
                                                    SECURITY_INFORMATION securityInformation,
                                                    DWORD firstSize) noexcept {
    DWORD size = firstSize;
    // Once more at the size that the system asks for; a descriptor that has grown again by then is given up.
    for (int attempt = 0; attempt < 2; ++attempt) {
        HeapMemory<std::byte> descriptor = allocate<std::byte>(size);
        if (!descriptor) {
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return std::nullopt;
        }
        DWORD needed = 0;
        if (GetFileSecurityW(path, securityInformation, descriptor.get(), size, &needed)) {
            return descriptor;
        }
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
            break;
        }
        size = needed;
    }
    return HeapMemory<std::byte>();
}

std::optional<WideString> getSecurityDescriptorText(const wchar_t* path,
                                                    SECURITY_INFORMATION securityInformation,
                                                    bool tryLongForm, bool enabled) noexcept {
    if (!enabled) {
        return copyOrSayWhy(L"", 0);
    }
    WideString longForm;
    const wchar_t* target = tryLongForm ? readablePath(path, longForm) : path;
    if (target == nullptr) {
        return std::nullopt;
    }
    const std::optional<HeapMemory<std::byte>> descriptor =
        readDescriptor(target, securityInformation, firstDescriptorSize);
    if (!descriptor) {
        return std::nullopt;
    }
    return *descriptor ? convertToText(descriptor->get(), securityInformation)
                       : failWithoutDescriptor(target, securityInformation);
}

}  // namespace winutil::filesystem
