// Launches that fail: what is told, what is given back, and what is let go.
#include "launch_fixture.h"

namespace {

using namespace testbed;

constexpr char processClass[] = "com/qarvo/kel/util/WinProcess";
constexpr char processSignature[] = "(JLcom/qarvo/kel/util/WinPipe;Lcom/qarvo/kel/util/WinPipe;JJ)V";

// A step of a launch that fails, its message behind the tag, and what is still held at the end.
struct FailedStep {
    const char* function;
    std::size_t call;
    const wchar_t* message;
    std::vector<std::string> held;
};
void PrintTo(const FailedStep& step, std::ostream* stream) {
    *stream << step.function << " " << step.call;
}

constexpr DWORD anyCode = ERROR_NOT_SUPPORTED;

class UserLaunchFailure : public LaunchTest, public ::testing::WithParamInterface<FailedStep> {};
class SessionLaunchFailure : public LaunchTest, public ::testing::WithParamInterface<FailedStep> {};

TEST_P(UserLaunchFailure, TellsTheStepAndGivesBackAllButWhatIsLetGo) {
    const auto failing = system().failCall(GetParam().function, GetParam().call, anyCode);
    ledger().expectLeft("calloc", 5);
    for (const std::string& function : GetParam().held) {
        ledger().expectLeft(function);
    }

    EXPECT_FALSE(launchUser());

    EXPECT_EQ(java.takeException(), ioException(stepMessage(userTag + GetParam().message, anyCode)));
    EXPECT_EQ(system().count("UnloadUserProfile"), 0u);
}

#define FOR_ACCOUNT " for wcDomain='DOM' username='user'."
#define FOR_PROGRAM " for wcAppName='C:\\a.exe' wcArguments='a.exe /b' wcWorkingDir='C:\\w'."

// A token once made stays, and so does the profile.
INSTANTIATE_TEST_SUITE_P(
    Steps, UserLaunchFailure,
    ::testing::Values(
        FailedStep{"CreatePipe", 1, L" Failed to CreatePipe for stdout", {}},
        FailedStep{"CreatePipe", 2, L" Failed to CreatePipe for stderr", {}},
        FailedStep{"SetHandleInformation", 3, L" Failed to SetHandleInformation for hStdOutReadPipe", {}},
        FailedStep{"SetHandleInformation", 4, L" Failed to SetHandleInformation for hStdErrReadPipe", {}},
        FailedStep{"LogonUserW", 1, L" Failed to LogonUserW" FOR_ACCOUNT, {}},
        FailedStep{"GetUserProfileDirectoryW", 1, L" Failed to GetUserProfileDirectory" FOR_ACCOUNT, {}},
        FailedStep{"LoadUserProfileW", 1, L" Failed to LoadUserProfileW", {}},
        FailedStep{"DuplicateTokenEx", 1, L" Failed to DuplicateTokenEx" FOR_ACCOUNT, {}},
        FailedStep{"CreateEnvironmentBlock",
                   1,
                   L" Failed to CreateEnvironmentBlock" FOR_ACCOUNT,
                   {"DuplicateTokenEx"}},
        FailedStep{"ImpersonateLoggedOnUser",
                   1,
                   L" Failed to ImpersonateLoggedOnUser" FOR_ACCOUNT,
                   {"DuplicateTokenEx"}},
        FailedStep{"CreateProcessAsUserW",
                   1,
                   L" Failed to CreateProcessAsUserW" FOR_PROGRAM,
                   {"DuplicateTokenEx"}}));

TEST_P(SessionLaunchFailure, TellsTheStepAndGivesEveryHandleBack) {
    const auto failing = system().failCall(GetParam().function, GetParam().call, anyCode);
    ledger().expectLeft("calloc", 3);

    EXPECT_FALSE(launchSession());

    EXPECT_EQ(java.takeException(), ioException(stepMessage(sessionTag + GetParam().message, anyCode)));
}

INSTANTIATE_TEST_SUITE_P(
    Steps, SessionLaunchFailure,
    ::testing::Values(
        FailedStep{"CreatePipe", 1, L" Failed to CreatePipe for stdout", {}},
        FailedStep{"CreatePipe", 2, L" Failed to CreatePipe for stderr", {}},
        FailedStep{"SetHandleInformation", 3, L" Failed to SetHandleInformation for hStdOutReadPipe", {}},
        FailedStep{"SetHandleInformation", 4, L" Failed to SetHandleInformation for hStdErrReadPipe", {}},
        FailedStep{"WTSQueryUserToken", 1, L" Failed to get session token", {}},
        FailedStep{"DuplicateTokenEx", 1, L" Failed to DuplicateTokenEx.", {}},
        FailedStep{"CreateEnvironmentBlock", 1, L" Failed to CreateEnvironmentBlock.", {}},
        FailedStep{"CreateProcessAsUserW", 1, L" Failed to CreateProcessAsUserW" FOR_PROGRAM, {}}));

class LaunchFailure : public LaunchTest {
protected:
    // The child runs on: with a process handle that nobody has, and for an account with its thread and token.
    void expectRunningUserChild() {
        ledger().expectLeft("calloc", 5);
        ledger().expectLeft("DuplicateTokenEx");
        ledger().expectLeft("CreateProcessAsUserW", 2);
    }
    void expectRunningSessionChild() {
        ledger().expectLeft("calloc", 3);
        ledger().expectLeft("CreateProcessAsUserW");
    }

