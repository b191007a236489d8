// Reading and writing through an open-file record.
#include "winutil_test.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

constexpr jint noBuffering = static_cast<jint>(FILE_FLAG_NO_BUFFERING);
constexpr jint sector = 512;

class ReadWriteTest : public WinUtilTest {
protected:
    // Opens a new file with that content for reading and writing, and closes it at the end of the test.
    jlong open(std::string_view content = {}, jint flags = 0) {
        writeFile(folder() / L"file", content);
        record = NATIVE(createFileNC__Ljava_lang_String_2III)(
            folder() / L"file", static_cast<jint>(GENERIC_READ | GENERIC_WRITE), OPEN_EXISTING, flags);
        return record;
    }

    void TearDown() override { NATIVE(closeFile)(record); }

    std::string content() { return readFile(folder() / L"file"); }

    jlong record = 0;
};

std::string textOf(const JavaObject& array) {
    return {array.bytes().begin(), array.bytes().end()};
}

TEST_F(ReadWriteTest, WritesAPartOfAnArray) {
    open();

    NATIVE(write__J_3BII)(record, java.byteArray({'a', 'b', 'c', 'd'}), 1, 2);

    EXPECT_EQ(content(), "bc");
}

TEST_F(ReadWriteTest, CopiesNothingBackIntoAWrittenArray) {
    open();
    const JavaObject array = java.byteArray({'a'});

    NATIVE(write__J_3BII)(record, array, 0, 1);

    ASSERT_EQ(java.arrayReleases().size(), 1u);
    EXPECT_EQ(java.arrayReleases()[0].mode, JNI_ABORT);
}

TEST_F(ReadWriteTest, WritesAnEmptyArray) {
    open("old");

    NATIVE(write__J_3BII)(record, java.byteArray({}), 0, 0);

    EXPECT_EQ(content(), "old");
}

TEST_F(ReadWriteTest, ReadsIntoAPartOfAnArray) {
    open("xyz");
    const JavaObject array = java.byteArray({'a', 'b', 'c', 'd'});

    EXPECT_EQ(NATIVE(read__J_3BII)(record, array, 1, 2), 2);

    EXPECT_EQ(textOf(array), "axyd");
    ASSERT_EQ(java.arrayReleases().size(), 1u);
    EXPECT_EQ(java.arrayReleases()[0].mode, 0);
}

TEST_F(ReadWriteTest, ReadsWhatIsLeftAndThenTheEndOfTheFile) {
    open("xyz");
    const JavaObject array = java.byteArray({'a', 'b', 'c', 'd'});

    EXPECT_EQ(NATIVE(read__J_3BII)(record, array, 0, 4), 3);
    EXPECT_EQ(NATIVE(read__J_3BII)(record, array, 0, 4), -1);

    EXPECT_EQ(textOf(array), "xyzd");
}

TEST_F(ReadWriteTest, RaisesTheReasonOfAFailedRead) {
    open("xyz");
    const auto read = system().failCall("ReadFile", 1, ERROR_LOCK_VIOLATION);

    EXPECT_EQ(NATIVE(read__J_3BII)(record, java.byteArray({'a'}), 0, 1), -2);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"ReadFile", ERROR_LOCK_VIOLATION)));
}

TEST_F(ReadWriteTest, RaisesNoFileNotFoundForAReadThatFailsWithThatCode) {
    open("xyz");
    const auto read = system().failCall("ReadFile", 1, ERROR_FILE_NOT_FOUND);

    NATIVE(read__J_3BII)(record, java.byteArray({'a'}), 0, 1);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"ReadFile", ERROR_FILE_NOT_FOUND)));
}

TEST_F(ReadWriteTest, RaisesDiskFullWhenThereIsNoRoomForAnArray) {
    open();
    const auto write = system().failCall("WriteFile", 1, ERROR_DISK_FULL);

    NATIVE(write__J_3BII)(record, java.byteArray({'a'}), 0, 1);

    EXPECT_EQ(java.takeException(),
              (Thrown{"com/qarvo/dov/io/DiskFullException", errorMessage(L"WriteFile", ERROR_DISK_FULL)}));
}

TEST_F(ReadWriteTest, RaisesTheReasonOfAFailedWrite) {
    open();
    const auto write = system().failCall("WriteFile", 1, ERROR_SHARING_VIOLATION);

    NATIVE(write__J_3BII)(record, java.byteArray({'a'}), 0, 1);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WriteFile", ERROR_SHARING_VIOLATION)));
}

