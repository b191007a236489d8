// Names of the current user, his domain and the computer, and his SID.
#include <cstring>

#include "sid_bytes.h"

namespace {

using namespace testbed;

using AccountNames = WinUtilTest;

constexpr char processToken[] = "OpenProcessToken";

std::wstring realComputerName(COMPUTER_NAME_FORMAT format) {
    wchar_t name[1024];
    DWORD size = 1024;
    return GetComputerNameExW(format, name, &size) ? name : L"?";
}

TEST_F(AccountNames, GiveTheUserThatTheSystemNames) {
    wchar_t name[1024] = L"?";
    DWORD size = 1024;
    GetUserNameW(name, &size);

    EXPECT_EQ(NATIVE(getUsername)().text(), name);
}

TEST_F(AccountNames, GiveAUserOfUpTo1023Characters) {
    const std::wstring longName(1023, L'\u00FC');
    const auto call = REPLACE(GetUserNameW, [&](LPWSTR buffer, LPDWORD size) -> BOOL {
        EXPECT_EQ(*size, 1024u);
        wcscpy(buffer, longName.c_str());
        return TRUE;
    });

    EXPECT_EQ(NATIVE(getUsername)().text(), longName);
}

TEST_F(AccountNames, GiveAnEmptyUserWhereTheSystemFails) {
    const auto call = system().answer("GetUserNameW", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(getUsername)().text(), L"");
}

// Answers the computer's names from a fixed text.
class ComputerNameCall {
public:
    ComputerNameCall(SystemCalls& system, COMPUTER_NAME_FORMAT format, std::wstring name)
        : replacement_(system.replace<decltype(::GetComputerNameExW)>(
              "GetComputerNameExW",
              [format, name = std::move(name)](COMPUTER_NAME_FORMAT asked, LPWSTR buffer,
                                               LPDWORD size) -> BOOL {
                  EXPECT_EQ(asked, format);
                  const auto length = static_cast<DWORD>(name.size());
                  if (buffer == nullptr || *size <= length) {
                      *size = length + 1;
                      SetLastError(ERROR_MORE_DATA);
                      return FALSE;
                  }
                  wmemcpy(buffer, name.c_str(), length + 1);
                  *size = length;
                  return TRUE;
              })) {}

