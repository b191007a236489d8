// Opening encrypted files, and copying their raw form to a Java stream.
#include <thread>

#include "raw_files.h"

namespace {

using namespace testbed;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr jint interrupted = -1;  // 0xFFFFFFFF
constexpr const char* writeSignature = "([BII)V";

std::string textOf(const JavaObject& array) {
    return {array.bytes().begin(), array.bytes().end()};
}

class EncryptedExport : public WinUtilTest {
protected:
    EncryptedExport() { raw.files[L"C:\\secret"] = content; }

    // A stream that keeps what is written to it; `beforeWrite` runs first, with the number of the call.
    JavaObject stream() {
        return java.collector("write", writeSignature, [this](const Arguments& arguments) {
            beforeWrite(++writes);
            EXPECT_EQ(arguments[1].number(), 0);
            EXPECT_EQ(arguments[2].number(), static_cast<jlong>(arguments[0].object().bytes().size()));
            blocks.push_back(textOf(arguments[0].object()));
        });
    }

    // Exports the file and closes it again.
    jint exportTo(const JavaObject& stream) {
        const jlong context = NATIVE(openEncryptFile)(L"C:\\secret", 0);
        const jint code = NATIVE(readEncryptFile)(context, stream);
        thrown = java.takeException();
        NATIVE(closeEncryptFile)(context);
        return code;
    }

    // A stream whose k-th write throws.
    void throwAtWrite(int k) {
        beforeWrite = [this, k](int number) {
            if (number == k) {
                throw JavaThrow{java.exception("java/io/InterruptedIOException", L"pipe broken")};
            }
        };
    }

    void interruptFromAnotherThread() {
        std::thread([] {
            FakeJava other;
            NATIVE_ON(other, interruptEncryptFile)();
        }).join();
    }

    const std::string content = "first 8|second 8|and the end";
    RawFiles raw{system()};
    std::function<void(int)> beforeWrite = [](int) {};
    int writes = 0;
    std::vector<std::string> blocks;
    Thrown thrown;
};

TEST_F(EncryptedExport, OpensThePathAsGivenWithTheFlagsAsGiven) {
    std::wstring path;
    ULONG flags = 0;
    const auto open =
        REPLACE(OpenEncryptedFileRawW, [&](LPCWSTR given, ULONG givenFlags, PVOID* context) -> DWORD {
            path = given;
            flags = givenFlags;
            EXPECT_EQ(*context, nullptr);
            *context = Ledger::fakeHandle();
            return ERROR_SUCCESS;
        });
    const auto close = REPLACE(CloseEncryptedFileRaw, [](PVOID) {});

    const jlong context = NATIVE(openEncryptFile)(L"C:/a b\\\u00E9\U0001F512",
                                                  CREATE_FOR_IMPORT | CREATE_FOR_DIR | OVERWRITE_HIDDEN);
    NATIVE(closeEncryptFile)(context);

    EXPECT_EQ(path, L"C:/a b\\\u00E9\U0001F512");
    EXPECT_EQ(flags, 7u);
    ASSERT_EQ(close.count(), 1u);
    EXPECT_EQ(close.calls()[0].argument<jlong>(0), context);
}

TEST_F(EncryptedExport, ThrowsWhenTheFileCannotBeOpened) {
    EXPECT_EQ(NATIVE(openEncryptFile)(L"C:\\missing", 0), 0);

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"OpenEncryptedFileRawW", ERROR_FILE_NOT_FOUND)));
}

TEST_F(EncryptedExport, OpensNothingWhenJavaHasNoMemoryForThePath) {
    java.failCall("GetStringChars");

    EXPECT_EQ(NATIVE(openEncryptFile)(L"C:\\secret", 0), 0);

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"OpenEncryptedFileRawW", ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(system().count("OpenEncryptedFileRawW"), 0u);
}

TEST_F(EncryptedExport, GivesTheContextOfAFailedOpenAsItStands) {
    const auto open = REPLACE(OpenEncryptedFileRawW, [](LPCWSTR, ULONG, PVOID* context) -> DWORD {
        *context = reinterpret_cast<PVOID>(0x1234);
        return ERROR_ACCESS_DENIED;
    });

    EXPECT_EQ(NATIVE(openEncryptFile)(L"C:\\secret", 0), 0x1234);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"OpenEncryptedFileRawW", ERROR_ACCESS_DENIED)));
}

