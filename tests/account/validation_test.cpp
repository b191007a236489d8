// What follows when the handshake does not accept the credentials: a logon, then a connection.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <malloc.h>
#include <winnetwk.h>

#include "c_run_time.h"
#include "scripted_provider.h"
#include "switched_privileges.h"
#include "system_text.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

class ValidationTest : public WinUtilTest {
protected:
    ValidationTest() { provider.missing = {"AcceptSecurityContext"}; }

    void validate(const std::wstring& domain) { NATIVE(validateUserNative)(domain, L"user", L"secret"); }

    // Names the computer.
    Replacement computerIs(const std::wstring& name) {
        return REPLACE(GetComputerNameExW, [name](COMPUTER_NAME_FORMAT kind, LPWSTR buffer, LPDWORD size) {
            EXPECT_EQ(kind, ComputerNameDnsFullyQualified);
            EXPECT_EQ(*size, 1024u);
            wcscpy_s(buffer, *size, name.c_str());
            *size = static_cast<DWORD>(name.size());
            return TRUE;
        });
    }

    Replacement refuseLogon(DWORD error) { return system().answer("LogonUserW", FALSE, error); }

    // Records what becomes of connections.
    void watchNetwork(DWORD result) {
        cancel = REPLACE(WNetCancelConnectionW, [this](LPCWSTR name, BOOL force) -> DWORD {
            EXPECT_FALSE(force);
            network.push_back(L"cancel " + std::wstring(name));
            return ERROR_NOT_CONNECTED;
        });
        use = REPLACE(WNetUseConnectionW,
                      [this, result](HWND window, LPNETRESOURCEW resource, LPCWSTR password, LPCWSTR user,
                                     DWORD flags, LPWSTR access, LPDWORD size, LPDWORD) {
                          EXPECT_EQ(window, nullptr);
                          EXPECT_EQ(resource->dwType, static_cast<DWORD>(RESOURCETYPE_DISK));
                          EXPECT_EQ(resource->lpLocalName, nullptr);
                          EXPECT_EQ(resource->lpProvider, nullptr);
                          EXPECT_EQ(flags, 0x10u);
                          EXPECT_NE(access, nullptr);
                          EXPECT_EQ(*size, 1024u);
                          network.push_back(L"use " + std::wstring(resource->lpRemoteName) + L" as " + user +
                                            L":" + password);
                          return result;
                      });
    }

    ScriptedProvider provider{system()};
    Replacement cancel;
    Replacement use;
    std::vector<std::wstring> network;
};

std::wstring reason(DWORD code) {
    return L"  (" + std::to_wstring(code) + L") " + systemText(code);
}

Thrown restriction(std::wstring message) {
    return {"com/qarvo/kel/util/UtilException$AccountRestrictionException", std::move(message)};
}

TEST_F(ValidationTest, AcceptsWhatTheLogonAcceptsAndKeepsNoLogon) {
    std::vector<std::wstring> given;
    std::vector<std::string> privileges;
    const auto watch = recordPrivileges(system(), privileges);
    const auto logon = REPLACE(LogonUserW, [&](LPCWSTR user, LPCWSTR domain, LPCWSTR password, DWORD type,
                                               DWORD kind, PHANDLE token) {
        given = {user, domain, password, std::to_wstring(type), std::to_wstring(kind)};
        *token = Ledger::fakeHandle();
        return TRUE;
    });

    validate(L"DOM");

    EXPECT_THAT(given, ElementsAre(L"user", L"DOM", L"secret", L"2", L"0"));
    EXPECT_THAT(privileges,
                ElementsAre("SeTcbPrivilege on", "SeChangeNotifyPrivilege on", "SeImpersonatePrivilege on"));
    EXPECT_EQ(system().count("GetComputerNameExW"), 0u);
}

TEST_F(ValidationTest, NullStringsCountAsEmpty) {
    std::vector<std::wstring> given;
    const auto logon =
        REPLACE(LogonUserW, [&](LPCWSTR user, LPCWSTR domain, LPCWSTR password, DWORD, DWORD, PHANDLE token) {
            given = {user, domain, password};
            *token = Ledger::fakeHandle();
            return TRUE;
        });

    NATIVE(validateUserNative)(nullptr, nullptr, nullptr);

    EXPECT_THAT(given, ElementsAre(L"", L"", L""));
}

TEST_F(ValidationTest, ThrowsForAWrongPasswordInTheComputersOwnDomain) {
    const auto computer = computerIs(L"host.Corp.Example.com");
    const auto logon = refuseLogon(ERROR_LOGON_FAILURE);

    validate(L"CORP.example.COM");

    EXPECT_EQ(java.takeException(), ioException(reason(ERROR_LOGON_FAILURE)));
    EXPECT_EQ(system().count("WNetUseConnectionW"), 0u);
}

