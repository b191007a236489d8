#include "account/guest_account.h"

#include <lmaccess.h>
#include <lmerr.h>

#include "bridge/owners.h"
#include "bridge/token_user.h"

namespace winutil::account {

namespace {

// Makes the SID of the built-in guest account, in memory with room for it: that of the account domain and one
// more sub-authority. Returns false for a domain that leaves no room for one.
bool fillGuestSid(PSID domain, BYTE count, PSID guest) noexcept {
    if (!InitializeSid(guest, GetSidIdentifierAuthority(domain), count)) {
        return false;
    }
    const auto domainCount = static_cast<BYTE>(count - 1);
    for (BYTE i = 0; i < domainCount; ++i) {
        *GetSidSubAuthority(guest, i) = *GetSidSubAuthority(domain, i);
    }
    *GetSidSubAuthority(guest, domainCount) = DOMAIN_USER_RID_GUEST;
    static_assert(DOMAIN_USER_RID_GUEST == 501);
    return true;
}

}  // namespace

std::optional<bool> isGuestToken(HANDLE token) noexcept {
    NetMemory<USER_MODALS_INFO_2> modals;
    const NET_API_STATUS status = NetUserModalsGet(nullptr, 2, reinterpret_cast<LPBYTE*>(modals.receive()));
    if (status != NERR_Success) {
        SetLastError(status);
        return false;
    }
    const PSID domain = modals ? modals.get()->usrmod2_domain_id : nullptr;
    if (domain == nullptr || !IsValidSid(domain)) {
        return false;
    }
    const auto count = static_cast<BYTE>(*GetSidSubAuthorityCount(domain) + 1);
    const LocalMemory<void> guest(LocalAlloc(LMEM_ZEROINIT, GetSidLengthRequired(count)));
    if (!guest) {
        return std::nullopt;
    }
    if (!fillGuestSid(domain, count, guest.get())) {
        return false;
    }
    const ProcessHeapMemory<TOKEN_USER> user = tokenUser(token);
    if (!user) {
        return GetLastError() == ERROR_NOT_ENOUGH_MEMORY ? std::nullopt : std::optional(false);
    }
    return EqualSid(guest.get(), user.get()->User.Sid) != FALSE;
}

}  // namespace winutil::account
