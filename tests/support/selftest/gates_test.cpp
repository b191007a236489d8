// What the test bed says of the violations.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "child_process.h"
#include "temp_folder.h"
#include "text.h"
#include "watchdog.h"

namespace {

using namespace testbed;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr DWORD failed = 1;
constexpr DWORD crashed = exitCodeOfCrash;
constexpr DWORD hung = exitCodeOfHang;

struct Violation {
    const char* name;
    DWORD exitCode;
    std::vector<std::string> complaints;
};

void PrintTo(const Violation& violation, std::ostream* stream) {
    *stream << violation.name;
}

class Gate : public ::testing::TestWithParam<Violation> {};

TEST_P(Gate, IsAwake) {
    const ChildResult child = runViolations(std::string("Violations.") + GetParam().name);

    EXPECT_EQ(child.exitCode, GetParam().exitCode);
    for (const std::string& complaint : GetParam().complaints) {
        EXPECT_THAT(child.output, HasSubstr(complaint));
    }
}

const Violation violations[] = {
    {"LeavesARecordOpen",
     failed,
     {"ledger: not given back: handle", "taken by CreateFileW at WinUtil64.dll+0x",
      "taken by malloc at WinUtil64.dll+0x"}},
    {"LeavesAnExceptionPending", failed, {"pending that it did not take: java/io/FileNotFoundException"}},
    {"LeavesAFunctionReplaced", failed, {"Sleep is still replaced"}},
    {"LeavesTheThreadImpersonating", failed, {"the thread still impersonates somebody"}},
    {"LeavesAFileOpenInItsFolder", failed, {"cannot remove"}},
    {"LeavesAFreshLibraryWithAHandle", failed, {"taken by OpenProcessToken at nowhere"}},
    {"Hangs", hung, {"Violations.Hangs took too long", "thread 0x", "support_violations.exe+0x"}},
    {"HangsInACase", hung, {"Violations.HangsInACase (the second case) took too long"}},
    {"ReadsOneByteBehindAnArray",
     crashed,
     {"ReadsOneByteBehindAnArray crashed: exception 0xc0000005", "behind the end of the content of a file",
      "support_violations.exe+0x"}},
    {"WritesBehindItsMemory", crashed, {"behind the end of a block of 20 bytes that the library allocated"}},
    {"ReadsTwoUnitsBehindAString", crashed, {"behind the end of the characters of a Java string"}},
    {"Aborts", crashed, {"Violations.Aborts crashed: abort"}},
};

INSTANTIATE_TEST_SUITE_P(Each, Gate, ::testing::ValuesIn(violations),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(Crash, LeavesResultsInWhichTheUnfinishedTestsFailed) {
    const TempFolder folder;

    runViolations("Violations.Aborts:Violations.PassesBeforeTheOthers",
                  " --gtest_output=xml:" + toUtf8(folder / L"results.xml"));

    const std::string results = readFile(folder / L"results.xml");
    EXPECT_THAT(results,
                HasSubstr("name=\"Aborts\"><failure message=\"Violations.Aborts crashed: abort\"/>"));
    EXPECT_THAT(results, HasSubstr("name=\"PassesBeforeTheOthers\"><failure"));
    EXPECT_THAT(results, Not(HasSubstr("Hangs")));
}

TEST(GoodTest, Passes) {
    const ChildResult child = runViolations("Violations.PassesBeforeTheOthers");

    EXPECT_EQ(child.exitCode, 0u);
    EXPECT_THAT(child.output, HasSubstr("[  PASSED  ] 1 test."));
}

}  // namespace