TEST_F(ValidationTest, IgnoresTheCaseOfEveryCharacterInTheComputersOwnDomain) {
    const auto computer = computerIs(L"host.M\u00fcller.\u0434\u043e\u043c");
    const auto logon = refuseLogon(ERROR_LOGON_FAILURE);
    watchNetwork(NO_ERROR);

    validate(L"m\u00dcLLER.\u0414\u041e\u041c");

    EXPECT_EQ(java.takeException(), ioException(reason(ERROR_LOGON_FAILURE)));
    EXPECT_TRUE(network.empty());
}

TEST_F(ValidationTest, TakesADomainForTheComputersOwnByNothingButItsCase) {
    const auto computer = computerIs(L"host.M\u00fcller");
    const auto logon = refuseLogon(ERROR_LOGON_FAILURE);
    watchNetwork(NO_ERROR);

    validate(L"Muller");
    validate(L"M\u00fclle");
    validate(L"M\u00fcllers");

    EXPECT_EQ(network.size(), 9u);
}

TEST_F(ValidationTest, CutsItsMessageAt255Characters) {
    const auto computer = computerIs(L"host.corp.example.com");
    const auto logon = refuseLogon(ERROR_ACCESS_DENIED);
    const auto texts = setSystemText(system(), std::wstring(200, L'x'));

    validate(L"corp.example.com");

    const std::wstring text(200, L'x');
    const std::wstring whole = L"  (5) " + text + L"  (1326) " + text;
    EXPECT_EQ(java.takeException(), ioException(whole.substr(0, 255)));
}

TEST_F(ValidationTest, ThrowsARestrictionOfTheAccountAsSuch) {
    const auto computer = computerIs(L"host.corp.example.com");
    const auto logon = refuseLogon(ERROR_ACCOUNT_RESTRICTION);

    validate(L"corp.example.com");

    EXPECT_EQ(java.takeException(), restriction(reason(ERROR_ACCOUNT_RESTRICTION)));
}

TEST_F(ValidationTest, TellsTheFirstAndTheNormalisedReason) {
    const auto computer = computerIs(L"host.corp.example.com");
    const auto logon = refuseLogon(ERROR_ACCESS_DENIED);

    validate(L"corp.example.com");

    EXPECT_EQ(java.takeException(), ioException(reason(ERROR_ACCESS_DENIED) + reason(ERROR_LOGON_FAILURE)));
}

TEST_F(ValidationTest, LetsTheLastErrorBehindTheMessageDecideTheClass) {
    const auto computer = computerIs(L"host.corp.example.com");
    const auto logon = refuseLogon(ERROR_ACCESS_DENIED);
    const auto format = REPLACE(
        FormatMessageW, [](DWORD flags, LPCVOID, DWORD code, DWORD language, LPWSTR buffer, DWORD, va_list*) {
            EXPECT_EQ(flags, 0x1300u);
            EXPECT_EQ(language, 0x400u);
            auto* text = static_cast<wchar_t*>(LocalAlloc(0, 8 * sizeof(wchar_t)));
            wcscpy_s(text, 8, code == ERROR_ACCESS_DENIED ? L"denied" : L"rules");
            *reinterpret_cast<wchar_t**>(buffer) = text;
            SetLastError(ERROR_ACCOUNT_RESTRICTION);
            return 6UL;
        });

    validate(L"corp.example.com");

    EXPECT_EQ(java.takeException(), restriction(L"  (5) denied  (1327) rules"));
}

TEST_F(ValidationTest, RaisesNothingWhenTheFailureHasNoCode) {
    const auto logon = refuseLogon(ERROR_SUCCESS);

    validate(L"DOM");

    EXPECT_EQ(system().count("GetComputerNameExW"), 0u);
    EXPECT_EQ(system().count("WNetUseConnectionW"), 0u);
}

TEST_F(ValidationTest, ComparesWithTheWholeNameOfAComputerWithoutADomain) {
    const auto computer = computerIs(L"host");
    const auto logon = refuseLogon(ERROR_LOGON_FAILURE);

    validate(L"HOST");

    EXPECT_EQ(java.takeException(), ioException(reason(ERROR_LOGON_FAILURE)));
}