    // Both launches raise an IOException with this message behind their tags.
    void expectBothFail(const std::wstring& message) {
        expectRunningUserChild();
        EXPECT_FALSE(launchUser());
        EXPECT_EQ(java.takeException(), ioException(userTag + message));
        forgetPipes();
        expectRunningSessionChild();
        EXPECT_FALSE(launchSession());
        EXPECT_EQ(java.takeException(), ioException(sessionTag + message));
    }

    void forgetPipes() {
        outputRead = outputWrite = errorRead = errorWrite = nullptr;
        logonToken = Ledger::fakeHandle();
        linkedToken = Ledger::fakeHandle();
        primaryToken = Ledger::fakeHandle();
        environment = Ledger::fakeHandle();
        process = Ledger::fakeHandle();
        thread = Ledger::fakeHandle();
    }
};

TEST_F(LaunchFailure, RevertsOnlyWhatItImpersonated) {
    ledger().expectLeft("calloc", 5);
    ledger().expectLeft("DuplicateTokenEx");
    const auto impersonate = system().answer("ImpersonateLoggedOnUser", FALSE, ERROR_ACCESS_DENIED);

    launchUser();

    EXPECT_EQ(system().count("RevertToSelf"), 0u);
    EXPECT_EQ(system().count("CreateProcessAsUserW"), 0u);
    java.takeException();
}

TEST_F(LaunchFailure, RevertsAfterAStartThatFailed) {
    ledger().expectLeft("calloc", 5);
    ledger().expectLeft("DuplicateTokenEx");
    const auto start = system().answer("CreateProcessAsUserW", FALSE, ERROR_FILE_NOT_FOUND);

    launchUser();

    EXPECT_EQ(events.back(), "RevertToSelf");
    // Not the code that the way back left behind.
    EXPECT_NE(java.takeException().message.find(L" (2) "), std::wstring::npos);
}

TEST_F(LaunchFailure, GivesNoTokenBackThatIsLinkedToItselfTwice) {
    linkedToken = logonToken;
    ledger().expectLeft("calloc", 5);
    const auto duplicate = system().answer("DuplicateTokenEx", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(launchUser());

    java.takeException();
}

TEST_F(LaunchFailure, ShowsNullStrings) {
    ledger().expectLeft("calloc", 10);
    ledger().expectLeft("DuplicateTokenEx");
    {
        const auto start = system().answer("CreateProcessAsUserW", FALSE, anyCode);
        EXPECT_FALSE(NATIVE(createProcessAsUserN)(L"a", nullptr, nullptr, nullptr, L"d", L"u", L"p"));
    }
    const std::wstring start =
        L" Failed to CreateProcessAsUserW for wcAppName='a' wcArguments='(null)' wcWorkingDir='(null)'.";
    EXPECT_EQ(java.takeException(), ioException(stepMessage(userTag + start, anyCode)));
    forgetPipes();
    const auto logon = system().answer("LogonUserW", FALSE, ERROR_LOGON_FAILURE);

    EXPECT_FALSE(NATIVE(createProcessAsUserN)(L"a", L"b", nullptr, L"c", nullptr, nullptr, nullptr));

    const std::wstring step = L" Failed to LogonUserW for wcDomain='(null)' username='(null)'.";
    EXPECT_EQ(java.takeException(), ioException(stepMessage(userTag + step, ERROR_LOGON_FAILURE)));
}

// Neither a program nor a command line: the system would not survive the call.
const std::wstring nothingToStart =
    L" Failed to CreateProcessAsUserW for wcAppName='(null)' wcArguments='(null)' wcWorkingDir='C:\\w'.";

TEST_F(LaunchFailure, StartsNothingForAnAccountWhereThereIsNothingToStart) {
    ledger().expectLeft("calloc", 5);
    ledger().expectLeft("DuplicateTokenEx");

    EXPECT_FALSE(NATIVE(createProcessAsUserN)(nullptr, nullptr, nullptr, L"C:\\w", L"d", L"u", L"p"));

    EXPECT_EQ(java.takeException(), ioException(stepMessage(userTag + nothingToStart, 87)));
    EXPECT_EQ(system().count("CreateProcessAsUserW"), 0u);
    EXPECT_EQ(events.at(events.size() - 2), "ImpersonateLoggedOnUser");
    EXPECT_EQ(events.back(), "RevertToSelf");
}

TEST_F(LaunchFailure, StartsNothingInASessionWhereThereIsNothingToStart) {
    ledger().expectLeft("calloc", 3);

    EXPECT_FALSE(NATIVE(createProcessAsUserSession)(nullptr, nullptr, nullptr, L"C:\\w", 5));

    EXPECT_EQ(java.takeException(), ioException(stepMessage(sessionTag + nothingToStart, 87)));
    EXPECT_EQ(system().count("CreateProcessAsUserW"), 0u);
    EXPECT_EQ(events.back(), "CreateEnvironmentBlock");
}

TEST_F(LaunchFailure, CutsALongMessageAndStillTellsTheCode) {
    ledger().expectLeft("calloc", 3);
    const auto start = system().answer("CreateProcessAsUserW", FALSE, anyCode);
    const std::wstring commandLine(3000, L'c');

    NATIVE(createProcessAsUserSession)(L"a", commandLine, nullptr, L"b", 5);

    const std::wstring message = java.takeException().message;
    const std::wstring beginning =
        sessionTag + L" Failed to CreateProcessAsUserW for wcAppName='a' wcArguments='ccc";
    EXPECT_EQ(message.substr(0, beginning.size()), beginning);
    EXPECT_TRUE(message.ends_with(L"  (50) " + systemText(anyCode)));
    // wsprintfW itself ends a message there, with its last character or without it.
    const std::size_t length = message.size() - stepMessage(L"", anyCode).size();
    EXPECT_TRUE(length == 1023 || length == 1024) << length;
}

TEST_F(LaunchFailure, TellsThatAClassIsMissingWhileTheChildRunsOn) {
    java.removeClass(processClass);
    expectBothFail(L" Failed to FindClass for com/qarvo/kel/util/WinProcess");
}

TEST_F(LaunchFailure, TellsThatThePipeClassIsMissing) {
    java.removeClass(pipeClass);
    expectBothFail(L" Failed to FindClass for com/qarvo/kel/util/WinPipe");
}

TEST_F(LaunchFailure, TellsThatAConstructorIsMissing) {
    java.removeMethod(processClass, "<init>", processSignature);
    expectBothFail(L" Failed to constructor for com/qarvo/kel/util/WinProcess");
}

TEST_F(LaunchFailure, TellsThatThePipesConstructorIsMissing) {
    java.removeMethod(pipeClass, "<init>", "(J)V");
    expectBothFail(L" Failed to constructor for com/qarvo/kel/util/WinPipe");
}

TEST_F(LaunchFailure, LeavesTheJvmsErrorWhenAnObjectCannotBeMade) {
    for (std::size_t k = 1; k <= 3; ++k) {
        forgetPipes();
        expectRunningUserChild();
        java.failCall("NewObject", k);

        EXPECT_FALSE(launchUser());

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << k;
    }
}

TEST_F(LaunchFailure, TellsThatThereIsNoMemoryForAString) {
    for (std::size_t k = 1; k <= 6; ++k) {
        forgetPipes();
        ledger().expectLeft("calloc", 5);
        java.failCall("GetStringChars", k);

        EXPECT_FALSE(launchUser());

        EXPECT_EQ(java.takeException(), ioException(stepMessage(userTag, ERROR_NOT_ENOUGH_MEMORY))) << k;
    }
    EXPECT_EQ(system().count("LogonUserW"), 0u);
    for (std::size_t k = 1; k <= 3; ++k) {
        forgetPipes();
        ledger().expectLeft("calloc", 3);
        java.failCall("GetStringChars", k);

        EXPECT_FALSE(launchSession());

        EXPECT_EQ(java.takeException(), ioException(stepMessage(sessionTag, ERROR_NOT_ENOUGH_MEMORY))) << k;
    }
    EXPECT_EQ(system().count("WTSQueryUserToken"), 0u);
}

TEST_F(LaunchFailure, TellsThatThereIsNoMemoryForItsCells) {
    for (std::size_t k = 1; k <= 5; ++k) {
        const auto allocation = system().failCall("calloc", k, ERROR_NOT_ENOUGH_MEMORY);
        if (k > 1) {
            ledger().expectLeft("calloc", k - 1);
        }

        EXPECT_FALSE(launchUser());

        EXPECT_EQ(java.takeException(), ioException(stepMessage(userTag, ERROR_NOT_ENOUGH_MEMORY))) << k;
    }
    const auto allocation = system().failCall("calloc", 3, ERROR_NOT_ENOUGH_MEMORY);
    ledger().expectLeft("calloc", 2);
    EXPECT_FALSE(launchSession());
    EXPECT_EQ(java.takeException(), ioException(stepMessage(sessionTag, ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(system().count("CreatePipe"), 0u);
}

}  // namespace
