// Positions and sizes of open files.
#include "winutil_fixture.h"

namespace {

using namespace testbed;

constexpr jlong beyond32Bits = 0x1'2345'6789;

class PositioningTest : public WinUtilTest {
protected:
    void SetUp() override {
        writeFile(folder() / L"file", "0123456789");
        record = NATIVE(openFile)(folder() / L"file");
    }

    void TearDown() override { NATIVE(closeFile)(record); }

    jlong record = 0;
};

TEST_F(PositioningTest, SeeksFromTheStartAndTellsWhereItIs) {
    EXPECT_EQ(NATIVE(seek)(record, 7), 7);
    EXPECT_EQ(NATIVE(seek)(record, 3), 3);
    EXPECT_EQ(NATIVE(getFilePosition)(record), 3);
}

TEST_F(PositioningTest, SeeksBeyondFourGigabytes) {
    EXPECT_EQ(NATIVE(seek)(record, beyond32Bits), beyond32Bits);
    EXPECT_EQ(NATIVE(getFilePosition)(record), beyond32Bits);
}

TEST_F(PositioningTest, RaisesTheReasonOfASeekBeforeTheStart) {
    EXPECT_EQ(NATIVE(seek)(record, -1), -1);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"SetFilePointerEx", ERROR_NEGATIVE_SEEK)));
}

TEST_F(PositioningTest, RaisesTheReasonWhenThePositionCannotBeTold) {
    const auto fail = system().failCall("SetFilePointerEx", 1, ERROR_INVALID_FUNCTION);

    EXPECT_EQ(NATIVE(getFilePosition)(record), -1);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"SetFilePointerEx", ERROR_INVALID_FUNCTION)));
}

TEST_F(PositioningTest, SkipsForwardsAndBackwards) {
    EXPECT_EQ(NATIVE(skip)(record, 5), 5);
    EXPECT_EQ(NATIVE(skip)(record, -2), 3);
    EXPECT_EQ(NATIVE(skip)(record, 0), 3);
}

TEST_F(PositioningTest, SkipsBeyondFourGigabytes) {
    EXPECT_EQ(NATIVE(skip)(record, beyond32Bits), beyond32Bits);
    EXPECT_EQ(NATIVE(skip)(record, 1), beyond32Bits + 1);
}

TEST_F(PositioningTest, RaisesTheReasonOfASkipBeforeTheStart) {
    EXPECT_EQ(NATIVE(skip)(record, -1), -1);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"SetFilePointer", ERROR_NEGATIVE_SEEK)));
}

TEST_F(PositioningTest, ReachesAPositionWhoseLowHalfLooksLikeAFailure) {
    constexpr jlong position = 0x1'FFFF'FFFF;
    // An error that an earlier call left must not be taken for this one's.
    const auto pointer =
        REPLACE(SetFilePointer, [](HANDLE file, LONG low, PLONG high, DWORD method) -> DWORD {
            const DWORD before = GetLastError();
            const DWORD result = REAL(SetFilePointer)(file, low, high, method);
            SetLastError(before);
            return result;
        });
    SetLastError(ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(skip)(record, position), position);
}

TEST_F(PositioningTest, TellsTheSizeAsItIsNow) {
    EXPECT_EQ(NATIVE(getFileSize)(record), 10);
    writeFile(folder() / L"file", "grown to some more");

    EXPECT_EQ(NATIVE(getFileSize)(record), 18);
}

TEST_F(PositioningTest, RaisesAnEmptyMessageWhenTheSizeCannotBeRead) {
    const auto fail = system().failCall("GetFileSizeEx", 1, ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(getFileSize)(record), 0);

    EXPECT_EQ(java.takeException(), ioException(L""));
}

TEST_F(PositioningTest, RaisesCodeSixForNoRecord) {
    EXPECT_EQ(NATIVE(seek)(0, 1), -1);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"SetFilePointerEx", ERROR_INVALID_HANDLE)));
    EXPECT_EQ(NATIVE(getFilePosition)(-1), -1);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"SetFilePointerEx", ERROR_INVALID_HANDLE)));
    EXPECT_EQ(NATIVE(skip)(-7, 1), -1);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"SetFilePointer", ERROR_INVALID_HANDLE)));
    NATIVE(getFileSize)(0);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"GetFileSizeEx", ERROR_INVALID_HANDLE)));
}

}  // namespace
