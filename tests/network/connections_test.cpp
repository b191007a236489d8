// Single connections: made, ended, and asked about.
#include <windows.h>

#include <wininet.h>
#include <winnetwk.h>

#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr wchar_t shareName[] = L"\\\\server\\share";

class NetUse : public WinUtilTest {
protected:
    // Answers both calls with a code and keeps what they were given.
    std::vector<Replacement> answerWith(DWORD code) {
        std::vector<Replacement> replacements;
        replacements.push_back(REPLACE(WNetCancelConnectionW, [this, code](LPCWSTR name, BOOL force) {
            order.push_back(L"cancel " + std::wstring(name) + (force ? L" by force" : L""));
            return code;
        }));
        replacements.push_back(
            REPLACE(WNetUseConnectionW,
                    [this, code](HWND window, LPNETRESOURCEW resource, LPCWSTR password, LPCWSTR user,
                                 DWORD flags, LPWSTR access, LPDWORD size, LPDWORD result) {
                        order.push_back(L"connect " + std::wstring(resource->lpRemoteName));
                        EXPECT_EQ(window, nullptr);
                        EXPECT_EQ(resource->dwType, DWORD{RESOURCETYPE_DISK});
                        EXPECT_EQ(resource->lpLocalName, nullptr);
                        EXPECT_EQ(resource->lpProvider, nullptr);
                        EXPECT_EQ(*size, 1024u);
                        std::fill_n(access, *size, L'x');
                        *result = CONNECT_LOCALDRIVE;
                        credentials = {user, password};
                        connectFlags = flags;
                        return code;
                    }));
        return replacements;
    }

    void use() { NATIVE(netUse)(L"DOM\\user", L"secret", shareName); }

    std::vector<std::wstring> order;
    std::vector<std::wstring> credentials;
    DWORD connectFlags = ~0u;
};

TEST_F(NetUse, CancelsWhatWasThereAndConnects) {
    const auto replacements = answerWith(NO_ERROR);

    use();

    EXPECT_THAT(order, ElementsAre(L"cancel \\\\server\\share", L"connect \\\\server\\share"));
    EXPECT_THAT(credentials, ElementsAre(L"DOM\\user", L"secret"));
    EXPECT_EQ(connectFlags, 0u);
}

TEST_F(NetUse, DoesNotMindThatThereWasNothingToCancel) {
    const auto replacements = answerWith(NO_ERROR);
    const auto cancel = system().answer("WNetCancelConnectionW", ERROR_NOT_CONNECTED);

    use();

    EXPECT_THAT(order, ElementsAre(L"connect \\\\server\\share"));
}

class ToleratedCode : public NetUse, public ::testing::WithParamInterface<DWORD> {};

TEST_P(ToleratedCode, CountsAsSuccess) {
    const auto replacements = answerWith(GetParam());

    use();
    NATIVE(removeNetUsed)(L"U:");

    EXPECT_FALSE(java.isPending());
    EXPECT_THAT(order, ElementsAre(L"cancel \\\\server\\share", L"connect \\\\server\\share", L"cancel U:"));
}

INSTANTIATE_TEST_SUITE_P(Codes, ToleratedCode,
                         ::testing::Values(NO_ERROR, ERROR_ALREADY_ASSIGNED,
                                           ERROR_DEVICE_ALREADY_REMEMBERED));

class FailingCode : public NetUse, public ::testing::WithParamInterface<DWORD> {};

TEST_P(FailingCode, IsRaisedByTheConnect) {
    const auto replacements = answerWith(GetParam());

    use();

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WNetUseConnectionW", GetParam())));
}

TEST_P(FailingCode, IsRaisedByTheCancelUnderTheSameTag) {
    const auto replacements = answerWith(GetParam());

    NATIVE(removeNetUsed)(shareName);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WNetUseConnectionW", GetParam())));
    EXPECT_THAT(order, ElementsAre(L"cancel \\\\server\\share"));
}

INSTANTIATE_TEST_SUITE_P(Codes, FailingCode,
                         ::testing::Values(ERROR_ACCESS_DENIED, ERROR_BAD_NETPATH, ERROR_BAD_NET_NAME,
                                           ERROR_LOGON_FAILURE, ERROR_SESSION_CREDENTIAL_CONFLICT,
                                           ERROR_NOT_CONNECTED, ERROR_OPEN_FILES));

TEST_F(NetUse, SaysSoWhenTheSystemHasNoTextForTheCode) {
    const auto replacements = answerWith(0x7000DEAD);

    use();

    EXPECT_EQ(java.takeException(),
              ioException(L"[WNetUseConnectionW] (1879105197) Failed to obtain error message"));
}

TEST_F(NetUse, FailsOnASystemWithoutANetwork) {
    use();
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WNetUseConnectionW", ERROR_NO_NETWORK)));

    NATIVE(removeNetUsed)(shareName);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WNetUseConnectionW", ERROR_NO_NETWORK)));
}

TEST_F(NetUse, WipesThePasswordInTheCopyOfTheJvm) {
    const auto replacements = answerWith(NO_ERROR);

    use();

    EXPECT_EQ(java.stringReleases().size(), 3u);
    for (const StringRelease& release : java.stringReleases()) {
        EXPECT_EQ(release.wiped, release.string.text() == L"secret") << toUtf8(release.string.text());
    }
}

