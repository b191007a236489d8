// Launches of real children, this program itself: what they write, and what becomes of them.
#include <array>
#include <atomic>
#include <sstream>
#include <thread>

#include "child_program.h"
#include "launch_fixture.h"
#include "thread_token.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// An event of a name of its own, for children that wait.
class NamedEvent {
public:
    NamedEvent()
        : name_(L"winutil-child-" + std::to_wstring(GetCurrentProcessId())),
          event_(CreateEventW(nullptr, TRUE, FALSE, name_.c_str())) {}
    NamedEvent(const NamedEvent&) = delete;
    NamedEvent& operator=(const NamedEvent&) = delete;
    // A test that fails leaves no child behind.
    ~NamedEvent() { set(); }

    const std::wstring& name() const { return name_; }
    void set() const { SetEvent(event_.handle); }

private:
    std::wstring name_;
    TestHandle event_;
};

// A launched child, through the cells that Java would have.
struct Child {
    explicit Child(const JavaObject& made)
        : process(made.arguments()[0].number()),
          error(made.arguments()[1].object().arguments()[0].number()),
          output(made.arguments()[2].object().arguments()[0].number()),
          token(made.arguments()[3].number()),
          profile(made.arguments()[4].number()) {}

    jlong process;
    jlong error;
    jlong output;
    jlong token;
    jlong profile;
};

class RealLaunch : public ProcessTest {
protected:
    Child launch(const std::wstring& job, const wchar_t* application = nullptr,
                 const wchar_t* folder = nullptr) {
        const auto text = [this](const wchar_t* chars) {
            return chars == nullptr ? JavaObject() : java.string(chars);
        };
        const JavaObject made = NATIVE(createProcessAsUserSession)(text(application), childCommandLine(job),
                                                                   nullptr, text(folder), 1);
        if (!made) {
            throw std::runtime_error("not launched: " + toUtf8(java.takeException().message));
        }
        return Child(made);
    }

    // Reads a stream to its end, with the JVM of the calling thread.
    std::string readToEnd(FakeJava& jvm, jlong cell) {
        const auto read = NATIVE_ON(jvm, readHandle);
        const JavaObject array = jvm.byteArray(std::vector<jbyte>(8192));
        std::string all;
        for (;;) {
            const jint count = read(cell, array, 0, 8192);
            if (count <= 0) {
                EXPECT_EQ(count, -1);
                return all;
            }
            all.append(reinterpret_cast<const char*>(array.bytes().data()), static_cast<std::size_t>(count));
        }
    }

    std::string readToEnd(jlong cell) { return readToEnd(java, cell); }

    void close(const Child& child) {
        for (const jlong cell : {child.process, child.error, child.output}) {
            NATIVE(closeHandle)(cell);
        }
    }

private:
    // The ledger learns of linked tokens, too.
    Replacement linked_ = REPLACE(GetTokenInformation, [](HANDLE token, TOKEN_INFORMATION_CLASS kind,
                                                          LPVOID buffer, DWORD size, PDWORD needed) {
        const BOOL done = REAL(GetTokenInformation)(token, kind, buffer, size, needed);
        if (done && kind == TokenLinkedToken) {
            const HANDLE linked = static_cast<TOKEN_LINKED_TOKEN*>(buffer)->LinkedToken;
            ledger().take(Kind::handle, reinterpret_cast<std::uint64_t>(linked), "GetTokenInformation",
                          "the test");
        }
        return done;
    });
};

std::string flooded(std::size_t size, bool isError) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = floodByte(i, isError);
    }
    return bytes;
}

