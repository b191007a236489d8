// Who can inherit the child's ends of its streams, and when.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

#include "launch_fixture.h"
#include "thread_token.h"

namespace {

using namespace testbed;
using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

enum class Method { user, session };
void PrintTo(Method method, std::ostream* stream) {
    *stream << (method == Method::user ? "user" : "session");
}

// A launch whose pipes are real ones.
class LaunchInheritance : public LaunchTest, public ::testing::WithParamInterface<Method> {
protected:
    LaunchInheritance() {
        java.removeMethod(pipeClass, "<init>", "(J)V");
        java.defineMethod(pipeClass, "<init>", "(J)V", [this](const Arguments&) { look("WinPipe"); });
    }

    JavaObject launch() { return GetParam() == Method::user ? launchUser() : launchSession(); }

    void expectFailedLaunch() {
        ledger().expectLeft("calloc", GetParam() == Method::user ? 5 : 3);
        if (GetParam() == Method::user) {
            ledger().expectLeft("DuplicateTokenEx");
        }
    }

    // A user's launch keeps the handle of the child's primary thread.
    void expectLeftThread() {
        if (GetParam() == Method::user) {
            ledger().expectLeft("CreateProcessAsUserW");
        }
    }

    // Looks which ends can be inherited.
    void look(const std::string& step) {
        std::string ends;
        for (const HANDLE end : {outputRead, outputWrite, errorRead, errorWrite}) {
            DWORD flags = 0;
            EXPECT_TRUE(GetHandleInformation(end, &flags));
            ends += (flags & HANDLE_FLAG_INHERIT) != 0 ? 'i' : '-';
        }
        seen.push_back(step + " " + ends);
    }

