#include "watchdog.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "guard_pages.h"
#include "stack_traces.h"
#include "text.h"

namespace testbed {

namespace {

using Clock = std::chrono::steady_clock;

constexpr DWORD pollMilliseconds = 250;

// Ticks of the clock at which the running test is late; 0 while none runs.
std::atomic<Clock::rep> deadline = 0;

constexpr std::size_t caseRoom = 512;
char caseName[caseRoom] = "";

std::string quoted(const std::string& text) {
    std::string attribute;
    for (const char c : text) {
        attribute += c == '<'    ? "&lt;"
                     : c == '&'  ? "&amp;"
                     : c == '"'  ? "&quot;"
                     : c == '\n' ? "&#10;"
                                 : std::string(1, c);
    }
    return '"' + attribute + '"';
}

std::string runningTest() {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    if (test == nullptr) {
        return caseName[0] == '\0' ? "no test" : caseName;
    }
    const std::string name = std::string(test->test_suite_name()) + "." + test->name();
    return caseName[0] == '\0' ? name : name + " (" + caseName + ")";
}

std::string resultOf(const ::testing::TestInfo& test, const std::string& reason) {
    const bool finished = test.result()->start_timestamp() != 0 &&
                          &test != ::testing::UnitTest::GetInstance()->current_test_info();
    if (finished && test.result()->Skipped()) {
        return "<skipped/>";
    }
    if (finished && test.result()->Passed()) {
        return "";
    }
    return "<failure message=" + quoted(finished ? "failed" : reason) + "/>";
}

// The framework writes its results at the end only; without this, a crash would make every test vanish.
void writeResults(const std::string& reason) {
    const std::string option = GTEST_FLAG_GET(output);
    const std::string kind = "xml:";
    if (!option.starts_with(kind)) {
        return;
    }
    std::ofstream file(option.substr(kind.size()));
    file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n";
    const auto& all = *::testing::UnitTest::GetInstance();
    for (int i = 0; i < all.total_test_suite_count(); ++i) {
        const auto& suite = *all.GetTestSuite(i);
        file << "<testsuite name=" << quoted(suite.name()) << ">\n";
        for (int k = 0; k < suite.total_test_count(); ++k) {
            const auto& test = *suite.GetTestInfo(k);
            if (test.should_run()) {
                file << "<testcase classname=" << quoted(suite.name()) << " name=" << quoted(test.name())
                     << ">" << resultOf(test, reason) << "</testcase>\n";
            }
        }
        file << "</testsuite>\n";
    }
    file << "</testsuites>\n";
}

[[noreturn]] void endProgram(const std::string& reason, const std::string& stacks, int exitCode) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s\n%s", reason.c_str(), stacks.c_str());
    std::fflush(stderr);
    writeResults(reason);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
    std::abort();
}

std::string describe(const EXCEPTION_RECORD& record) {
    std::string text = "exception " + hex(record.ExceptionCode) + " at " + placeName(record.ExceptionAddress);
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2) {
        const auto* address = reinterpret_cast<const void*>(record.ExceptionInformation[1]);
        text += record.ExceptionInformation[0] == 0 ? ", reading " : ", writing ";
        text += hex(record.ExceptionInformation[1]);
        const std::string buffer = guardedBufferBefore(address);
        if (!buffer.empty()) {
            text += ", behind the end of " + buffer;
        }
    }
    return text;
}

LONG WINAPI onCrash(EXCEPTION_POINTERS* exception) {
    endProgram(runningTest() + " crashed: " + describe(*exception->ExceptionRecord),
               stackOf(*exception->ContextRecord), exitCodeOfCrash);
}

void onAbort(int) {
    CONTEXT context;
    RtlCaptureContext(&context);
    endProgram(runningTest() + " crashed: abort", stackOf(context), exitCodeOfCrash);
}

DWORD WINAPI watch(void*) {
    for (;;) {
        Sleep(pollMilliseconds);
        const Clock::rep limit = deadline;
        if (limit != 0 && Clock::now().time_since_epoch().count() > limit) {
            endProgram(runningTest() + " took too long", stacksOfOtherThreads(), exitCodeOfHang);
        }
    }
}

class Limiter : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo&) override { allowTime(defaultTimeLimit); }
    void OnTestEnd(const ::testing::TestInfo&) override { deadline = 0; }
};

}  // namespace

void nameCase(const char* name) {
    std::snprintf(caseName, sizeof(caseName), "%s", name == nullptr ? "" : name);
}

void allowTime(std::chrono::seconds limit) {
    deadline = (Clock::now() + limit).time_since_epoch().count();
}

void installWatchdog() {
    SetUnhandledExceptionFilter(onCrash);
    std::signal(SIGABRT, onAbort);
    ::testing::UnitTest::GetInstance()->listeners().Append(new Limiter);
    CloseHandle(CreateThread(nullptr, 0, watch, nullptr, 0, nullptr));
}

}  // namespace testbed