TEST_F(NetUse, WipesThePasswordBeforeItsMemoryGoesBack) {
    const wchar_t* password = nullptr;
    const auto connect = REPLACE(WNetUseConnectionW, [&](HWND, LPNETRESOURCEW, LPCWSTR given, LPCWSTR, DWORD,
                                                         LPWSTR, LPDWORD, LPDWORD) {
        password = given;
        return DWORD{NO_ERROR};
    });
    std::wstring left;
    const auto release = REPLACE(free, [&](void* block) {
        if (block != nullptr && block == password) {
            left.assign(password, 6);
        }
        REAL(free)(block);
    });

    use();

    EXPECT_EQ(left, std::wstring(6, L'\0'));
}

class ExhaustedMemory : public NetUse, public ::testing::WithParamInterface<std::size_t> {};

TEST_P(ExhaustedMemory, IsNoConnection) {
    const auto replacements = answerWith(NO_ERROR);
    const auto allocate = system().failCall("malloc", GetParam(), ERROR_NOT_ENOUGH_MEMORY);

    use();

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"WNetUseConnectionW", ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_THAT(order, IsEmpty());
}

TEST_P(ExhaustedMemory, OfJavaIsNoConnectionEither) {
    const auto replacements = answerWith(NO_ERROR);
    java.failCall("GetStringChars", GetParam());

    use();

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"WNetUseConnectionW", ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_THAT(order, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(ForOneText, ExhaustedMemory, ::testing::Values(1, 2, 3));

TEST_F(NetUse, IsNotEndedWithoutMemoryForTheName) {
    const auto replacements = answerWith(NO_ERROR);
    const auto allocate = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);

    NATIVE(removeNetUsed)(shareName);

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"WNetUseConnectionW", ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_THAT(order, IsEmpty());
}

using ConnectionUser = WinUtilTest;

TEST_F(ConnectionUser, IsTheOneOfTheConnection) {
    std::wstring asked;
    DWORD capacity = 0;
    const auto get = REPLACE(WNetGetUserW, [&](LPCWSTR name, LPWSTR user, LPDWORD size) {
        asked = name;
        capacity = *size;
        std::wcscpy(user, L"DOM\\us\u00E9r");
        return DWORD{NO_ERROR};
    });

    EXPECT_EQ(NATIVE(getUserByNetUsedPath)(L"U:").text(), L"DOM\\us\u00E9r");

    EXPECT_EQ(asked, L"U:");
    EXPECT_EQ(capacity, 256u);
}

class FailingUser : public WinUtilTest, public ::testing::WithParamInterface<DWORD> {};

TEST_P(FailingUser, IsEmptyBehindItsException) {
    const auto get = REPLACE(WNetGetUserW, [&](LPCWSTR, LPWSTR user, LPDWORD) {
        std::wcscpy(user, L"nonsense");
        return GetParam();
    });

    EXPECT_EQ(NATIVE(getUserByNetUsedPath)(shareName).text(), L"");

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WNetGetUserW", GetParam())));
}

INSTANTIATE_TEST_SUITE_P(Codes, FailingUser,
                         ::testing::Values(ERROR_NOT_CONNECTED, ERROR_MORE_DATA, ERROR_NO_NETWORK,
                                           ERROR_BAD_DEVICE, 0x7000DEADu));

TEST_F(ConnectionUser, GivesTheJvmsErrorAlone) {
    const auto get = system().answer("WNetGetUserW", ERROR_NOT_CONNECTED);
    java.failCall("NewString");

    EXPECT_FALSE(NATIVE(getUserByNetUsedPath)(L"U:"));

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
}

TEST_F(ConnectionUser, FailsWithoutMemoryForTheName) {
    const auto allocate = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_EQ(NATIVE(getUserByNetUsedPath)(L"U:").text(), L"");

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WNetGetUserW", ERROR_NOT_ENOUGH_MEMORY)));
}

TEST_F(ConnectionUser, IsWhatTheSystemSays) {
    wchar_t user[256];
    DWORD size = 256;
    ASSERT_EQ(WNetGetUserW(L"C:", user, &size), DWORD{NO_ERROR});

    EXPECT_EQ(NATIVE(getUserByNetUsedPath)(L"C:").text(), user);
}

struct Connectivity {
    BOOL result;
    DWORD flags;
    bool connected;
};

class NetworkConnection : public WinUtilTest, public ::testing::WithParamInterface<Connectivity> {};

TEST_P(NetworkConnection, IsByModemNetworkOrProxy) {
    const auto state = REPLACE(InternetGetConnectedState, [&](LPDWORD flags, DWORD reserved) {
        EXPECT_EQ(reserved, 0u);
        *flags = GetParam().flags;
        return GetParam().result;
    });

    EXPECT_EQ(NATIVE(isNetworkConnected)(), GetParam().connected);
}

INSTANTIATE_TEST_SUITE_P(States, NetworkConnection,
                         ::testing::Values(Connectivity{TRUE, 1, true}, Connectivity{TRUE, 2, true},
                                           Connectivity{TRUE, 4, true}, Connectivity{TRUE, 7, true},
                                           Connectivity{TRUE, 0x12, true}, Connectivity{TRUE, 0, false},
                                           Connectivity{TRUE, 8, false}, Connectivity{TRUE, 0x70, false},
                                           Connectivity{FALSE, 7, false}));

using RealConnection = WinUtilTest;

TEST_F(RealConnection, IsWhatTheSystemSays) {
    DWORD flags = 0;
    const bool expected = InternetGetConnectedState(&flags, 0) && (flags & 7) != 0;

    EXPECT_EQ(NATIVE(isNetworkConnected)(), expected);
}

}  // namespace