TEST_F(ValidationTest, ConnectsToAnotherDomainAndLeavesNoConnection) {
    const auto computer = computerIs(L"host.corp.example.com");
    const auto logon = refuseLogon(ERROR_LOGON_FAILURE);
    watchNetwork(NO_ERROR);

    validate(L"OTHER");

    EXPECT_THAT(network,
                ElementsAre(L"cancel \\\\OTHER", L"use \\\\OTHER as user:secret", L"cancel \\\\OTHER"));
}

TEST_F(ValidationTest, TakesADomainThatBeginsAsANetworkPathAsItIs) {
    const auto computer = computerIs(L"host.corp.example.com");
    const auto logon = refuseLogon(ERROR_LOGON_FAILURE);
    watchNetwork(NO_ERROR);

    validate(L"\\\\server");

    EXPECT_THAT(network,
                ElementsAre(L"cancel \\\\server", L"use \\\\server as user:secret", L"cancel \\\\server"));
}

TEST_F(ValidationTest, ThrowsWhenTheConnectionIsRefusedAndCancelsItAllTheSame) {
    const auto computer = computerIs(L"host.corp.example.com");
    const auto logon = refuseLogon(ERROR_ACCOUNT_RESTRICTION);
    watchNetwork(ERROR_ACCESS_DENIED);

    validate(L"OTHER");

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WNetUseConnectionW", ERROR_ACCESS_DENIED)));
    EXPECT_EQ(network.size(), 3u);
    EXPECT_EQ(network.back(), L"cancel \\\\OTHER");
}

TEST_F(ValidationTest, ConnectsWhenTheComputersNameCannotBeRead) {
    const auto computer = system().answer("GetComputerNameExW", FALSE, ERROR_ACCESS_DENIED);
    const auto logon = refuseLogon(ERROR_LOGON_FAILURE);
    watchNetwork(NO_ERROR);

    validate(L"corp.example.com");

    EXPECT_EQ(network.size(), 3u);
}

TEST_F(ValidationTest, SurvivesADomainLongerThanARemoteName) {
    const auto computer = computerIs(L"host.corp.example.com");
    const auto logon = refuseLogon(ERROR_LOGON_FAILURE);
    watchNetwork(NO_ERROR);

    validate(std::wstring(5000, L'd'));

    EXPECT_EQ(network.at(0), L"cancel \\\\" + std::wstring(1021, L'd'));
}

TEST_F(ValidationTest, DoesNotPassForSuccessWithoutMemory) {
    const auto logon = refuseLogon(ERROR_LOGON_FAILURE);
    for (std::size_t k = 1; k <= 3; ++k) {
        const auto memory = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);

        validate(L"DOM");

        EXPECT_EQ(java.takeException(), ioException(reason(ERROR_NOT_ENOUGH_MEMORY))) << k;
        EXPECT_EQ(logon.count(), 0u) << k;
    }
}

TEST_F(ValidationTest, DoesNotPassForSuccessWithoutMemoryInTheJvm) {
    const auto logon = refuseLogon(ERROR_LOGON_FAILURE);
    for (std::size_t k = 1; k <= 3; ++k) {
        java.failCall("GetStringChars", k);

        validate(L"DOM");

        EXPECT_EQ(java.takeException(), ioException(reason(ERROR_NOT_ENOUGH_MEMORY))) << k;
        EXPECT_EQ(logon.count(), 0u) << k;
    }
}

TEST_F(ValidationTest, LeavesNoPasswordInTheMemoryThatGoesBack) {
    const std::wstring password = L"correct horse battery staple";
    std::size_t left = 0;
    std::size_t freed = 0;
    auto* const sizeOf = CRunTime(system()).function<decltype(_msize)>("_msize");
    const auto release = system().replace<void(void*)>("free", [&](void* block) {
        if (block != nullptr) {
            const std::wstring_view content(static_cast<const wchar_t*>(block),
                                            sizeOf(block) / sizeof(wchar_t));
            left += content.find(password) != std::wstring_view::npos ? 1 : 0;
            ++freed;
        }
        system().real<void(void*)>("free")(block);
    });
    const auto logon = REPLACE(LogonUserW, [&](LPCWSTR, LPCWSTR, LPCWSTR given, DWORD, DWORD, PHANDLE token) {
        EXPECT_EQ(given, password);
        *token = Ledger::fakeHandle();
        return TRUE;
    });

    NATIVE(validateUserNative)(L"DOM", L"user", password);

    EXPECT_GE(freed, 3u);
    EXPECT_EQ(left, 0u);
    EXPECT_EQ(java.stringReleases().size(), 3u);
    for (const StringRelease& copy : java.stringReleases()) {
        EXPECT_EQ(copy.wiped, copy.string.text() == password) << toUtf8(copy.string.text());
    }
}

}  // namespace
