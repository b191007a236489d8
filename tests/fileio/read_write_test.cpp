// Reading and writing through an array.
#include "read_write_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

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

TEST_F(ReadWriteTest, RaisesNoFileNotFoundForAReadThatFailsWithThatCode) {
    open("xyz");
    const auto read = system().failCall("ReadFile", 1, ERROR_FILE_NOT_FOUND);

    NATIVE(read__J_3BII)(record, java.byteArray({'a'}), 0, 1);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"ReadFile", ERROR_FILE_NOT_FOUND)));
}

TEST_F(ReadWriteTest, TakesAShortWriteForAWholeOne) {
    open();
    const auto write = REPLACE(WriteFile, [](HANDLE, LPCVOID, DWORD, LPDWORD written, LPOVERLAPPED) -> BOOL {
        *written = 1;
        return TRUE;
    });

    NATIVE(write__J_3BII)(record, java.byteArray({'a', 'b'}), 0, 2);
}

TEST_F(ReadWriteTest, RaisesCodeEightWhenTheJvmHasNoMemoryForTheElements) {
    open("xyz");
    const JavaObject array = java.byteArray({'a'});
    java.failCall("GetByteArrayElements");
    EXPECT_EQ(NATIVE(read__J_3BII)(record, array, 0, 1), -2);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"ReadFile", ERROR_NOT_ENOUGH_MEMORY)));

    java.failCall("GetByteArrayElements");
    NATIVE(write__J_3BII)(record, array, 0, 1);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WriteFile", ERROR_NOT_ENOUGH_MEMORY)));
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

class FailedArrayTest : public ReadWriteTest {
protected:
    // Writes down how the arrays were given back that were so when an exception of that class is made.
    void watchException(const std::string& className) {
        constexpr char constructor[] = "(Ljava/lang/String;)V";
        java.removeMethod(className, "<init>", constructor);
        java.defineMethod(className, "<init>", constructor, [this](const Arguments&) {
            for (const ArrayRelease& release : java.arrayReleases()) {
                modes.push_back(release.mode);
            }
        });
    }

    std::vector<jint> modes;
};

TEST_F(FailedArrayTest, RaisesTheReasonOfAFailedReadOnceTheElementsAreBack) {
    open("xyz");
    watchException("java/io/IOException");
    const auto read = system().failCall("ReadFile", 1, ERROR_LOCK_VIOLATION);

    EXPECT_EQ(NATIVE(read__J_3BII)(record, java.byteArray({'a'}), 0, 1), -2);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"ReadFile", ERROR_LOCK_VIOLATION)));
    EXPECT_THAT(modes, ElementsAre(0));
}

TEST_F(FailedArrayTest, RaisesDiskFullWhenThereIsNoRoomForAnArrayOnceTheElementsAreBack) {
    open();
    watchException("com/qarvo/dov/io/DiskFullException");
    const auto write = system().failCall("WriteFile", 1, ERROR_DISK_FULL);

    NATIVE(write__J_3BII)(record, java.byteArray({'a'}), 0, 1);

    EXPECT_EQ(java.takeException(),
              (Thrown{"com/qarvo/dov/io/DiskFullException", errorMessage(L"WriteFile", ERROR_DISK_FULL)}));
    EXPECT_THAT(modes, ElementsAre(JNI_ABORT));
}

TEST_F(FailedArrayTest, RaisesTheReasonOfAFailedWriteOnceTheElementsAreBack) {
    open();
    watchException("java/io/IOException");
    const auto write = system().failCall("WriteFile", 1, ERROR_SHARING_VIOLATION);

    NATIVE(write__J_3BII)(record, java.byteArray({'a'}), 0, 1);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"WriteFile", ERROR_SHARING_VIOLATION)));
    EXPECT_THAT(modes, ElementsAre(JNI_ABORT));
}

}  // namespace
