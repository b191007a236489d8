// What Java does with the cells of a child, its pipes and its account.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <userenv.h>

#include "process_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

class HandleTest : public ProcessTest {
protected:
    // Has every read answer this, and records its handle, where it reads to and how much.
    Replacement answerReads(BOOL result, std::string bytes, DWORD code = ERROR_SUCCESS) {
        return REPLACE(ReadFile, [=, this](HANDLE handle, LPVOID buffer, DWORD length, LPDWORD count,
                                           LPOVERLAPPED overlapped) {
            EXPECT_EQ(overlapped, nullptr);
            readFrom = handle;
            readLength = length;
            bytes.copy(static_cast<char*>(buffer), bytes.size());
            *count = static_cast<DWORD>(bytes.size());
            SetLastError(code);
            return result;
        });
    }

    HANDLE readFrom = nullptr;
    DWORD readLength = 0;
};

TEST_F(HandleTest, CloseHandleClosesTheHandleAndFreesTheCell) {
    const jlong cell = ownedCell(CreateEventW(nullptr, TRUE, FALSE, nullptr));

    NATIVE(closeHandle)(cell);

    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(HandleTest, CloseHandleOnlyFreesACellWithoutHandle) {
    const auto close = system().watch("CloseHandle");
    const jlong cell = ownedCell(nullptr);

    NATIVE(closeHandle)(cell);

    EXPECT_TRUE(ledger().isEmpty());
    EXPECT_EQ(close.count(), 0u);
}

TEST_F(HandleTest, CloseHandleDoesNothingForWhatIsNoCell) {
    for (const jlong cell : {jlong{0}, jlong{-1}, INT64_MIN}) {
        NATIVE(closeHandle)(cell);
    }

    EXPECT_EQ(system().count("CloseHandle"), 0u);
    EXPECT_EQ(system().count("free"), 0u);
}

TEST_F(HandleTest, UnloadUserProfileUnloadsAndThenClosesTheTokenAndFreesBothCells) {
    const HANDLE token = Ledger::fakeHandle();
    const HANDLE profile = Ledger::fakeHandle();
    const auto close = system().watch("CloseHandle");
    const jlong tokenCell = ownedCell(token);
    auto* profileCell = reinterpret_cast<HANDLE*>(ownedCell(nullptr));
    *profileCell = profile;
    const auto unload = REPLACE(UnloadUserProfile, [&](HANDLE givenToken, HANDLE givenProfile) {
        EXPECT_EQ(givenToken, token);
        EXPECT_EQ(givenProfile, profile);
        EXPECT_EQ(close.count(), 0u);
        return TRUE;
    });

    NATIVE(unloadUserProfile)(tokenCell, reinterpret_cast<jlong>(profileCell));

    EXPECT_EQ(unload.count(), 1u);
    EXPECT_EQ(close.count(), 1u);  // the profile is not closed
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(HandleTest, UnloadUserProfileIsSilentWhenItFails) {
    const auto unload = system().answer("UnloadUserProfile", FALSE, ERROR_ACCESS_DENIED);
    const jlong tokenCell = ownedCell(Ledger::fakeHandle());
    const jlong profileCell = ownedCell(nullptr);

    NATIVE(unloadUserProfile)(tokenCell, profileCell);

    EXPECT_EQ(unload.count(), 1u);
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(HandleTest, UnloadUserProfileClosesNoTokenThatIsNotThere) {
    const auto unload = system().answer("UnloadUserProfile", TRUE);
    const jlong tokenCell = ownedCell(nullptr);
    const jlong profileCell = ownedCell(nullptr);

    NATIVE(unloadUserProfile)(tokenCell, profileCell);

    EXPECT_EQ(system().count("CloseHandle"), 0u);
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(HandleTest, UnloadUserProfilePassesOverWhatIsNoCell) {
    const auto unload = system().answer("UnloadUserProfile", TRUE);
    const jlong tokenCell = ownedCell(Ledger::fakeHandle());
    const jlong profileCell = ownedCell(nullptr);

    NATIVE(unloadUserProfile)(0, -1);
    NATIVE(unloadUserProfile)(tokenCell, 0);
    NATIVE(unloadUserProfile)(-1, profileCell);

    EXPECT_EQ(unload.count(), 0u);
    EXPECT_TRUE(ledger().isEmpty());
}

TEST_F(HandleTest, WaitForSingleObjectWaitsUntilTheProcessHasEnded) {
    RunningChild child(L"exit 7");

    EXPECT_EQ(NATIVE(waitForSingleObject)(borrowedCell(child.process.handle)), 0);

    EXPECT_EQ(NATIVE(exitValue)(borrowedCell(child.process.handle)), 7);
}

TEST_F(HandleTest, WaitForSingleObjectWaitsWithoutLimitAndAnswersWhatTheSystemAnswers) {
    HANDLE handle = Ledger::fakeHandle();
    const auto wait = system().answer("WaitForSingleObject", WAIT_ABANDONED);

    EXPECT_EQ(NATIVE(waitForSingleObject)(borrowedCell(handle)), 0x80);

    ASSERT_EQ(wait.count(), 1u);
    EXPECT_EQ(wait.calls()[0].argument<HANDLE>(0), handle);
    EXPECT_EQ(wait.calls()[0].argument<DWORD>(1), INFINITE);
}

TEST_F(HandleTest, WaitForSingleObjectFailsForWhatIsNoCell) {
    EXPECT_EQ(NATIVE(waitForSingleObject)(0), -1);
    EXPECT_EQ(NATIVE(waitForSingleObject)(-1), -1);

    EXPECT_EQ(system().count("WaitForSingleObject"), 0u);
}

TEST_F(HandleTest, ExitValueIs259WhileTheProcessRuns) {
    RunningChild child;

    EXPECT_EQ(NATIVE(exitValue)(borrowedCell(child.process.handle)), 259);
}

TEST_F(HandleTest, ExitValueKeepsAllBitsOfTheCode) {
    RunningChild child(L"exit 3221225477");

    NATIVE(waitForSingleObject)(borrowedCell(child.process.handle));

    EXPECT_EQ(static_cast<DWORD>(NATIVE(exitValue)(borrowedCell(child.process.handle))), 0xC0000005);
}

TEST_F(HandleTest, ExitValueTellsWhyThereIsNone) {
    HANDLE handle = Ledger::fakeHandle();
    const auto query = REPLACE(GetExitCodeProcess, [](HANDLE, LPDWORD code) {
        *code = 99;
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    });

    EXPECT_EQ(NATIVE(exitValue)(borrowedCell(handle)), 0);

    EXPECT_EQ(java.takeException(), ioException(tagMessage(L"[WindowsUtil:exitValue]", ERROR_ACCESS_DENIED)));
}

TEST_F(HandleTest, ExitValueOfWhatIsNoCellIsAnInvalidHandle) {
    for (const jlong cell : {jlong{0}, jlong{-1}}) {
        EXPECT_EQ(NATIVE(exitValue)(cell), 0);

        EXPECT_EQ(java.takeException(),
                  ioException(tagMessage(L"[WindowsUtil:exitValue]", ERROR_INVALID_HANDLE)));
    }
}

TEST_F(HandleTest, EndProcessEndsItWithExitCodeZero) {
    RunningChild child;

    NATIVE(endProcess)(borrowedCell(child.process.handle));

    WaitForSingleObject(child.process.handle, INFINITE);
    EXPECT_EQ(child.exitCode(), 0u);
}

TEST_F(HandleTest, EndProcessTellsWhyItCannot) {
    HANDLE handle = Ledger::fakeHandle();
    const auto terminate = system().answer("TerminateProcess", FALSE, ERROR_ACCESS_DENIED);

    NATIVE(endProcess)(borrowedCell(handle));

    EXPECT_EQ(java.takeException(), ioException(tagMessage(L"[WinUtil:endProcess]", ERROR_ACCESS_DENIED)));
    EXPECT_EQ(terminate.calls()[0].argument<UINT>(1), 0u);
}

TEST_F(HandleTest, EndProcessOfWhatIsNoCellIsAnInvalidHandle) {
    NATIVE(endProcess)(-5);

    EXPECT_EQ(java.takeException(), ioException(tagMessage(L"[WinUtil:endProcess]", ERROR_INVALID_HANDLE)));
    EXPECT_EQ(system().count("TerminateProcess"), 0u);
}

TEST_F(HandleTest, ReadHandleReadsIntoTheRangeAndLeavesTheRest) {
    HANDLE handle = Ledger::fakeHandle();
    const auto read = answerReads(TRUE, "abc");
    const JavaObject array = java.byteArray(std::vector<jbyte>(8, '.'));

    EXPECT_EQ(NATIVE(readHandle)(borrowedCell(handle), array, 2, 4), 3);

    EXPECT_EQ(readFrom, handle);
    EXPECT_EQ(readLength, 4u);
    EXPECT_THAT(array.bytes(), ElementsAre('.', '.', 'a', 'b', 'c', '.', '.', '.'));
    ASSERT_EQ(java.arrayReleases().size(), 1u);
    EXPECT_EQ(java.arrayReleases()[0].mode, 0);
}

TEST_F(HandleTest, ReadHandleTakesNothingReadForTheEndOfTheStream) {
    HANDLE handle = Ledger::fakeHandle();
    const auto read = answerReads(TRUE, "");

    EXPECT_EQ(NATIVE(readHandle)(borrowedCell(handle), java.byteArray({0}), 0, 1), -1);

    EXPECT_EQ(java.arrayReleases()[0].mode, 0);
}

TEST_F(HandleTest, ReadHandleTakesTheCodesOfAnEndForTheEnd) {
    HANDLE handle = Ledger::fakeHandle();
    for (const DWORD code : {DWORD{ERROR_HANDLE_EOF}, DWORD{ERROR_BROKEN_PIPE}}) {
        const auto read = answerReads(FALSE, "", code);

        EXPECT_EQ(NATIVE(readHandle)(borrowedCell(handle), java.byteArray({0}), 0, 1), -1);

        EXPECT_FALSE(java.isPending());
    }
    EXPECT_EQ(java.arrayReleases().size(), 2u);
}

TEST_F(HandleTest, ReadHandleTellsEveryOtherFailure) {
    HANDLE handle = Ledger::fakeHandle();
    const auto read = answerReads(FALSE, "ab", ERROR_NO_DATA);
    const JavaObject array = java.byteArray({'x', 'x', 'x'});

    EXPECT_EQ(NATIVE(readHandle)(borrowedCell(handle), array, 0, 3), 0);

    EXPECT_EQ(java.takeException(), ioException(tagMessage(L"[WindowsUtil:readHandle]", ERROR_NO_DATA)));
    EXPECT_THAT(array.bytes(), ElementsAre('a', 'b', 'x'));
    EXPECT_EQ(java.arrayReleases()[0].mode, 0);
}

TEST_F(HandleTest, ReadHandleTellsAFailureWithoutACode) {
    HANDLE handle = Ledger::fakeHandle();
    const auto read = answerReads(FALSE, "", ERROR_SUCCESS);

    EXPECT_EQ(NATIVE(readHandle)(borrowedCell(handle), java.byteArray({0}), 0, 1), 0);

    EXPECT_EQ(java.takeException(), ioException(tagMessage(L"[WindowsUtil:readHandle]", ERROR_SUCCESS)));
}

TEST_F(HandleTest, ReadHandleOfWhatIsNoCellIsAnInvalidHandle) {
    for (const jlong cell : {jlong{0}, jlong{-1}}) {
        EXPECT_EQ(NATIVE(readHandle)(cell, java.byteArray({0}), 0, 1), 0);

        EXPECT_EQ(java.takeException(),
                  ioException(tagMessage(L"[WindowsUtil:readHandle]", ERROR_INVALID_HANDLE)));
    }
    EXPECT_EQ(java.count("GetByteArrayElements"), 0u);
}

TEST_F(HandleTest, ReadHandleReadsNothingWithoutMemoryForTheArray) {
    HANDLE handle = Ledger::fakeHandle();
    const auto read = answerReads(TRUE, "a");
    java.failCall("GetByteArrayElements");

    EXPECT_EQ(NATIVE(readHandle)(borrowedCell(handle), java.byteArray({0}), 0, 1), 0);

    EXPECT_EQ(java.takeException(),
              ioException(tagMessage(L"[WindowsUtil:readHandle]", ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(read.count(), 0u);
}

TEST_F(HandleTest, ReadHandleReadsAPipeToItsEnd) {
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    ASSERT_TRUE(CreatePipe(&readEnd, &writeEnd, nullptr, 0));
    const TestHandle closed(readEnd);
    DWORD written = 0;
    WriteFile(writeEnd, "hello", 5, &written, nullptr);
    CloseHandle(writeEnd);
    const JavaObject array = java.byteArray(std::vector<jbyte>(16));

    EXPECT_EQ(NATIVE(readHandle)(borrowedCell(readEnd), array, 0, 3), 3);
    EXPECT_EQ(NATIVE(readHandle)(borrowedCell(readEnd), array, 3, 13), 2);
    EXPECT_EQ(NATIVE(readHandle)(borrowedCell(readEnd), array, 0, 16), -1);
    EXPECT_EQ(NATIVE(readHandle)(borrowedCell(readEnd), array, 0, 16), -1);

    EXPECT_EQ(std::string(array.bytes().begin(), array.bytes().begin() + 5), "hello");
}

TEST_F(HandleTest, WriteHandleWritesNothingAndAnswersMinusOne) {
    HANDLE handle = Ledger::fakeHandle();

    EXPECT_EQ(NATIVE(WriteHandle)(borrowedCell(handle), java.byteArray({1, 2}), 0, 2), -1);
    EXPECT_EQ(NATIVE(WriteHandle)(-1, nullptr, 0, 0), -1);

    EXPECT_EQ(system().count("WriteFile"), 0u);
}

}  // namespace
