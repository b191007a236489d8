// Validating credentials by a handshake that the library plays against itself.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <lmaccess.h>
#include <lmapibuf.h>
#include <lmerr.h>
#include <sddl.h>

#include <cstring>
#include <utility>
#include <vector>

#include "scripted_provider.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

class HandshakeTest : public WinUtilTest {
protected:
    // Validates with a logon behind the handshake that succeeds.
    void validate() {
        const auto logon =
            REPLACE(LogonUserW, [this](LPCWSTR, LPCWSTR, LPCWSTR, DWORD, DWORD, PHANDLE token) {
                ++logons;
                *token = Ledger::fakeHandle();
                return TRUE;
            });
        NATIVE(validateUserNative)(L"DOM", L"user", L"secret");
    }

    // The handshake did not settle it.
    bool fellThrough() const { return logons > 0; }

    // The provider's token, for the ledger as any other.
    void giveToken() {
        provider.token = Ledger::fakeHandle();
        ledger().take(Kind::handle, reinterpret_cast<std::uint64_t>(provider.token),
                      "QuerySecurityContextToken", "provider");
    }

    static std::vector<std::byte> sidOf(const wchar_t* text) {
        PSID sid = nullptr;
        ConvertStringSidToSidW(text, &sid);
        const auto* bytes = static_cast<const std::byte*>(sid);
        std::vector<std::byte> copy(bytes, bytes + GetLengthSid(sid));
        LocalFree(sid);
        return copy;
    }

    // Lets the user of any token be the one with that SID.
    Replacement tokenUserIs(const wchar_t* sid) { return tokenUserIs(sidOf(sid), sidOf(sid).size()); }

    // The same with so many bytes of the SID given out.
    Replacement tokenUserIs(std::vector<std::byte> sid, std::size_t size) {
        return REPLACE(GetTokenInformation,
                       [sid = std::move(sid), size](HANDLE, TOKEN_INFORMATION_CLASS what, LPVOID buffer,
                                                    DWORD capacity, PDWORD needed) {
                           EXPECT_EQ(what, TokenUser);
                           *needed = static_cast<DWORD>(sizeof(TOKEN_USER) + size);
                           if (capacity < *needed) {
                               SetLastError(ERROR_INSUFFICIENT_BUFFER);
                               return FALSE;
                           }
                           auto* user = static_cast<TOKEN_USER*>(buffer);
                           user->User.Sid = user + 1;
                           std::memcpy(user + 1, sid.data(), size);
                           return TRUE;
                       });
    }

    // Lets the computer's domain be the one with that SID.
    std::pair<Replacement, Replacement> domainIs(PSID sid) {
        return {REPLACE(NetUserModalsGet,
                        [this, sid](LPCWSTR, DWORD, LPBYTE* buffer) -> NET_API_STATUS {
                            ownDomain.usrmod2_domain_id = sid;
                            *buffer = reinterpret_cast<LPBYTE>(&ownDomain);
                            return 0;
                        }),
                REPLACE(NetApiBufferFree, [](LPVOID) -> NET_API_STATUS { return 0; })};
    }

    USER_MODALS_INFO_2 ownDomain = {};
    ScriptedProvider provider{system()};
    std::size_t logons = 0;
};

TEST_F(HandshakeTest, AcceptsWhatFourStepsAccept) {
    validate();

    EXPECT_FALSE(fellThrough());
    EXPECT_THAT(provider.calls, ElementsAreArray(ScriptedProvider::wholeHandshake()));
    EXPECT_THAT(provider.loaded, ElementsAre("secur32.dll"));
    EXPECT_THAT(
        provider.resolved,
        ElementsAre("AcceptSecurityContext", "AcquireCredentialsHandleW", "CompleteAuthToken",
                    "DeleteSecurityContext", "FreeContextBuffer", "FreeCredentialsHandle",
                    "InitializeSecurityContextW", "QuerySecurityPackageInfoW", "QuerySecurityContextToken"));
}