TEST_F(RealLaunch, ReadsMoreThanAPipeHoldsFromBothStreamsAndThenTheExitCode) {
    constexpr std::size_t size = 300'000;
    const Child child = launch(L"flood 300000 42");
    std::string error;
    std::thread reader([&] {
        FakeJava jvm;
        error = readToEnd(jvm, child.error);
    });

    const std::string output = readToEnd(child.output);
    reader.join();

    EXPECT_EQ(output, flooded(size, false));
    EXPECT_EQ(error, flooded(size, true));
    EXPECT_EQ(NATIVE(waitForSingleObject)(child.process), 0);
    EXPECT_EQ(NATIVE(exitValue)(child.process), 42);
    close(child);
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(RealLaunch, ReadsWhatAChildWritesWhileItRuns) {
    const NamedEvent event;
    const Child child = launch(L"speak " + event.name() + L" 3");
    const JavaObject array = java.byteArray(std::vector<jbyte>(16));

    EXPECT_EQ(NATIVE(readHandle)(child.output, array, 0, 16), 5);

    EXPECT_EQ(NATIVE(exitValue)(child.process), 259);
    event.set();
    EXPECT_THAT(readToEnd(child.output), IsEmpty());
    EXPECT_THAT(readToEnd(child.error), IsEmpty());
    EXPECT_EQ(NATIVE(waitForSingleObject)(child.process), 0);
    EXPECT_EQ(NATIVE(exitValue)(child.process), 3);
    close(child);
}

TEST_F(RealLaunch, ReachesTheEndOfStreamsThatARunningChildHasClosed) {
    const NamedEvent event;
    const Child child = launch(L"silent " + event.name() + L" 4");

    EXPECT_THAT(readToEnd(child.output), IsEmpty());
    EXPECT_THAT(readToEnd(child.error), IsEmpty());

    EXPECT_EQ(NATIVE(exitValue)(child.process), 259);
    event.set();
    NATIVE(waitForSingleObject)(child.process);
    EXPECT_EQ(NATIVE(exitValue)(child.process), 4);
    close(child);
}

TEST_F(RealLaunch, LetsAChildLiveOnWhenJavaHasClosedEverything) {
    const NamedEvent event;
    const Child child = launch(L"speak " + event.name() + L" 6");
    HANDLE kept = nullptr;
    DuplicateHandle(GetCurrentProcess(), *reinterpret_cast<HANDLE*>(child.process), GetCurrentProcess(),
                    &kept, 0, FALSE, DUPLICATE_SAME_ACCESS);
    const TestHandle closed(kept);
    const JavaObject array = java.byteArray(std::vector<jbyte>(16));
    NATIVE(readHandle)(child.output, array, 0, 16);

    close(child);

    EXPECT_EQ(WaitForSingleObject(kept, 0), DWORD{WAIT_TIMEOUT});
    event.set();
    EXPECT_EQ(WaitForSingleObject(kept, 20'000), DWORD{WAIT_OBJECT_0});
    DWORD code = 0;
    GetExitCodeProcess(kept, &code);
    EXPECT_EQ(code, 6u);
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(RealLaunch, EndsAChild) {
    const Child child = launch(L"wait");

    NATIVE(endProcess)(child.process);

    EXPECT_EQ(NATIVE(waitForSingleObject)(child.process), 0);
    EXPECT_EQ(NATIVE(exitValue)(child.process), 0);
    EXPECT_THAT(readToEnd(child.output), IsEmpty());
    close(child);
}

TEST_F(RealLaunch, GivesTheChildItsTwoWriteEndsAndNoOtherPipe) {
    std::vector<std::uintptr_t> readEnds;
    std::vector<std::uintptr_t> writeEnds;
    const auto pipes =
        REPLACE(CreatePipe, [&](PHANDLE read, PHANDLE write, LPSECURITY_ATTRIBUTES security, DWORD size) {
            const BOOL made = REAL(CreatePipe)(read, write, security, size);
            readEnds.push_back(reinterpret_cast<std::uintptr_t>(*read));
            writeEnds.push_back(reinterpret_cast<std::uintptr_t>(*write));
            return made;
        });

    const Child child = launch(L"handles");

    std::istringstream lines(readToEnd(child.output));
    std::vector<std::uintptr_t> inherited;
    for (std::uintptr_t value = 0; lines >> value;) {
        inherited.push_back(value);
    }
    for (const std::uintptr_t writeEnd : writeEnds) {
        EXPECT_THAT(inherited, ::testing::Contains(writeEnd));
    }
    for (const std::uintptr_t readEnd : readEnds) {
        EXPECT_THAT(inherited, ::testing::Not(::testing::Contains(readEnd)));
    }
    close(child);
}

TEST_F(RealLaunch, StartsTheProgramInTheFolderWithTheUsersEnvironment) {
    const Child child = launch(L"tell", childProgram().c_str(), L"C:\\windows\\system32");

    const std::string told = readToEnd(child.output);

    char profile[MAX_PATH] = {};
    GetEnvironmentVariableA("USERPROFILE", profile, sizeof(profile));
    const std::size_t lineEnd = told.find('\n');
    EXPECT_EQ(told.substr(0, lineEnd), profile);
    EXPECT_EQ(_stricmp(told.substr(lineEnd + 1).c_str(), "C:\\windows\\system32\n"), 0) << told;
    close(child);
}

TEST_F(RealLaunch, TellsThatThereIsNoSuchProgram) {
    ledger().expectLeft("calloc", 3);

    EXPECT_FALSE(NATIVE(createProcessAsUserSession)(nullptr, L"no-such-program.exe -x", nullptr, nullptr, 1));

    EXPECT_EQ(
        java.takeException(),
        ioException(stepMessage(sessionTag + L" Failed to CreateProcessAsUserW for wcAppName='(null)' "
                                             L"wcArguments='no-such-program.exe -x' wcWorkingDir='(null)'.",
                                ERROR_FILE_NOT_FOUND)));
}

TEST_F(RealLaunch, RunsTheChildOfAnAccountAndReleasesItsToken) {
    ledger().expectLeft("CreateProcessAsUserW");
    const auto logon = REPLACE(LogonUserW, [](LPCWSTR, LPCWSTR, LPCWSTR, DWORD, DWORD, PHANDLE token) {
        *token = impersonationToken();
        return TRUE;
    });

    const JavaObject made = NATIVE(createProcessAsUserN)(nullptr, childCommandLine(L"flood 100000 9"),
                                                         nullptr, nullptr, L".", L"somebody", L"secret");

    ASSERT_TRUE(made) << toUtf8(java.takeException().message);
    const Child child(made);
    EXPECT_FALSE(isImpersonating());
    std::string error;
    std::thread reader([&] {
        FakeJava jvm;
        error = readToEnd(jvm, child.error);
    });
    EXPECT_EQ(readToEnd(child.output), flooded(100'000, false));
    reader.join();
    EXPECT_EQ(error, flooded(100'000, true));
    EXPECT_EQ(NATIVE(waitForSingleObject)(child.process), 0);
    EXPECT_EQ(NATIVE(exitValue)(child.process), 9);
    close(child);
    NATIVE(unloadUserProfile)(child.token, child.profile);
    ASSERT_EQ(ledger().left().size(), 1u);
    CloseHandle(reinterpret_cast<HANDLE>(ledger().left()[0].value));
}

}  // namespace
