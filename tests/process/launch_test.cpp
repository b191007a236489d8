// Launches that succeed: each call, its arguments, and what the launch keeps.
#include "launch_fixture.h"
#include "switched_privileges.h"

namespace {

using namespace testbed;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

constexpr char processClass[] = "com/qarvo/kel/util/WinProcess";

class UserLaunch : public LaunchTest {
protected:
    // The handle of the child's primary thread is all that nobody gives back.
    UserLaunch() { ledger().expectLeft("CreateProcessAsUserW"); }
};

class SessionLaunch : public LaunchTest {};

TEST_F(UserLaunch, TakesItsStepsInOrder) {
    release(launchUser());

    EXPECT_THAT(
        events,
        ElementsAre("CreatePipe", "stdout write off", "CreatePipe", "stderr write off", "stdout read off",
                    "stderr read off", "LogonUserW", "GetUserProfileDirectoryW", "SeBackupPrivilege",
                    "SeRestorePrivilege", "LoadUserProfileW", "GetTokenInformation", "DuplicateTokenEx",
                    "CreateEnvironmentBlock", "ImpersonateLoggedOnUser", "stdout write on", "stderr write on",
                    "CreateProcessAsUserW", "stdout write off", "stderr write off", "RevertToSelf",
                    "WinPipe of stdout", "WinPipe of stderr"));
}

TEST_F(UserLaunch, LogsTheAccountOnAndLoadsItsProfile) {
    release(launchUser());

    EXPECT_THAT(logonArguments, ElementsAre(L"user", L"DOM", L"secret", L"2", L"0"));
    EXPECT_THAT(profileArguments, ElementsAre(L"user", L"C:\\users\\user"));
}

TEST_F(UserLaunch, SwitchesBothPrivilegesOnAndLeavesThemOn) {
    std::vector<std::string> switched;
    const auto watch = recordPrivileges(system(), switched);

    release(launchUser());

    EXPECT_THAT(switched, ElementsAre("SeBackupPrivilege on", "SeRestorePrivilege on"));
}

TEST_F(UserLaunch, StartsTheChildWithTheElevatedTokenAndTheWriteEnds) {
    release(launchUser());

    EXPECT_EQ(duplicatedFrom, linkedToken);
    EXPECT_EQ(impersonated, primaryToken);
    EXPECT_EQ(started.token, primaryToken);
    EXPECT_THAT(started.texts, ElementsAre(L"C:\\a.exe", L"a.exe /b", L"C:\\w"));
    EXPECT_EQ(started.inherits, TRUE);
    EXPECT_EQ(started.flags, 0x400u);
    EXPECT_EQ(started.environment, environment);
    STARTUPINFOW expected = {};
    expected.cb = 104;
    expected.dwFlags = 0x100;
    expected.hStdOutput = outputWrite;
    expected.hStdError = errorWrite;
    EXPECT_EQ(std::memcmp(&started.startup, &expected, sizeof(expected)), 0);
}

TEST_F(UserLaunch, HandsOutTheProcessWithStandardErrorFirst) {
    const JavaObject made = launchUser();

    EXPECT_EQ(made.className(), processClass);
    EXPECT_EQ(made.constructor(), "(JLcom/qarvo/kel/util/WinPipe;Lcom/qarvo/kel/util/WinPipe;JJ)V");
    ASSERT_EQ(made.arguments().size(), 5u);
    const JavaObject error = made.arguments()[1].object();
    const JavaObject output = made.arguments()[2].object();
    EXPECT_EQ(error.className(), pipeClass);
    EXPECT_EQ(output.className(), pipeClass);
    EXPECT_EQ(cellContent(made.arguments()[0]), process);
    EXPECT_EQ(cellContent(error.arguments()[0]), errorRead);
    EXPECT_EQ(cellContent(output.arguments()[0]), outputRead);
    EXPECT_EQ(cellContent(made.arguments()[3]), primaryToken);
    EXPECT_EQ(cellContent(made.arguments()[4]), profile);
    release(made);
}

TEST_F(UserLaunch, KeepsWhatJavaReceivesAndNothingElse) {
    const JavaObject made = launchUser();

    std::multiset<std::string> kept;
    for (const Holding& holding : ledger().left()) {
        kept.insert(holding.takenBy);
    }
    // The read ends; the process and its thread; the token; the cells.
    EXPECT_EQ(kept, (std::multiset<std::string>{"CreatePipe", "CreatePipe", "CreateProcessAsUserW",
                                                "CreateProcessAsUserW", "DuplicateTokenEx", "calloc",
                                                "calloc", "calloc", "calloc", "calloc"}));
    release(made);
    ASSERT_EQ(ledger().left().size(), 1u);
    EXPECT_EQ(ledger().left()[0].value, reinterpret_cast<std::uint64_t>(thread));
}

TEST_F(UserLaunch, RunsAnAccountWithoutLinkedTokenWithItsOwn) {
    linkedToken = nullptr;

    release(launchUser());

    EXPECT_EQ(duplicatedFrom, logonToken);
}

TEST_F(UserLaunch, ClosesATokenThatIsLinkedToItselfOnce) {
    linkedToken = logonToken;

    release(launchUser());

    EXPECT_EQ(duplicatedFrom, logonToken);
}

TEST_F(UserLaunch, PassesNullStringsOn) {
    release(NATIVE(createProcessAsUserN)(nullptr, L"b", nullptr, nullptr, nullptr, nullptr, nullptr));

    EXPECT_THAT(logonArguments, ElementsAre(L"<null>", L"<null>", L"<null>", L"2", L"0"));
    EXPECT_THAT(profileArguments, ElementsAre(L"<null>", L"C:\\users\\user"));
    EXPECT_THAT(started.texts, ElementsAre(L"<null>", L"b", L"<null>"));
}

TEST_F(UserLaunch, WipesThePasswordThatTheJvmLent) {
    const JavaObject made = launchUser();

    std::vector<std::wstring> wiped;
    for (const StringRelease& release : java.stringReleases()) {
        if (release.wiped) {
            wiped.push_back(release.string.text());
        }
    }
    EXPECT_THAT(wiped, ElementsAre(L"secret"));
    release(made);
}

TEST_F(UserLaunch, TakesStringsThatAreEmptyOrBeyondTheBasicPlane) {
    release(
        NATIVE(createProcessAsUserN)(L"", L"\U0001F600 \u00e4", java.string(L"unused"), L"", L"", L"", L""));

    EXPECT_THAT(logonArguments, ElementsAre(L"", L"", L"", L"2", L"0"));
    EXPECT_THAT(started.texts, ElementsAre(L"", L"\U0001F600 \u00e4", L""));
}

TEST_F(UserLaunch, GoesOnWithoutThePrivileges) {
    const auto lookup = system().answer("LookupPrivilegeValueA", FALSE, ERROR_NO_SUCH_PRIVILEGE);

    EXPECT_TRUE(launchUser());

    EXPECT_EQ(lookup.count(), 2u);
    ledger().expectLeft("CreateProcessAsUserW");
    ledger().expectLeft("DuplicateTokenEx");
    ledger().expectLeft("CreatePipe", 2);
    ledger().expectLeft("calloc", 5);
}

TEST_F(UserLaunch, ClosesTheWriteEndsSoThatTheStreamsEndWithTheChild) {
    const JavaObject made = launchUser();

    for (const Holding& holding : ledger().left()) {
        EXPECT_NE(holding.value, reinterpret_cast<std::uint64_t>(outputWrite));
        EXPECT_NE(holding.value, reinterpret_cast<std::uint64_t>(errorWrite));
    }
    release(made);
}

TEST_F(SessionLaunch, TakesItsStepsInOrderWithoutProfilePrivilegesOrImpersonation) {
    release(launchSession());

    EXPECT_THAT(
        events,
        ElementsAre("CreatePipe", "stdout write off", "CreatePipe", "stderr write off", "stdout read off",
                    "stderr read off", "WTSQueryUserToken", "GetTokenInformation", "DuplicateTokenEx",
                    "CreateEnvironmentBlock", "stdout write on", "stderr write on", "CreateProcessAsUserW",
                    "stdout write off", "stderr write off", "WinPipe of stdout", "WinPipe of stderr"));
}

TEST_F(SessionLaunch, StartsTheChildWithTheElevatedTokenOfTheSession) {
    release(launchSession());

    EXPECT_EQ(duplicatedFrom, linkedToken);
    EXPECT_EQ(started.token, primaryToken);
    EXPECT_THAT(started.texts, ElementsAre(L"C:\\a.exe", L"a.exe /b", L"C:\\w"));
    EXPECT_EQ(started.inherits, TRUE);
    EXPECT_EQ(started.flags, 0x400u);
    EXPECT_EQ(started.environment, environment);
    EXPECT_EQ(started.startup.dwFlags, 0x100u);
    EXPECT_EQ(started.startup.hStdOutput, outputWrite);
    EXPECT_EQ(started.startup.hStdError, errorWrite);
    EXPECT_EQ(started.startup.hStdInput, nullptr);
}

TEST_F(SessionLaunch, HandsOutAProcessWithoutTokenAndProfileAndKeepsNoMore) {
    const JavaObject made = launchSession();

    EXPECT_EQ(cellContent(made.arguments()[0]), process);
    EXPECT_EQ(cellContent(made.arguments()[1].object().arguments()[0]), errorRead);
    EXPECT_EQ(cellContent(made.arguments()[2].object().arguments()[0]), outputRead);
    EXPECT_EQ(made.arguments()[3].number(), 0);
    EXPECT_EQ(made.arguments()[4].number(), 0);
    // The process, its read ends and three cells; the thread is closed.
    EXPECT_EQ(ledger().left().size(), 6u);
    release(made);
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(SessionLaunch, RunsAUserWithoutLinkedTokenWithTheSessionsOwn) {
    linkedToken = nullptr;

    release(launchSession());

    EXPECT_EQ(duplicatedFrom, logonToken);
}

TEST_F(SessionLaunch, PassesNullStringsAndAnySessionOn) {
    ULONG session = 0;
    const auto query = REPLACE(WTSQueryUserToken, [&](ULONG asked, PHANDLE token) {
        session = asked;
        *token = logonToken;
        return TRUE;
    });

    release(NATIVE(createProcessAsUserSession)(L"a", nullptr, nullptr, nullptr, -1));

    EXPECT_EQ(session, 0xFFFFFFFFu);
    EXPECT_THAT(started.texts, ElementsAre(L"a", L"<null>", L"<null>"));
}

TEST_F(SessionLaunch, LooksForTheProcessClassWithoutHoldingThatOfThePipes) {
    release(launchSession());

    // Two pipes and their class; then two pipes, the class of the process and the result.
    EXPECT_EQ(java.peakReferences(), 4u);
}

}  // namespace
