// Ending a process by its id.
#include "process_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::wstring tag = L"[WindowsUtil:terminateProcessByProcessID]";

class TerminationTest : public ProcessTest {
protected:
    // Processes open, and nothing is ended in truth.
    Replacement opening_ = REPLACE(OpenProcess, [](DWORD access, BOOL inherit, DWORD) {
        EXPECT_EQ(access, 0x100401u);
        EXPECT_FALSE(inherit);
        return Ledger::fakeHandle();
    });
};

TEST_F(TerminationTest, EndsAProcessWithExitCodeZeroAndWaitsForItsEnd) {
    opening_.restore();
    RunningChild child;

    EXPECT_TRUE(NATIVE(terminateProcessByProcessID)(jlong{child.id}, false));

    EXPECT_EQ(WaitForSingleObject(child.process.handle, 0), DWORD{WAIT_OBJECT_0});
    EXPECT_EQ(child.exitCode(), 0u);
    EXPECT_THAT(printed(), IsEmpty());
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(TerminationTest, TellsThatThereIsNoSuchProcess) {
    opening_.restore();

    EXPECT_FALSE(NATIVE(terminateProcessByProcessID)(0x7FFFFFF0, false));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(L"Failed to open process (2147483632)\n", ERROR_INVALID_PARAMETER)));
    EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(TerminationTest, TakesAnIdBeyond32BitsForNoProcess) {
    EXPECT_FALSE(NATIVE(terminateProcessByProcessID)(0x1'0000'004D, true));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(L"Failed to open process (4294967373)\n", ERROR_INVALID_PARAMETER)));
    EXPECT_THAT(printed(), ElementsAre(tag + L" Open process (4294967373)\n",
                                       tag + L" Failed to open process (4294967373)\n\n"));

    EXPECT_FALSE(NATIVE(terminateProcessByProcessID)(-77, false));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(L"Failed to open process (-77)\n", ERROR_INVALID_PARAMETER)));
    EXPECT_EQ(system().count("OpenProcess"), 0u);
}

TEST_F(TerminationTest, ShowsALargeIdWithASign) {
    const auto terminate = system().answer("TerminateProcess", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(NATIVE(terminateProcessByProcessID)(0xFFFFFFF0, false));

    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(L"Failed to Terminate Process -16\n", ERROR_ACCESS_DENIED)));
}

TEST_F(TerminationTest, WaitsWithoutLimitAndPrintsItsStepsWhenAsked) {
    const auto terminate = system().answer("TerminateProcess", TRUE);
    const auto wait = system().answer("WaitForSingleObject", WAIT_FAILED);

    EXPECT_TRUE(NATIVE(terminateProcessByProcessID)(77, true));

    EXPECT_EQ(terminate.calls()[0].argument<UINT>(1), 0u);
    EXPECT_EQ(wait.calls()[0].argument<DWORD>(1), INFINITE);
    EXPECT_EQ(wait.calls()[0].argument<HANDLE>(0), terminate.calls()[0].argument<HANDLE>(0));
    EXPECT_THAT(printed(), ElementsAre(tag + L" Open process (77)\n", tag + L" Terminate process (77)\n",
                                       tag + L" Process (77) terminated, wait=ffffffff\n"));
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(TerminationTest, PrintsWhyAProcessCannotBeOpenedAndRaisesIt) {
    const auto open = system().answer("OpenProcess", 0, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(NATIVE(terminateProcessByProcessID)(77, true));

    EXPECT_THAT(printed(),
                ElementsAre(tag + L" Open process (77)\n", tag + L" Failed to open process (77)\n\n"));
    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(L"Failed to open process (77)\n", ERROR_ACCESS_DENIED)));
    EXPECT_EQ(system().count("TerminateProcess"), 0u);
}

TEST_F(TerminationTest, TellsWhyItCannotEndAProcessAndClosesIt) {
    const auto terminate = system().answer("TerminateProcess", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(NATIVE(terminateProcessByProcessID)(77, true));

    EXPECT_THAT(printed(), ElementsAre(tag + L" Open process (77)\n", tag + L" Terminate process (77)\n",
                                       tag + L" Failed to Terminate Process 77\n\n"));
    EXPECT_EQ(java.takeException(),
              ioException(stepMessage(L"Failed to Terminate Process 77\n", ERROR_ACCESS_DENIED)));
    EXPECT_TRUE(ledger().isEmpty());
    EXPECT_EQ(system().count("WaitForSingleObject"), 0u);
}

}  // namespace