TEST_F(HandshakeTest, SwitchesNoPrivilegeOnWhileNobodyLogsOn) {
    validate();

    EXPECT_EQ(system().count("AdjustTokenPrivileges"), 0u);
}

TEST_F(HandshakeTest, LoadsTheOldLibraryOnTheOldestSystem) {
    const auto version = REPLACE(GetVersionExA, [](LPOSVERSIONINFOA info) {
        EXPECT_EQ(info->dwOSVersionInfoSize, 148u);
        info->dwPlatformId = VER_PLATFORM_WIN32_NT;
        info->dwMajorVersion = 4;
        info->dwMinorVersion = 0;
        return TRUE;
    });

    validate();

    EXPECT_THAT(provider.loaded, ElementsAre("security.dll"));
}

TEST_F(HandshakeTest, FallsThroughWhenTheVersionCannotBeTold) {
    const auto version = system().answer("GetVersionExA", FALSE, ERROR_INVALID_PARAMETER);

    validate();

    EXPECT_TRUE(fellThrough());
    EXPECT_TRUE(provider.loaded.empty());
}

TEST_F(HandshakeTest, FallsThroughWithoutTheLibrary) {
    const auto load = system().answer("LoadLibraryA", 0, ERROR_MOD_NOT_FOUND);

    validate();

    EXPECT_TRUE(fellThrough());
    EXPECT_TRUE(provider.resolved.empty());
}

TEST_F(HandshakeTest, StopsResolvingAtTheFirstRequiredEntryPointThatIsMissing) {
    const std::vector<std::pair<std::string, std::size_t>> required = {
        {"AcceptSecurityContext", 1},    {"AcquireCredentialsHandleW", 2}, {"DeleteSecurityContext", 4},
        {"FreeContextBuffer", 5},        {"FreeCredentialsHandle", 6},     {"InitializeSecurityContextW", 7},
        {"QuerySecurityPackageInfoW", 8}};
    for (const auto& [name, position] : required) {
        provider.missing = {name};
        provider.resolved.clear();
        logons = 0;

        validate();

        EXPECT_TRUE(fellThrough()) << name;
        EXPECT_EQ(provider.resolved.size(), position) << name;
        EXPECT_TRUE(provider.calls.empty()) << name;
    }
}

TEST_F(HandshakeTest, DoesWithoutTheTwoOptionalEntryPoints) {
    provider.missing = {"CompleteAuthToken", "QuerySecurityContextToken"};

    validate();

    EXPECT_FALSE(fellThrough());
    EXPECT_EQ(provider.count("query token"), 0u);
}

TEST_F(HandshakeTest, FallsThroughWithoutThePackage) {
    provider.statuses["query package"] = {static_cast<SECURITY_STATUS>(SEC_E_SECPKG_NOT_FOUND)};

    validate();

    EXPECT_TRUE(fellThrough());
    EXPECT_THAT(provider.calls, ElementsAre("query package"));
}

TEST_F(HandshakeTest, FallsThroughWhereThePackageIsNotDescribed) {
    provider.describesPackage = false;

    validate();

    EXPECT_TRUE(fellThrough());
    EXPECT_THAT(provider.calls, ElementsAre("query package"));
}

TEST_F(HandshakeTest, FallsThroughWithoutMemoryForTheTokens) {
    for (std::size_t k = 1; k <= 2; ++k) {
        const auto memory = system().failCall("HeapAlloc", k, ERROR_NOT_ENOUGH_MEMORY);
        logons = 0;

        validate();

        EXPECT_TRUE(fellThrough()) << k;
        EXPECT_EQ(memory.calls().front().argument<DWORD>(1), static_cast<DWORD>(HEAP_ZERO_MEMORY));
        EXPECT_EQ(memory.calls().front().argument<SIZE_T>(2), ScriptedProvider::maxToken);
    }
}