TEST_F(EncryptedExport, NamesACodeThatTheSystemHasNoTextFor) {
    const auto open = system().answer("OpenEncryptedFileRawW", 0x1234567);

    NATIVE(openEncryptFile)(L"C:\\secret", 0);

    EXPECT_EQ(java.takeException(),
              ioException(L"[OpenEncryptedFileRawW] (19088743) Failed to obtain error message"));
}

TEST_F(EncryptedExport, WritesEveryBlockToTheStream) {
    EXPECT_EQ(exportTo(stream()), 0);

    EXPECT_EQ(thrown, nothingThrown());
    EXPECT_THAT(blocks, ElementsAre("first 8|", "second 8", "|and the", " end"));
    EXPECT_THAT(raw.answers(), Each(ERROR_SUCCESS));
}

TEST_F(EncryptedExport, WritesNothingForAnEmptyRawForm) {
    raw.files[L"C:\\secret"].clear();

    EXPECT_EQ(exportTo(stream()), 0);

    EXPECT_THAT(blocks, IsEmpty());
}

TEST_F(EncryptedExport, WritesBlocksOfNoByte) {
    const auto read = REPLACE(ReadEncryptedFileRaw, [](PFE_EXPORT_FUNC callback, PVOID record, PVOID) {
        const GuardedBuffer nothing(0, "an empty block");
        return callback(nothing.as<BYTE>(), record, 0);
    });

    EXPECT_EQ(exportTo(stream()), 0);

    EXPECT_THAT(blocks, ElementsAre(""));
}

TEST_F(EncryptedExport, KeepsTheReferenceCountFlat) {
    raw.files[L"C:\\secret"] = std::string(80'000, 'x');

    EXPECT_EQ(exportTo(stream()), 0);

    EXPECT_THAT(blocks, SizeIs(10'000));
    EXPECT_LE(java.peakReferences(), 3u);
}

TEST_F(EncryptedExport, RefusesAStreamThatIsNull) {
    EXPECT_EQ(exportTo(nullptr), 0);

    EXPECT_EQ(thrown, (Thrown{"java/lang/RuntimeException",
                              L"[WindowsUtil.readEncryptFile] jPipeOutputStream cannot be null"}));
    EXPECT_EQ(system().count("ReadEncryptedFileRaw"), 0u);
}

TEST_F(EncryptedExport, RefusesAStreamWithoutWrite) {
    EXPECT_EQ(exportTo(java.collector("write", "(I)V", [](const Arguments&) {})), 0);

    EXPECT_EQ(thrown, ioException(L"[Ljava/io/PipedOutputStream;] Cannot get write() methodID"));
    EXPECT_EQ(system().count("ReadEncryptedFileRaw"), 0u);
}

TEST_F(EncryptedExport, ThrowsTheCodeOfAFailedCopy) {
    raw.failure = ERROR_DISK_FULL;

    EXPECT_EQ(exportTo(stream()), static_cast<jint>(ERROR_DISK_FULL));

    EXPECT_EQ(thrown, ioException(errorMessage(L"ReadEncryptedFileRaw", ERROR_DISK_FULL)));
}

TEST_F(EncryptedExport, ThrowsForAContextThatIsNone) {
    NATIVE(readEncryptFile)(0x77, stream());

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"ReadEncryptedFileRaw", ERROR_INVALID_HANDLE)));
}

TEST_F(EncryptedExport, StopsQuietlyAfterTheBlockThatIsInterrupted) {
    beforeWrite = [this](int number) {
        if (number == 2) {
            interruptFromAnotherThread();
        }
    };

    EXPECT_EQ(exportTo(stream()), interrupted);

    EXPECT_EQ(thrown, nothingThrown());
    EXPECT_THAT(blocks, ElementsAre("first 8|", "second 8"));
    EXPECT_THAT(raw.answers(), ElementsAre(0u, 0u, 0xFFFFFFFF));
}

