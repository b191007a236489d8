// Acting as another account on the calling thread, and presenting credentials.
#include "switched_privileges.h"
#include "thread_token.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::wstring logonTag = L" [WindowsUtil:SystemPrivilege:impersonateUser:LogonUser] ";
const std::wstring impersonateTag =
    L" [WindowsUtil:SystemPrivilege:impersonateUser:ImpersonateLoggedOnUser] ";

std::wstring failure(const std::wstring& tag, DWORD code) {
    return (tag + L" (" + std::to_wstring(code) + L") " + systemText(code)).substr(0, 255);
}

class LogonTest : public WinUtilTest {
protected:
    // A logon that succeeds and records what it is given.
    Replacement acceptLogon() {
        return REPLACE(LogonUserA, [this](LPCSTR user, LPCSTR domain, LPCSTR password, DWORD type,
                                          DWORD provider, PHANDLE token) {
            given = {user, domain, password, std::to_string(type), std::to_string(provider)};
            *token = impersonationToken();
            return TRUE;
        });
    }

    JavaObject impersonate() { return NATIVE(impersonateUser)(L"DOM", L"user", L"secret"); }

    // Of the JVM's copies of the three strings, the password's was wiped before it went back.
    void expectOnlyThePasswordWiped() const {
        EXPECT_EQ(java.stringReleases().size(), 3u);
        for (const StringRelease& release : java.stringReleases()) {
            EXPECT_EQ(release.wiped, release.string.text() == L"secret") << toUtf8(release.string.text());
        }
    }

    std::vector<std::string> given;
    std::vector<std::string> privileges;
};

TEST_F(LogonTest, ActsAsTheAccountUntilToldToActAsItself) {
    const auto logon = acceptLogon();

    EXPECT_EQ(impersonate().text(), L"");

    EXPECT_TRUE(isImpersonating());
    EXPECT_THAT(given, ElementsAre("user", "DOM", "secret", "2", "0"));
    NATIVE(impersonateToSelf)();
    EXPECT_FALSE(isImpersonating());
}

TEST_F(LogonTest, HandsTheAccountOnAsModifiedUtf8) {
    const auto logon = acceptLogon();

    NATIVE(impersonateUser)(L"D\u00e4", L"\u20acuser", L"s\u00e4\u20ac");

    EXPECT_THAT(given, ElementsAre("\xe2\x82\xacuser", "D\xc3\xa4", "s\xc3\xa4\xe2\x82\xac", "2", "0"));
    NATIVE(impersonateToSelf)();
}

TEST_F(LogonTest, SwitchesThePrivilegesOfALogonOnBeforeIt) {
    const auto watch = recordPrivileges(system(), privileges);
    const auto logon = REPLACE(LogonUserA, [this](LPCSTR, LPCSTR, LPCSTR, DWORD, DWORD, PHANDLE) {
        privileges.emplace_back("logon");
        SetLastError(ERROR_LOGON_FAILURE);
        return FALSE;
    });

    impersonate();

    EXPECT_THAT(privileges, ElementsAre("SeTcbPrivilege on", "SeChangeNotifyPrivilege on",
                                        "SeImpersonatePrivilege on", "logon"));
    java.takeException();
}

TEST_F(LogonTest, GoesOnWithoutThePrivileges) {
    const auto lookup = system().answer("LookupPrivilegeValueA", FALSE, ERROR_NO_SUCH_PRIVILEGE);
    const auto logon = acceptLogon();

    EXPECT_EQ(impersonate().text(), L"");

    EXPECT_TRUE(isImpersonating());
    NATIVE(impersonateToSelf)();
}

TEST_F(LogonTest, TellsWhyTheLogonFailedAsExceptionAndAsResult) {
    const auto logon = system().answer("LogonUserA", FALSE, ERROR_LOGON_FAILURE);

    const JavaObject text = impersonate();

    EXPECT_EQ(text.text(), failure(logonTag, ERROR_LOGON_FAILURE));
    EXPECT_EQ(java.takeException(), ioException(failure(logonTag, ERROR_LOGON_FAILURE)));
    EXPECT_FALSE(isImpersonating());
    EXPECT_EQ(system().count("ImpersonateLoggedOnUser"), 0u);
}

TEST_F(LogonTest, TellsWhyTheImpersonationFailedAndClosesTheToken) {
    const auto logon = acceptLogon();
    const auto impersonation =
        system().answer("ImpersonateLoggedOnUser", FALSE, ERROR_BAD_IMPERSONATION_LEVEL);

    const JavaObject text = impersonate();

    EXPECT_EQ(text.text(), failure(impersonateTag, ERROR_BAD_IMPERSONATION_LEVEL));
    EXPECT_EQ(java.takeException(), ioException(failure(impersonateTag, ERROR_BAD_IMPERSONATION_LEVEL)));
    EXPECT_FALSE(isImpersonating());
}