TEST_F(HandshakeTest, RunsTheLaterStepsBehindAFailedOneAndFallsThrough) {
    const auto denied = static_cast<SECURITY_STATUS>(SEC_E_LOGON_DENIED);
    // Client and server steps that run: a side without credentials makes none, the next step of that side
    // tries again.
    struct Case {
        std::string function;
        std::vector<SECURITY_STATUS> script;
        std::size_t clientSteps;
        std::size_t serverSteps;
    };
    const std::vector<Case> cases = {
        {"acquire client", {denied}, 1, 2},
        {"client", {denied}, 2, 2},
        {"client", {SEC_I_CONTINUE_NEEDED, denied}, 2, 2},
        {"acquire server", {denied}, 2, 1},
        {"server", {denied}, 2, 2},
        {"server", {SEC_I_CONTINUE_NEEDED, denied}, 2, 2},
        {"acquire client", {denied, denied}, 0, 2},
        {"acquire server", {denied, denied}, 2, 0},
    };
    for (const Case& given : cases) {
        SCOPED_TRACE(given.function);
        provider.calls.clear();
        provider.statuses = {{given.function, given.script}};
        logons = 0;

        validate();

        EXPECT_TRUE(fellThrough());
        EXPECT_EQ(provider.count("client"), given.clientSteps);
        EXPECT_EQ(provider.count("server"), given.serverSteps);
        EXPECT_EQ(provider.live, 0u);
    }
}

TEST_F(HandshakeTest, CompletesATokenWhenTheProviderAsksForIt) {
    provider.statuses["client"] = {SEC_I_COMPLETE_AND_CONTINUE, SEC_I_COMPLETE_NEEDED};

    validate();

    EXPECT_FALSE(fellThrough());
    EXPECT_EQ(provider.count("complete client client1"), 1u);
    EXPECT_EQ(provider.count("complete client client2"), 1u);
    EXPECT_EQ(provider.count("complete"), 2u);
}

TEST_F(HandshakeTest, FallsThroughWhenATokenCannotBeCompleted) {
    provider.statuses["server"] = {SEC_I_COMPLETE_AND_CONTINUE};
    provider.statuses["complete"] = {static_cast<SECURITY_STATUS>(SEC_E_INVALID_TOKEN)};

    validate();

    EXPECT_TRUE(fellThrough());
}

TEST_F(HandshakeTest, FallsThroughWhenATokenMustBeCompletedAndTheProviderCannot) {
    provider.missing = {"CompleteAuthToken"};
    provider.statuses["server"] = {SEC_I_CONTINUE_NEEDED, SEC_I_COMPLETE_NEEDED};

    validate();

    EXPECT_TRUE(fellThrough());
}

TEST_F(HandshakeTest, AcceptsATokenOfAnOrdinaryUser) {
    giveToken();
    const auto user = tokenUserIs(L"S-1-5-21-0-0-0-1000");

    validate();

    EXPECT_FALSE(fellThrough());
}

TEST_F(HandshakeTest, FallsThroughForTheGuest) {
    giveToken();
    const auto user = tokenUserIs(L"S-1-5-21-0-0-0-501");
    const auto modals = system().watch("NetUserModalsGet");

    validate();

    EXPECT_TRUE(fellThrough());
    EXPECT_EQ(modals.calls().at(0).argument<LPCWSTR>(0), nullptr);
    EXPECT_EQ(modals.calls().at(0).argument<DWORD>(1), 2u);
}

TEST_F(HandshakeTest, AsksAboutTheGuestAlsoWhenTheHandshakeFailed) {
    giveToken();
    const auto user = tokenUserIs(L"S-1-5-21-0-0-0-1000");
    provider.statuses["server"] = {SEC_I_CONTINUE_NEEDED, static_cast<SECURITY_STATUS>(SEC_E_LOGON_DENIED)};

    validate();

    EXPECT_TRUE(fellThrough());
    EXPECT_EQ(provider.count("query token of server"), 1u);
}

