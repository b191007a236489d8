// What the matrix says of recipes that are not as they must be.
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <algorithm>

#include "matrix.h"

namespace {

using namespace testbed;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;

// The violations that a matrix counts; as failures of a test they do not.
template <class Examine>
std::vector<std::string> violationsIn(Examine&& examine) {
    FaultMatrix matrix;
    ::testing::TestPartResultArray results;
    {
        const ::testing::ScopedFakeTestPartResultReporter reporter(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
        examine(matrix);
    }
    EXPECT_EQ(static_cast<std::size_t>(results.size()), matrix.violations().size());
    return matrix.violations();
}

std::vector<std::string> violationsOf(const std::string& branch) {
    const auto recipe = std::ranges::find(violatingRecipes(), branch, &Recipe::branch);
    return violationsIn([&](FaultMatrix& matrix) { matrix.examine(*recipe); });
}

TEST(FaultGate, CountsACaseThatCrashesAndGoesOnBehindIt) {
    const std::vector<std::string> violations = violationsOf("crashes");

    EXPECT_THAT(violations,
                Contains("violation_crashes, GetFileAttributesExW 1 and later with 0x5: it crashes"));
}

TEST(FaultGate, CountsACaseThatHangs) {
    EXPECT_THAT(violationsOf("hangs"),
                Contains("violation_hangs, GetFileAttributesExW 1 and later with 0x5: it hangs"));
}

TEST(FaultGate, CountsARecipeThatCrashesWithNothingFailing) {
    EXPECT_THAT(violationsOf("crashesAtOnce"),
                Contains("violation_crashesAtOnce, with nothing failing: it crashes"));
}

TEST(FaultGate, SeesAFailureThatGoesUnnoticed) {
    EXPECT_THAT(violationsOf("overlooks"), Contains(HasSubstr("the failure goes unnoticed")));
}

TEST(FaultGate, SeesAnAnswerThatIsNoFailure) {
    EXPECT_THAT(violationsOf("makesUp"), Contains(HasSubstr("an answer that is no documented failure")));
}

TEST(FaultGate, SeesWhatAFailureSpoilsForTheNextCall) {
    EXPECT_THAT(violationsOf("isDifferentBehindAFailure"), Contains(HasSubstr("is not as before")));
}

TEST(FaultGate, SeesWhatIsKept) {
    EXPECT_THAT(violationsOf("keeps"), Contains(HasSubstr("ledger: not given back: handle 0x4")));
}

TEST(FaultGate, SeesARemarkThatNothingNeeds) {
    EXPECT_THAT(violationsOf("remarksTooMuch"),
                Contains(AllOf(HasSubstr("no case needs this"), HasSubstr("CloseHandle"))));
}

TEST(FaultGate, SeesACallThatNoRecipeMakes) {
    EXPECT_THAT(violationsIn([](FaultMatrix& matrix) { matrix.examineCallSites(); }),
                Contains(HasSubstr("made by no recipe: CreateToolhelp32Snapshot at 0x")));
}

}  // namespace