    // A step, and the read and write end of the output, then those of the errors: "i" for one that could be
    // inherited.
    std::vector<std::string> seen;

private:
    Replacement pipes_ = REPLACE(
        CreatePipe, [this](PHANDLE readEnd, PHANDLE writeEnd, LPSECURITY_ATTRIBUTES security, DWORD size) {
            const BOOL made = REAL(CreatePipe)(readEnd, writeEnd, security, size);
            (outputRead == nullptr ? outputRead : errorRead) = *readEnd;
            (outputWrite == nullptr ? outputWrite : errorWrite) = *writeEnd;
            return made;
        });
    Replacement switches_ = REPLACE(SetHandleInformation, [](HANDLE handle, DWORD mask, DWORD flags) {
        return REAL(SetHandleInformation)(handle, mask, flags);
    });
    Replacement logon_ = REPLACE(LogonUserW, [this](LPCWSTR, LPCWSTR, LPCWSTR, DWORD, DWORD, PHANDLE token) {
        look("LogonUserW");
        *token = logonToken;
        return TRUE;
    });
    Replacement query_ = REPLACE(WTSQueryUserToken, [this](ULONG, PHANDLE token) {
        look("WTSQueryUserToken");
        *token = logonToken;
        return TRUE;
    });
    Replacement environment_ = REPLACE(CreateEnvironmentBlock, [this](LPVOID* block, HANDLE, BOOL) {
        look("CreateEnvironmentBlock");
        *block = environment;
        return TRUE;
    });
};

INSTANTIATE_TEST_SUITE_P(Methods, LaunchInheritance, ::testing::Values(Method::user, Method::session),
                         ::testing::PrintToStringParamName());

TEST_P(LaunchInheritance, LetsTheWriteEndsBeInheritedWhileTheChildStartsAndAtNoOtherTime) {
    const auto start = REPLACE(
        CreateProcessAsUserW, [&](HANDLE, LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL,
                                  DWORD, LPVOID, LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION child) {
            look("CreateProcessAsUserW");
            *child = {process, thread, 77, 78};
            return TRUE;
        });

    const JavaObject made = launch();

    const std::string logon = GetParam() == Method::user ? "LogonUserW ----" : "WTSQueryUserToken ----";
    EXPECT_THAT(seen, ElementsAre(logon, "CreateEnvironmentBlock ----", "CreateProcessAsUserW -i-i",
                                  "WinPipe ----", "WinPipe ----"));
    release(made);
    expectLeftThread();
}

TEST_P(LaunchInheritance, EndsAlsoWhenTheStartFailsAndLeavesTheReasonAsItWas) {
    expectFailedLaunch();
    const auto start = system().answer("CreateProcessAsUserW", FALSE, ERROR_BAD_EXE_FORMAT);
    const auto format = REPLACE(FormatMessageW, [&](auto... arguments) {
        look("FormatMessageW");
        return REAL(FormatMessageW)(arguments...);
    });
    const auto switches = REPLACE(SetHandleInformation, [](HANDLE handle, DWORD mask, DWORD flags) {
        const BOOL done = REAL(SetHandleInformation)(handle, mask, flags);
        SetLastError(ERROR_GEN_FAILURE);
        return done;
    });

    EXPECT_FALSE(launch());

    EXPECT_EQ(seen.back(), "FormatMessageW ----");
    EXPECT_THAT(toUtf8(java.takeException().message), HasSubstr("  (193) "));
}

// Of all eight switches the third and the fourth are for the read ends, and the fifth and the sixth give the
// write ends to the child.
TEST_P(LaunchInheritance, GoesOnWhereAWriteEndStaysInheritable) {
    static constexpr std::size_t switches[] = {1, 2, 7, 8};
    for (const std::size_t k : switches) {
        outputRead = outputWrite = errorRead = errorWrite = nullptr;
        const auto failing = system().failCall("SetHandleInformation", k, ERROR_ACCESS_DENIED);

        const JavaObject made = launch();

        ASSERT_TRUE(made) << k << ": " << toUtf8(java.takeException().message);
        EXPECT_EQ(failing.count(), 8u) << k;
        release(made);
        expectLeftThread();
    }
}

TEST_P(LaunchInheritance, StartsNoChildThatWouldMissAStream) {
    for (const auto& [k, end] : {std::pair(5u, "hStdOutWritePipe"), std::pair(6u, "hStdErrWritePipe")}) {
        outputRead = outputWrite = errorRead = errorWrite = nullptr;
        expectFailedLaunch();
        const auto failing = system().failCall("SetHandleInformation", k, ERROR_ACCESS_DENIED);
        const auto start = system().watch("CreateProcessAsUserW");

        EXPECT_FALSE(launch()) << k;

        EXPECT_EQ(start.count(), 0u) << k;
        EXPECT_THAT(
            toUtf8(java.takeException().message),
            AllOf(HasSubstr(std::string("Failed to SetHandleInformation for ") + end), HasSubstr("  (5) ")));
    }
}

// Waits for what another thread does; false when that takes too long.
template <class Condition>
bool comesTrue(Condition condition) {
    for (int i = 0; i < 2000 && !condition(); ++i) {
        std::this_thread::sleep_for(5ms);
    }
    return condition();
}

// Time for a thread to do what it must not.
void tempt() {
    std::this_thread::sleep_for(300ms);
}

// Two launches at once, for an account on the test's thread and in a session on another one.
class TwoLaunches : public ProcessTest {
protected:
    TwoLaunches() { ledger().expectLeft("CreateProcessAsUserW"); }

    // The one in the session waits for the condition before it begins.
    template <class Condition>
    void launchBoth(Condition condition) {
        std::thread other([&] {
            EXPECT_TRUE(comesTrue(condition));
            FakeJava jvm;
            release(jvm, NATIVE_ON(jvm, createProcessAsUserSession)(nullptr, L"a", nullptr, nullptr, 1));
        });
        release(java, NATIVE(createProcessAsUserN)(nullptr, L"a", nullptr, nullptr, L".", L"u", L"p"));
        other.join();
    }
    void launchBoth() {
        launchBoth([] { return true; });
    }

    static bool isForAccount() { return GetCurrentThreadId() == testThread; }

    // What happens on a launch's thread when it has made a pipe, has the token of its user, has all that a
    // child needs, and starts the child.
    std::function<void()> atPipe = [] {};
    std::function<void()> atToken = [] {};
    std::function<void()> whenReady = [] {};
    std::function<void()> atStart = [] {};

    std::atomic<int> starting = 0;
    std::atomic<int> started = 0;
    // Ends that a child could have inherited, other than its own two.
    std::atomic<int> foreignEnds = 0;

private:
    void release(FakeJava& jvm, const JavaObject& made) {
        ASSERT_TRUE(made) << toUtf8(jvm.takeException().message);
        const Arguments& arguments = made.arguments();
        NATIVE_ON(jvm, closeHandle)(arguments[0].number());
        NATIVE_ON(jvm, closeHandle)(arguments[1].object().arguments()[0].number());
        NATIVE_ON(jvm, closeHandle)(arguments[2].object().arguments()[0].number());
        NATIVE_ON(jvm, unloadUserProfile)(arguments[3].number(), arguments[4].number());
    }