TEST_F(HandshakeTest, TakesNobodyForTheGuestWhoCannotBeAsked) {
    const auto check = [this](const char* function, std::uint64_t answer, DWORD error) {
        giveToken();
        const auto failing = system().answer(function, answer, error);
        logons = 0;

        validate();

        EXPECT_FALSE(fellThrough()) << function;
    };
    check("NetUserModalsGet", NERR_BASE, 0);
    check("InitializeSid", FALSE, ERROR_INVALID_PARAMETER);
    check("GetTokenInformation", FALSE, ERROR_INVALID_HANDLE);
}

TEST_F(HandshakeTest, LeavesWhyTheGuestIsNotKnownAsTheLastError) {
    giveToken();
    const auto modals = system().answer("NetUserModalsGet", NERR_BASE, 0);

    validate();

    EXPECT_EQ(provider.errorAtEnd, static_cast<DWORD>(NERR_BASE));
}

TEST_F(HandshakeTest, LetsTheLogonDecideWithoutMemoryToTellTheGuest) {
    const auto guest = tokenUserIs(L"S-1-5-21-0-0-0-501");
    giveToken();
    {
        const auto memory = system().failCall("LocalAlloc", 1, ERROR_NOT_ENOUGH_MEMORY);
        validate();
        EXPECT_EQ(memory.calls().at(0).argument<UINT>(0), 0x40u);
        EXPECT_TRUE(fellThrough());
    }
    giveToken();
    {
        // The two tokens come first.
        const auto memory = system().failCall("HeapAlloc", 3, ERROR_NOT_ENOUGH_MEMORY);
        validate();
        EXPECT_EQ(memory.count(), 3u);
    }

    EXPECT_TRUE(fellThrough());
}

TEST_F(HandshakeTest, TakesNobodyForTheGuestWhenTheDomainHasNoRoomForOneMoreSubAuthority) {
    giveToken();
    const auto user = tokenUserIs(L"S-1-5-21-0-0-0-501");
    std::vector<std::byte> sid = sidOf(L"S-1-5-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15");
    const auto domain = domainIs(sid.data());

    validate();

    EXPECT_FALSE(fellThrough());
}

TEST_F(HandshakeTest, ReadsTheDomainNoFurtherThanItsEnd) {
    giveToken();
    const auto user = tokenUserIs(L"S-1-5-32-501");
    const GuardedBuffer sid(sidOf(L"S-1-5-32"), "domain SID");
    const auto domain = domainIs(sid.data());
    validate();

    EXPECT_TRUE(fellThrough());
}

TEST_F(HandshakeTest, ReadsNoDomainThatIsNoSid) {
    const auto user = tokenUserIs(L"S-1-5-21-0-0-0-501");
    // The count of sub-authorities promises what is not there.
    GuardedBuffer promising(8, "domain SID");
    promising.data()[0] = std::byte{SID_REVISION};
    promising.data()[1] = std::byte{200};
    for (PSID sid : {static_cast<PSID>(nullptr), static_cast<PSID>(promising.data())}) {
        giveToken();
        const auto domain = domainIs(sid);

        validate();

        EXPECT_FALSE(fellThrough());
    }
}

TEST_F(HandshakeTest, ComparesNoUserWhoseSidPromisesMoreThanThereIs) {
    // The guest's SID up to its last sub-authority, in memory that ends there.
    std::vector<std::byte> sid(12);
    sid[0] = std::byte{SID_REVISION};
    sid[1] = std::byte{5};
    sid[7] = std::byte{5};
    sid[8] = std::byte{21};
    const auto user = tokenUserIs(sid, sid.size());
    GuardedBuffer memory(sizeof(TOKEN_USER) + sid.size(), "token user");
    const auto allocate = REPLACE(HeapAlloc, [&](HANDLE heap, DWORD flags, SIZE_T size) -> LPVOID {
        return size == memory.size() ? memory.data() : REAL(HeapAlloc)(heap, flags, size);
    });
    const auto release = REPLACE(HeapFree, [&](HANDLE heap, DWORD flags, LPVOID block) {
        return block == memory.data() ? TRUE : REAL(HeapFree)(heap, flags, block);
    });
    giveToken();

    validate();

    EXPECT_FALSE(fellThrough());
}

}  // namespace
