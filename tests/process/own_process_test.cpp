// What a process asks and sets of itself.
#include "winutil_fixture.h"

namespace {

using namespace testbed;

using OwnProcess = WinUtilTest;

TEST_F(OwnProcess, SetPriorityLowersThatOfItsOwnProcess) {
    const DWORD before = GetPriorityClass(GetCurrentProcess());

    EXPECT_EQ(NATIVE(setPriority)(), 1);

    EXPECT_EQ(GetPriorityClass(GetCurrentProcess()), DWORD{BELOW_NORMAL_PRIORITY_CLASS});
    SetPriorityClass(GetCurrentProcess(), before);
}

TEST_F(OwnProcess, SetPriorityAnswersZeroWhenItFails) {
    const auto set = system().answer("SetPriorityClass", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(setPriority)(), 0);

    EXPECT_EQ(set.calls()[0].argument<HANDLE>(0), GetCurrentProcess());
    EXPECT_EQ(set.calls()[0].argument<DWORD>(1), 0x4000u);
}

TEST_F(OwnProcess, GetSessionIdIsThatOfItsOwnProcess) {
    DWORD session = 0;
    ASSERT_TRUE(ProcessIdToSessionId(GetCurrentProcessId(), &session));

    EXPECT_EQ(NATIVE(getSessionId)(), static_cast<jint>(session));
}

TEST_F(OwnProcess, GetSessionIdIsWhatTheSystemSaysAndZeroWhenItDoesNot) {
    BOOL result = TRUE;
    const auto query = REPLACE(ProcessIdToSessionId, [&](DWORD process, DWORD* session) {
        EXPECT_EQ(process, GetCurrentProcessId());
        *session = 42;
        return result;
    });

    EXPECT_EQ(NATIVE(getSessionId)(), 42);
    result = FALSE;
    EXPECT_EQ(NATIVE(getSessionId)(), 0);
}

}  // namespace
