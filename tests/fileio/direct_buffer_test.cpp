// Reading and writing through a buffer outside the heap of Java.
#include "read_write_fixture.h"

#include <limits>

namespace {

using namespace testbed;

TEST_F(DirectBufferTest, WritesAPartOfABuffer) {
    open();
    memory.as<char>()[4094] = 'y';
    memory.as<char>()[4095] = 'z';

    write(4094, 2);

    EXPECT_EQ(content(), "yz");
}

TEST_F(DirectBufferTest, ReadsIntoAPartOfABufferAndThenTheEndOfTheFile) {
    open("xyz");

    EXPECT_EQ(read(4090, 6), 3);
    EXPECT_EQ(read(4090, 6), -1);

    EXPECT_EQ(std::string(memory.as<char>() + 4090, 3), "xyz");
}

TEST_F(DirectBufferTest, RefusesAnUnbufferedWriteOfAPartOfASector) {
    open({}, noBuffering);

    write(0, 1000);

    EXPECT_EQ(java.takeException(),
              ioException(L"[WindowsUtil.write] Must write in multiple of disk sector size when opening in "
                          L"FILE_FLAG_NO_BUFFERING, incorrect write size 1000"));
    EXPECT_EQ(system().count("WriteFile"), 0u);
}

TEST_F(DirectBufferTest, MasksTheLengthWithAnySectorSizeThatJavaMayPass) {
    open({}, noBuffering);

    write(0, 512, std::numeric_limits<jint>::min());

    EXPECT_NE(java.takeException().message.find(L"incorrect write size 512"), std::wstring::npos);
    EXPECT_EQ(system().count("WriteFile"), 0u);
}

TEST_F(DirectBufferTest, WritesWholeSectorsUnbuffered) {
    open({}, noBuffering);

    write(0, 1024);

    EXPECT_EQ(content().size(), 1024u);
}

TEST_F(DirectBufferTest, WritesAnyLengthBufferedWhateverItsOtherFlags) {
    open({}, FILE_ATTRIBUTE_READONLY | FILE_FLAG_SEQUENTIAL_SCAN);

    write(0, 1000);

    EXPECT_EQ(content().size(), 1000u);
}

TEST_F(DirectBufferTest, RaisesDiskFullWhenThereIsNoRoomForABuffer) {
    open();
    const auto fail = system().failCall("WriteFile", 1, ERROR_DISK_FULL);

    write(0, 512);

    EXPECT_EQ(java.takeException(),
              (Thrown{"com/qarvo/dov/io/DiskFullException", errorMessage(L"WriteFile", ERROR_DISK_FULL)}));
}

TEST_F(DirectBufferTest, PassesNullOnForABufferWithoutAnAddress) {
    open("xyz");
    const JavaObject withoutAddress = java.directBuffer(nullptr, 16);
    const auto read = system().answer("ReadFile", FALSE, ERROR_NOACCESS);
    const auto write = system().answer("WriteFile", FALSE, ERROR_INVALID_USER_BUFFER);

    EXPECT_EQ(NATIVE(read__JLjava_nio_ByteBuffer_2III)(record, withoutAddress, 8, 4, sector), -2);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"ReadFile", ERROR_NOACCESS)));
    EXPECT_EQ(read.calls().at(0).argument<std::uint64_t>(1), 0u);

    NATIVE(write__JLjava_nio_ByteBuffer_2III)(record, withoutAddress, 8, 4, sector);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WriteFile", ERROR_INVALID_USER_BUFFER)));
    EXPECT_EQ(write.calls().at(0).argument<std::uint64_t>(1), 0u);
}

// Wine takes any unbuffered read; Windows refuses one behind the exact end of a file as an invalid parameter.
class UnbufferedEndTest : public DirectBufferTest {
protected:
    void openAndReadAll(std::size_t size) {
        open(std::string(size, 'x'), noBuffering);
        ASSERT_EQ(read(0, 1024), static_cast<jint>(size));
        refuseReads();
    }
    void refuseReads() { refusal = system().answer("ReadFile", FALSE, ERROR_INVALID_PARAMETER); }

    Thrown invalidParameter() { return ioException(errorMessage(L"ReadFile", ERROR_INVALID_PARAMETER)); }

    Replacement refusal;
};

TEST_F(UnbufferedEndTest, TakesAnInvalidParameterAtTheExactEndForTheEndOfTheFile) {
    openAndReadAll(1024);

    EXPECT_EQ(read(0, 1024), -1);
}