    void countForeignEnds(const STARTUPINFOW& startup) {
        const std::lock_guard lock(mutex_);
        for (const auto& [end, isInheritable] : ends_) {
            if (isInheritable && end != startup.hStdOutput && end != startup.hStdError) {
                ++foreignEnds;
            }
        }
    }

    static inline const DWORD testThread = GetCurrentThreadId();
    std::mutex mutex_;
    std::map<HANDLE, bool> ends_;

    Replacement pipes_ =
        REPLACE(CreatePipe, [this](PHANDLE readEnd, PHANDLE writeEnd, LPSECURITY_ATTRIBUTES, DWORD) {
            {
                const std::lock_guard lock(mutex_);
                ends_[*readEnd = Ledger::fakeHandle()] = true;
                ends_[*writeEnd = Ledger::fakeHandle()] = true;
            }
            atPipe();
            return TRUE;
        });
    Replacement switches_ = REPLACE(SetHandleInformation, [this](HANDLE end, DWORD, DWORD flags) {
        const std::lock_guard lock(mutex_);
        ends_.at(end) = flags != 0;
        return TRUE;
    });
    Replacement logon_ = REPLACE(LogonUserW, [](LPCWSTR, LPCWSTR, LPCWSTR, DWORD, DWORD, PHANDLE token) {
        *token = impersonationToken();
        return TRUE;
    });
    Replacement profile_ = system().answer("UnloadUserProfile", TRUE);
    Replacement linked_ =
        REPLACE(GetTokenInformation, [this](HANDLE, TOKEN_INFORMATION_CLASS, LPVOID, DWORD, PDWORD) {
            atToken();
            return FALSE;
        });
    Replacement environment_ = REPLACE(CreateEnvironmentBlock, [this](LPVOID* block, HANDLE, BOOL) {
        *block = Ledger::fakeHandle();
        whenReady();
        return TRUE;
    });
    Replacement start_ =
        REPLACE(CreateProcessAsUserW,
                [this](HANDLE, LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD,
                       LPVOID, LPCWSTR, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION child) {
                    ++starting;
                    countForeignEnds(*startup);
                    atStart();
                    countForeignEnds(*startup);
                    *child = {Ledger::fakeHandle(), Ledger::fakeHandle(), 1, 2};
                    ++started;
                    --starting;
                    return TRUE;
                });
};

TEST_F(TwoLaunches, StartTheirChildrenOneAfterTheOtherAndDoAllElseSideBySide) {
    std::atomic<int> logons = 0;
    std::atomic<int> ready = 0;
    std::atomic<int> mostStarting = 0;
    atToken = [&] {
        ++logons;
        EXPECT_TRUE(comesTrue([&] { return logons == 2; }));
    };
    whenReady = [&] { ++ready; };
    atStart = [&] {
        EXPECT_TRUE(comesTrue([&] { return ready == 2; }));
        tempt();
        mostStarting = std::max<int>(mostStarting, starting);
    };

    launchBoth();

    EXPECT_EQ(started, 2);
    EXPECT_EQ(mostStarting, 1);
    EXPECT_EQ(foreignEnds, 0);
}

// A pipe can be inherited at first.
TEST_F(TwoLaunches, MakeNoPipeWhileAChildStarts) {
    std::atomic<int> pipesAtStart = 0;
    atPipe = [&] { pipesAtStart += starting; };
    atStart = [] { tempt(); };

    launchBoth([&] { return starting == 1; });

    EXPECT_EQ(started, 2);
    EXPECT_EQ(pipesAtStart, 0);
    EXPECT_EQ(foreignEnds, 0);
}

TEST_F(TwoLaunches, StartNoChildWhileAPipeIsMade) {
    std::atomic<bool> pipeMade = false;
    std::atomic<bool> sessionReady = false;
    atPipe = [&] {
        if (isForAccount() && !pipeMade.exchange(true)) {
            EXPECT_TRUE(comesTrue([&] { return sessionReady.load(); }));
            tempt();
        }
    };
    whenReady = [&] { sessionReady = sessionReady || !isForAccount(); };

    launchBoth([&] { return pipeMade.load(); });

    EXPECT_EQ(started, 2);
    EXPECT_EQ(foreignEnds, 0);
}

}  // namespace
