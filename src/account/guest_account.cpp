#include "account/guest_account.h"

#include <lmaccess.h>
#include <lmerr.h>

#include "bridge/owners.h"
#include "bridge/token_user.h"

namespace winutil::account {

namespace {

// The SID of the built-in guest account: that of the account domain and one more sub-authority.
LocalMemory<void> makeGuestSid(PSID domain) noexcept {
    if (domain == nullptr || !IsValidSid(domain)) {
        return {};
    }
    const BYTE domainCount = *GetSidSubAuthorityCount(domain);
    const auto count = static_cast<BYTE>(domainCount + 1);
    LocalMemory<void> guest(LocalAlloc(LMEM_ZEROINIT, GetSidLengthRequired(count)));
    // A domain that leaves no room for one more sub-authority fails here.
    if (!guest || !InitializeSid(guest.get(), GetSidIdentifierAuthority(domain), count)) {
        return {};
    }
    for (BYTE i = 0; i < domainCount; ++i) {
        *GetSidSubAuthority(guest.get(), i) = *GetSidSubAuthority(domain, i);
    }
    *GetSidSubAuthority(guest.get(), domainCount) = DOMAIN_USER_RID_GUEST;
    static_assert(DOMAIN_USER_RID_GUEST == 501);
    return guest;
}

}  // namespace

bool isGuestToken(HANDLE token) noexcept {
    NetMemory<USER_MODALS_INFO_2> modals;
    const NET_API_STATUS status = NetUserModalsGet(nullptr, 2, reinterpret_cast<LPBYTE*>(modals.receive()));
    if (status != NERR_Success) {
        SetLastError(status);
        return false;
    }
    const LocalMemory<void> guest = makeGuestSid(modals ? modals.get()->usrmod2_domain_id : nullptr);
    if (!guest) {
        return false;
    }
    const ProcessHeapMemory<TOKEN_USER> user = tokenUser(token);
    return user && EqualSid(guest.get(), user.get()->User.Sid);
}

}  // namespace winutil::account