TEST_F(UnbufferedEndTest, RaisesItBeforeTheEnd) {
    open(std::string(2048, 'x'), noBuffering);
    ASSERT_EQ(read(0, 1024), 1024);
    refuseReads();

    EXPECT_EQ(read(0, 1024), -2);

    EXPECT_EQ(java.takeException(), invalidParameter());
}

TEST_F(UnbufferedEndTest, RaisesItForALengthThatIsNoMultipleOfTheSectorSize) {
    openAndReadAll(1024);

    EXPECT_EQ(read(0, 1000), -2);

    EXPECT_EQ(java.takeException(), invalidParameter());
}

TEST_F(UnbufferedEndTest, RaisesItForAnAddressThatIsNoMultipleOfTheSectorSize) {
    openAndReadAll(1024);

    EXPECT_EQ(read(8, 1024), -2);

    EXPECT_EQ(java.takeException(), invalidParameter());
}

TEST_F(UnbufferedEndTest, RaisesAnyOtherCode) {
    openAndReadAll(1024);
    refusal = system().answer("ReadFile", FALSE, ERROR_IO_DEVICE);

    EXPECT_EQ(read(0, 1024), -2);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"ReadFile", ERROR_IO_DEVICE)));
}

TEST_F(UnbufferedEndTest, TakesTheCodeThatTheFormattingOfTheMessageLeft) {
    openAndReadAll(1024);
    const auto format =
        REPLACE(FormatMessageW, [](DWORD, LPCVOID, DWORD, DWORD, LPWSTR, DWORD, va_list*) -> DWORD {
            SetLastError(ERROR_MR_MID_NOT_FOUND);
            return 0;
        });

    EXPECT_EQ(read(0, 1024), -2);

    EXPECT_EQ(java.takeException(), ioException(L"[ReadFile] (87) Failed to obtain error message"));
}

TEST_F(UnbufferedEndTest, CountsArrayReadsTowardsThePositionAsWell) {
    open(std::string(1024, 'x'), noBuffering);
    ASSERT_EQ(NATIVE(read__J_3BII)(record, java.byteArray(std::vector<jbyte>(1024)), 0, 1024), 1024);
    refuseReads();

    EXPECT_EQ(read(0, 512), -1);
}

TEST_F(UnbufferedEndTest, DoesNotCountASeek) {
    open(std::string(1024, 'x'), noBuffering);
    ASSERT_EQ(NATIVE(seek)(record, 1024), 1024);
    refuseReads();

    EXPECT_EQ(read(0, 1024), -2);

    EXPECT_EQ(java.takeException(), invalidParameter());
}

TEST_F(UnbufferedEndTest, DoesNotCountAWrite) {
    open(std::string(1024, 'x'), noBuffering);
    refuseReads();

    write(0, 1024);
    EXPECT_EQ(read(0, 1024), -2);
    EXPECT_EQ(java.takeException(), invalidParameter());

    NATIVE(write__J_3BII)(record, java.byteArray(std::vector<jbyte>(1024)), 0, 1024);
    EXPECT_EQ(read(0, 1024), -2);
    EXPECT_EQ(java.takeException(), invalidParameter());
}

TEST_F(UnbufferedEndTest, DoesNotTakeTheEndOfAFileThatHasGrownForTheOneAtItsOpening) {
    open({}, noBuffering);
    write(0, 1024);
    ASSERT_EQ(NATIVE(seek)(record, 0), 0);
    ASSERT_EQ(read(0, 1024), 1024);
    refuseReads();

    EXPECT_EQ(read(0, 1024), -2);

    EXPECT_EQ(java.takeException(), invalidParameter());
}

TEST_F(UnbufferedEndTest, TakesThePreallocatedSizeForTheOneAtItsOpening) {
    record = NATIVE(createFileNC__Ljava_lang_String_2IIIJ)(
        folder() / L"file", static_cast<jint>(GENERIC_READ), CREATE_ALWAYS, noBuffering, 1024);
    ASSERT_EQ(read(0, 1024), 1024);
    refuseReads();

    EXPECT_EQ(read(0, 1024), -1);
}

TEST_F(UnbufferedEndTest, TakesAnInvalidParameterForItOnABufferedFileAsWell) {
    writeFile(folder() / L"file", std::string(1024, 'x'));
    record = NATIVE(openFile)(folder() / L"file");
    ASSERT_EQ(read(0, 1024), 1024);
    refuseReads();

    EXPECT_EQ(read(0, 1024), -1);
}

}  // namespace