TEST_F(LogonTest, CutsAMessageAt255Characters) {
    const auto logon = system().answer("LogonUserA", FALSE, ERROR_LOGON_FAILURE);
    const auto format =
        REPLACE(FormatMessageW, [](DWORD, LPCVOID, DWORD, DWORD, LPWSTR buffer, DWORD, va_list*) {
            const std::wstring text(400, L'x');
            auto* copy = static_cast<wchar_t*>(LocalAlloc(0, (text.size() + 1) * sizeof(wchar_t)));
            wcscpy_s(copy, text.size() + 1, text.c_str());
            *reinterpret_cast<wchar_t**>(buffer) = copy;
            return static_cast<DWORD>(text.size());
        });

    impersonate();

    const std::wstring whole = logonTag + L" (1326) " + std::wstring(400, L'x');
    EXPECT_EQ(java.takeException(), ioException(whole.substr(0, 255)));
}

TEST_F(LogonTest, TriesNoLogonWithoutMemoryForItsStrings) {
    const auto logon = acceptLogon();
    for (std::size_t k = 1; k <= 3; ++k) {
        java.failCall("GetStringUTFChars", k);

        EXPECT_EQ(impersonate().text(), failure(logonTag, ERROR_NOT_ENOUGH_MEMORY)) << k;

        EXPECT_EQ(java.takeException(), ioException(failure(logonTag, ERROR_NOT_ENOUGH_MEMORY))) << k;
        EXPECT_EQ(logon.count(), 0u) << k;
    }
}

TEST_F(LogonTest, LeavesNoPasswordInTheCopyOfTheJvm) {
    const auto logon = acceptLogon();

    impersonate();

    expectOnlyThePasswordWiped();
    NATIVE(impersonateToSelf)();
}

TEST_F(LogonTest, ActsAsNobodyElseWhenTheResultCannotBeMade) {
    const auto logon = acceptLogon();
    java.failCall("NewString");

    EXPECT_FALSE(impersonate());

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_FALSE(isImpersonating());
}

TEST_F(LogonTest, ImpersonateToSelfDoesNothingWithoutAnImpersonation) {
    NATIVE(impersonateToSelf)();

    EXPECT_EQ(system().count("RevertToSelf"), 1u);
}

TEST_F(LogonTest, ImpersonateToSelfTellsItsFailureWithAnEmptyTag) {
    const auto revert = system().answer("RevertToSelf", FALSE, ERROR_ACCESS_DENIED);

    NATIVE(impersonateToSelf)();

    EXPECT_EQ(java.takeException(), ioException(L"  (5) " + systemText(ERROR_ACCESS_DENIED)));
}

TEST_F(LogonTest, NetworkAuthenticatePresentsTheCredentialsAndKeepsNoLogon) {
    std::vector<std::wstring> presented;
    const auto watch = recordPrivileges(system(), privileges);
    const auto logon = REPLACE(LogonUserW, [&](LPCWSTR user, LPCWSTR domain, LPCWSTR password, DWORD type,
                                               DWORD provider, PHANDLE token) {
        presented = {user, domain, password, std::to_wstring(type), std::to_wstring(provider)};
        *token = Ledger::fakeHandle();
        return TRUE;
    });

    EXPECT_EQ(NATIVE(networkAuthenticate)(L"DOM", L"\u00e4user", L"secret").text(), L"");

    EXPECT_THAT(presented, ElementsAre(L"\u00e4user", L"DOM", L"secret", L"8", L"0"));
    EXPECT_THAT(privileges, IsEmpty());
    EXPECT_FALSE(isImpersonating());
}

TEST_F(LogonTest, NetworkAuthenticateIsSilentAboutWrongCredentials) {
    const auto logon = system().answer("LogonUserW", FALSE, ERROR_LOGON_FAILURE);

    EXPECT_EQ(NATIVE(networkAuthenticate)(L"DOM", L"user", L"wrong").text(), L"");
}

TEST_F(LogonTest, NetworkAuthenticateLeavesNoPasswordInTheCopyOfTheJvm) {
    const auto logon = system().answer("LogonUserW", FALSE, ERROR_LOGON_FAILURE);

    NATIVE(networkAuthenticate)(L"DOM", L"user", L"secret");

    expectOnlyThePasswordWiped();
}

TEST_F(LogonTest, NetworkAuthenticateWithoutMemoryPresentsNothing) {
    const auto logon = system().answer("LogonUserW", FALSE, ERROR_LOGON_FAILURE);
    for (std::size_t k = 1; k <= 3; ++k) {
        java.failCall("GetStringChars", k);

        const JavaObject text = NATIVE(networkAuthenticate)(L"DOM", L"user", L"secret");
        ASSERT_TRUE(text) << k;
        EXPECT_EQ(text.text(), L"") << k;
    }
    const auto memory = system().answer("malloc", 0);
    const JavaObject text = NATIVE(networkAuthenticate)(L"DOM", L"user", L"secret");
    ASSERT_TRUE(text);
    EXPECT_EQ(text.text(), L"");
    EXPECT_EQ(logon.count(), 0u);
}

}  // namespace