TEST_F(ReadWriteTest, TakesAShortWriteForAWholeOne) {
    open();
    const auto write = REPLACE(WriteFile, [](HANDLE, LPCVOID, DWORD, LPDWORD written, LPOVERLAPPED) -> BOOL {
        *written = 1;
        return TRUE;
    });

    NATIVE(write__J_3BII)(record, java.byteArray({'a', 'b'}), 0, 2);
}

TEST_F(ReadWriteTest, LeavesTheJvmsErrorWhenItHasNoMemoryForTheElements) {
    open("xyz");
    const JavaObject array = java.byteArray({'a'});
    java.failCall("GetByteArrayElements");
    EXPECT_EQ(NATIVE(read__J_3BII)(record, array, 0, 1), -2);
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");

    java.failCall("GetByteArrayElements");
    NATIVE(write__J_3BII)(record, array, 0, 1);
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_EQ(system().count("ReadFile") + system().count("WriteFile"), 0u);
}

TEST_F(ReadWriteTest, RaisesCodeSixForNoRecord) {
    const JavaObject array = java.byteArray({'a'});
    const Thrown cannotRead = ioException(errorMessage(L"ReadFile", ERROR_INVALID_HANDLE));
    const Thrown cannotWrite = ioException(errorMessage(L"WriteFile", ERROR_INVALID_HANDLE));

    EXPECT_EQ(NATIVE(read__J_3BII)(0, array, 0, 1), -2);
    EXPECT_EQ(java.takeException(), cannotRead);
    NATIVE(write__J_3BII)(-5, array, 0, 1);
    EXPECT_EQ(java.takeException(), cannotWrite);
    EXPECT_EQ(NATIVE(read__JLjava_nio_ByteBuffer_2III)(-1, java.directBuffer(nullptr, 0), 0, 1, sector), -2);
    EXPECT_EQ(java.takeException(), cannotRead);
    NATIVE(write__JLjava_nio_ByteBuffer_2III)(0, java.directBuffer(nullptr, 0), 0, 1, sector);
    EXPECT_EQ(java.takeException(), cannotWrite);
}

TEST_F(ReadWriteTest, WritesNothingAndRaisesNothingThroughWriteHandle) {
    EXPECT_EQ(NATIVE(WriteHandle)(1, java.byteArray({'a'}), 0, 1), -1);
    EXPECT_EQ(NATIVE(WriteHandle)(0, nullptr, 5, -1), -1);

    EXPECT_EQ(system().count("WriteFile"), 0u);
}

class DirectBufferTest : public ReadWriteTest {
protected:
    // A buffer whose last byte lies right before a page that faults.
    explicit DirectBufferTest() : memory(4096, "direct buffer") {}

    JavaObject buffer() { return java.directBuffer(memory.data(), static_cast<jlong>(memory.size())); }
    void write(jint offset, jint length, jint sectorSize = sector) {
        NATIVE(write__JLjava_nio_ByteBuffer_2III)(record, buffer(), offset, length, sectorSize);
    }
    jint read(jint offset, jint length, jint sectorSize = sector) {
        return NATIVE(read__JLjava_nio_ByteBuffer_2III)(record, buffer(), offset, length, sectorSize);
    }

    GuardedBuffer memory;
};

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

TEST_F(DirectBufferTest, WritesWholeSectorsUnbuffered) {
    open({}, noBuffering);

    write(0, 1024);

    EXPECT_EQ(content().size(), 1024u);
}

TEST_F(DirectBufferTest, WritesAnyLengthBuffered) {
    open();

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

// Wine takes any unbuffered read; Windows refuses one behind the exact end of a file as an invalid parameter.
class UnbufferedEndTest : public DirectBufferTest {
protected:
    void openAndReadAll(std::size_t size) {
        open(std::string(size, 'x'), noBuffering);
        ASSERT_EQ(read(0, 1024), static_cast<jint>(size));
        refusal = system().answer("ReadFile", FALSE, ERROR_INVALID_PARAMETER);
    }

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
    refusal = system().answer("ReadFile", FALSE, ERROR_INVALID_PARAMETER);

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
    refusal = system().answer("ReadFile", FALSE, ERROR_INVALID_PARAMETER);

    EXPECT_EQ(read(0, 512), -1);
}

TEST_F(UnbufferedEndTest, DoesNotCountASeek) {
    open(std::string(1024, 'x'), noBuffering);
    ASSERT_EQ(NATIVE(seek)(record, 1024), 1024);
    refusal = system().answer("ReadFile", FALSE, ERROR_INVALID_PARAMETER);

    EXPECT_EQ(read(0, 1024), -2);

    EXPECT_EQ(java.takeException(), invalidParameter());
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

}  // namespace
