// Sizes of security descriptors and the lengths of their texts.
#include "answers/security.h"
#include "bridge/paths.h"
#include "filesystem/security_text.h"
#include "target.h"
#include "windows/system.h"

namespace {

hostile::Descriptors* descriptors = nullptr;

WINBOOL WINAPI toText(PSECURITY_DESCRIPTOR, DWORD, SECURITY_INFORMATION, LPWSTR* text, PULONG length) {
    *length = descriptors->textLength();
    *text = static_cast<wchar_t*>(std::malloc(*length * sizeof(wchar_t)));
    descriptors->giveText(*text, *length);
    return TRUE;
}

}  // namespace

extern "C" {
WINBOOL WINAPI GetFileSecurityW(LPCWSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR descriptor, DWORD size,
                                LPDWORD needed) {
    return descriptors->give(descriptor, size, needed);
}
DWORD WINAPI GetNamedSecurityInfoW(LPCWSTR, SE_OBJECT_TYPE, SECURITY_INFORMATION, PSID*, PSID*, PACL*, PACL*,
                                   PSECURITY_DESCRIPTOR*) {
    return ERROR_ACCESS_DENIED;
}
}

void fuzz::examine(hostile::Input& input) {
    hostile::Descriptors answers(input);
    descriptors = &answers;
    winutil::fuzzedFunctions().convertSecurityDescriptorToStringSecurityDescriptor = toText;
    const auto text = winutil::filesystem::getSecurityDescriptorText(L"C:\\x", 7, false, true);
    require(text.has_value(), "a descriptor of 64 KiB is too large");
    require(!*text || std::wcslen(text->get()) < 64, "the text of a descriptor has become longer");
}