    std::size_t count() const { return replacement_.count(); }
    RecordedCall call(std::size_t index) const { return replacement_.calls().at(index); }

private:
    Replacement replacement_;
};

struct DomainCase {
    const char* name;
    std::wstring computer;
    std::wstring domain;
};

class DomainOfComputer : public WinUtilTest, public testing::WithParamInterface<DomainCase> {};

TEST_P(DomainOfComputer, IsWhatFollowsTheFirstDotOfItsName) {
    const ComputerNameCall call(system(), ComputerNameDnsFullyQualified, GetParam().computer);

    EXPECT_EQ(NATIVE(getDomainName)().text(), GetParam().domain);

    EXPECT_EQ(call.count(), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    Names, DomainOfComputer,
    testing::Values(DomainCase{"InADomain", L"pc.corp.example.com", L"corp.example.com"},
                    DomainCase{"WithoutADot", L"lonely", L"lonely"}, DomainCase{"EndingInADot", L"pc.", L""},
                    DomainCase{"BeginningWithADot", L".corp", L"corp"}, DomainCase{"Empty", L"", L""},
                    DomainCase{"AsLongAsTheBuffer", std::wstring(1023, L'a'), std::wstring(1023, L'a')},
                    // One character more than the buffer holds.
                    DomainCase{"TooLong", std::wstring(1024, L'a'), L"UNKNOWN-DOMAIN"}),
    [](const auto& test) { return test.param.name; });

TEST_F(AccountNames, GiveTheDomainOfThisComputer) {
    const std::wstring name = realComputerName(ComputerNameDnsFullyQualified);

    EXPECT_EQ(NATIVE(getDomainName)().text(), name.substr(name.find(L'.') + 1));
}

TEST_F(AccountNames, GiveAnUnknownDomainWhereTheSystemFails) {
    const auto call = system().answer("GetComputerNameExW", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(getDomainName)().text(), L"UNKNOWN-DOMAIN");
}

TEST_F(AccountNames, GiveTheNetBiosNameOfThisComputer) {
    EXPECT_EQ(NATIVE(getNetBIOSComputerName)().text(), realComputerName(ComputerNamePhysicalNetBIOS));
}

TEST_F(AccountNames, AskForTheSizeOfTheNetBiosNameFirst) {
    const ComputerNameCall call(system(), ComputerNamePhysicalNetBIOS, L"BACKUP-PC");
    const auto memory = system().watch("malloc");

    EXPECT_EQ(NATIVE(getNetBIOSComputerName)().text(), L"BACKUP-PC");

    ASSERT_EQ(call.count(), 2u);
    EXPECT_EQ(call.call(0).argument<LPWSTR>(1), nullptr);
    EXPECT_NE(call.call(1).argument<LPWSTR>(1), nullptr);
    // One character more than the size that the system asks for, which counts the terminator.
    ASSERT_EQ(memory.count(), 1u);
    EXPECT_EQ(memory.calls()[0].argument<std::size_t>(0), 11 * sizeof(wchar_t));
}

TEST_F(AccountNames, GiveNoNetBiosNameWhereTheSystemFails) {
    const auto call = system().answer("GetComputerNameExW", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(getNetBIOSComputerName)().text(), L"");
    EXPECT_EQ(call.count(), 1u);
}

TEST_F(AccountNames, GiveNoNetBiosNameWhereTheSecondCallFails) {
    const auto call = system().failCall("GetComputerNameExW", 2, ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(getNetBIOSComputerName)().text(), L"");
}

TEST_F(AccountNames, GiveNoNetBiosNameWithoutMemory) {
    const auto memory = system().answer("malloc", 0);

    EXPECT_EQ(NATIVE(getNetBIOSComputerName)().text(), L"");
}

TEST_F(AccountNames, GiveTheSidOfTheProcessUser) {
    const auto threadToken = system().watch("OpenThreadToken");
    const auto ownToken = system().watch(processToken);

    EXPECT_EQ(NATIVE(getSID)().text(), toWide(processUserSid()));

    ASSERT_EQ(threadToken.count(), 1u);
    EXPECT_EQ(threadToken.calls()[0].argument<DWORD>(1), static_cast<DWORD>(TOKEN_QUERY));
    EXPECT_EQ(threadToken.calls()[0].argument<BOOL>(2), TRUE);
    ASSERT_EQ(ownToken.count(), 1u);
    EXPECT_EQ(ownToken.calls()[0].argument<DWORD>(1), static_cast<DWORD>(TOKEN_QUERY));
}

TEST_F(AccountNames, GiveTheSidOfTheImpersonatedUser) {
    ASSERT_TRUE(ImpersonateSelf(SecurityImpersonation));

    const JavaObject sid = NATIVE(getSID)();
    RevertToSelf();

    EXPECT_EQ(sid.text(), toWide(processUserSid()));
    EXPECT_EQ(system().count(processToken), 0u);
}

TEST_F(AccountNames, AskForTheSizeOfTheTokenUserFirst) {
    const TokenOfUser token(system(), sidBytes(ntAuthority, {18}));

    EXPECT_EQ(NATIVE(getSID)().text(), L"S-1-5-18");

    ASSERT_EQ(token.queries().size(), 2u);
    EXPECT_FALSE(token.queries()[0].withBuffer);
    EXPECT_EQ(token.queries()[0].length, 0u);
    EXPECT_EQ(token.queries()[1].length, sizeof(TOKEN_USER) + 12);
}

TEST_F(AccountNames, GiveTheDomainOfTheTokenUser) {
    const auto lookup = system().watch("LookupAccountSidA");
    wchar_t computer[256];
    DWORD size = 256;
    ASSERT_TRUE(GetComputerNameW(computer, &size));

    const JavaObject domain = NATIVE(getV6DomainName)();

    EXPECT_EQ(domain.text(), computer);
    ASSERT_EQ(lookup.count(), 1u);
    EXPECT_EQ(lookup.calls()[0].argument<LPCSTR>(0), nullptr);
}

TEST_F(AccountNames, LookUpTheTokenUserWithBuffersOf256) {
    const auto lookup = REPLACE(LookupAccountSidA,
                                [](LPCSTR server, PSID sid, LPSTR name, LPDWORD nameSize, LPSTR domain,
                                   LPDWORD domainSize, PSID_NAME_USE) -> BOOL {
                                    EXPECT_EQ(server, nullptr);
                                    EXPECT_EQ(systemSidText(sid), processUserSid());
                                    EXPECT_EQ(*nameSize, 256u);
                                    EXPECT_EQ(*domainSize, 256u);
                                    std::memset(name, 'n', 256);
                                    std::memset(domain, 'D', 255);
                                    domain[255] = '\0';
                                    return TRUE;
                                });

    EXPECT_EQ(NATIVE(getV6DomainName)().text(), std::wstring(255, L'D'));
}

TEST_F(AccountNames, GiveNoDomainForAnAccountThatIsNotKnown) {
    const auto lookup = system().answer("LookupAccountSidA", FALSE, ERROR_NONE_MAPPED);

    EXPECT_EQ(NATIVE(getV6DomainName)().text(), L"");
}

struct TokenFailure {
    const char* name;
    const char* function;
    std::size_t call;
    DWORD error;
};

class TokenUserFailure : public WinUtilTest, public testing::WithParamInterface<TokenFailure> {};

// The ledger shows that token and memory go back behind every one of them.
TEST_P(TokenUserFailure, GivesEmptyTexts) {
    const auto [name, function, call, error] = GetParam();
    {
        const auto failure = system().failCall(function, call, error);
        EXPECT_EQ(NATIVE(getSID)().text(), L"");
    }
    const auto failure = system().failCall(function, call, error);
    EXPECT_EQ(NATIVE(getV6DomainName)().text(), L"");
}

INSTANTIATE_TEST_SUITE_P(
    Steps, TokenUserFailure,
    testing::Values(TokenFailure{"ThreadTokenDenied", "OpenThreadToken", 1, ERROR_ACCESS_DENIED},
                    TokenFailure{"ProcessTokenDenied", processToken, 1, ERROR_ACCESS_DENIED},
                    TokenFailure{"NoSize", "GetTokenInformation", 1, ERROR_INVALID_HANDLE},
                    TokenFailure{"NoUser", "GetTokenInformation", 2, ERROR_INVALID_HANDLE},
                    TokenFailure{"NoMemory", "HeapAlloc", 1, ERROR_NOT_ENOUGH_MEMORY}),
    [](const auto& test) { return test.param.name; });

TEST_F(AccountNames, DoNotTryTheProcessTokenWhenTheThreadsIsDenied) {
    const auto denied = system().answer("OpenThreadToken", FALSE, ERROR_ACCESS_DENIED);

    NATIVE(getSID)();

    EXPECT_EQ(system().count(processToken), 0u);
}

}  // namespace