TEST_F(EncryptedExport, MakesNoJavaCallOnceInterrupted) {
    const jlong context = NATIVE(openEncryptFile)(L"C:\\secret", 0);
    interruptFromAnotherThread();

    EXPECT_EQ(NATIVE(readEncryptFile)(context, stream()), interrupted);

    EXPECT_EQ(java.count("NewByteArray"), 0u);
    NATIVE(closeEncryptFile)(context);
}

TEST_F(EncryptedExport, StaysInterruptedForEveryContextUntilTheNextOpen) {
    const jlong first = NATIVE(openEncryptFile)(L"C:\\secret", 0);
    const jlong second = NATIVE(openEncryptFile)(L"C:\\secret", 0);
    NATIVE(interruptEncryptFile)();

    EXPECT_EQ(NATIVE(readEncryptFile)(first, stream()), interrupted);
    EXPECT_EQ(NATIVE(readEncryptFile)(second, stream()), interrupted);
    EXPECT_EQ(NATIVE(readEncryptFile)(second, stream()), interrupted);
    EXPECT_THAT(blocks, IsEmpty());
    EXPECT_EQ(exportTo(stream()), 0);
    EXPECT_EQ(NATIVE(readEncryptFile)(first, stream()), 0);

    EXPECT_THAT(blocks, SizeIs(8));
    NATIVE(closeEncryptFile)(first);
    NATIVE(closeEncryptFile)(second);
}

TEST_F(EncryptedExport, TakesBackTheInterruptEvenWhenTheOpenFails) {
    const jlong context = NATIVE(openEncryptFile)(L"C:\\secret", 0);
    NATIVE(interruptEncryptFile)();
    NATIVE(openEncryptFile)(L"C:\\missing", 0);
    java.takeException();

    EXPECT_EQ(NATIVE(readEncryptFile)(context, stream()), 0);

    NATIVE(closeEncryptFile)(context);
}

TEST_F(EncryptedExport, LetsTheExceptionOfTheStreamThroughAndCallsItNoMore) {
    throwAtWrite(2);

    EXPECT_EQ(exportTo(stream()), interrupted);

    EXPECT_EQ(thrown, (Thrown{"java/io/InterruptedIOException", L"pipe broken"}));
    EXPECT_EQ(writes, 2);
    EXPECT_EQ(java.count("NewByteArray"), 2u);
    EXPECT_THAT(raw.answers(), ElementsAre(0u, 0u, 0xFFFFFFFF));
}

TEST_F(EncryptedExport, LetsTheExceptionOfTheLastBlockThrough) {
    throwAtWrite(4);

    EXPECT_EQ(exportTo(stream()), 0);

    EXPECT_EQ(thrown, (Thrown{"java/io/InterruptedIOException", L"pipe broken"}));
    EXPECT_THAT(raw.answers(), ElementsAre(0u, 0u, 0u, 0u));
}

TEST_F(EncryptedExport, RaisesNothingOverTheExceptionOfTheStream) {
    throwAtWrite(1);
    raw.failure = ERROR_DISK_FULL;

    EXPECT_EQ(exportTo(stream()), static_cast<jint>(ERROR_DISK_FULL));

    EXPECT_EQ(thrown, (Thrown{"java/io/InterruptedIOException", L"pipe broken"}));
}

TEST_F(EncryptedExport, StopsBeforeABlockThatJavaHasNoMemoryFor) {
    java.failCall("NewByteArray", 2);

    EXPECT_EQ(exportTo(stream()), interrupted);

    EXPECT_EQ(thrown.className, "java/lang/OutOfMemoryError");
    EXPECT_THAT(blocks, ElementsAre("first 8|"));
    EXPECT_THAT(raw.answers(), ElementsAre(0u, 0xFFFFFFFF));
}

TEST_F(EncryptedExport, StopsAtABlockThatNoArrayHolds) {
    const auto read = REPLACE(ReadEncryptedFileRaw, [](PFE_EXPORT_FUNC callback, PVOID record, PVOID) {
        BYTE first = 0;
        return callback(&first, record, 0x80000000);
    });

    EXPECT_EQ(exportTo(stream()), interrupted);

    EXPECT_EQ(thrown.className, "java/lang/NegativeArraySizeException");
    EXPECT_THAT(blocks, IsEmpty());
}

}  // namespace
