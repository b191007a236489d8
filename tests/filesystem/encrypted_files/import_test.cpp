// Making encrypted files from their raw form, read from a Java stream.
#include "raw_files.h"

namespace {

using namespace testbed;
using ::testing::Each;
using ::testing::ElementsAre;

constexpr const char* readSignature = "([BII)I";
constexpr jint endOfStream = -1;

const Thrown badLength = ioException(L"[WindowsUtil.writeEncryptFile] read() returned a length out of range");
const Thrown noMemory = ioException(errorMessage(L"WriteEncryptedFileRaw", ERROR_NOT_ENOUGH_MEMORY));
const Thrown streamBroke{"java/io/EOFException", L"stream broken"};

class EncryptedImport : public WinUtilTest {
protected:
    // A stream that gives these texts, one for each call, and then its end.
    JavaObject streamOf(std::vector<std::string> texts) {
        return stream([texts = std::move(texts)](int number, std::vector<jbyte>& array) -> jint {
            const auto index = static_cast<std::size_t>(number - 1);
            if (index >= texts.size()) {
                return endOfStream;
            }
            std::ranges::copy(texts[index], array.begin());
            return static_cast<jint>(texts[index].size());
        });
    }

    // A stream that answers what `read` says, given the number of the call and the array to fill.
    template <class Read>
    JavaObject stream(Read read) {
        return java.collector("read", readSignature,
                              [this, read = std::move(read)](const Arguments& arguments) -> Value {
                                  std::vector<jbyte>& array = arguments[0].object().bytes();
                                  EXPECT_EQ(array.size(), raw.blockSize);
                                  EXPECT_EQ(arguments[1].number(), 0);
                                  EXPECT_EQ(arguments[2].number(), static_cast<jlong>(array.size()));
                                  return read(++reads, array);
                              });
    }

    // Imports the file and closes it again. `kept` counts the blocks whose elements stay with the library.
    jint importFrom(const JavaObject& stream, std::size_t kept) {
        const jlong context = NATIVE(openEncryptFile)(L"C:\\secret", CREATE_FOR_IMPORT);
        java.expectUnreleased("GetByteArrayElements", kept);
        const jint code = NATIVE(writeEncryptFile)(context, stream);
        thrown = java.takeException();
        NATIVE(closeEncryptFile)(context);
        return code;
    }

    // Imports from a stream that gives one block and then answers the second read so.
    jint importWithSecondRead(std::function<jint(std::vector<jbyte>&)> second) {
        return importFrom(stream([second = std::move(second)](int number, std::vector<jbyte>& array) -> jint {
                              std::ranges::fill(array, 'a');
                              return number == 1 ? static_cast<jint>(array.size()) : second(array);
                          }),
                          1);
    }

    const std::string& imported() { return raw.files[L"C:\\secret"]; }

    RawFiles raw{system()};
    int reads = 0;
    Thrown thrown;
};

// The elements of each block stay with the library: it must not release them.
TEST_F(EncryptedImport, CopiesTheStreamBlockByBlockToItsEnd) {
    EXPECT_EQ(importFrom(streamOf({"8 bytes.", "less", std::string("\0\x7F\x80\xFF", 4)}), 3), 0);

    EXPECT_EQ(thrown, nothingThrown());
    EXPECT_EQ(imported(), "8 bytes.less" + std::string("\0\x7F\x80\xFF", 4));
    EXPECT_THAT(raw.lengths(), ElementsAre(8u, 4u, 4u, 0u));
    EXPECT_THAT(raw.answers(), Each(ERROR_SUCCESS));
    EXPECT_TRUE(java.arrayReleases().empty());
}

TEST_F(EncryptedImport, MakesAnEmptyRawFormFromAnEmptyStream) {
    EXPECT_EQ(importFrom(streamOf({}), 0), 0);

    EXPECT_EQ(thrown, nothingThrown());
    EXPECT_EQ(imported(), "");
    EXPECT_THAT(raw.lengths(), ElementsAre(0u));
    EXPECT_EQ(java.count("GetByteArrayElements"), 0u);
}

TEST_F(EncryptedImport, EndsAtAReadOfNoByte) {
    EXPECT_EQ(importFrom(streamOf({"8 bytes.", "", "never read"}), 2), 0);

    EXPECT_EQ(imported(), "8 bytes.");
    EXPECT_EQ(reads, 2);
}

TEST_F(EncryptedImport, IsNotInterrupted) {
    const JavaObject stream = streamOf({"8 bytes."});
    const jlong context = NATIVE(openEncryptFile)(L"C:\\secret", CREATE_FOR_IMPORT);
    NATIVE(interruptEncryptFile)();
    java.expectUnreleased("GetByteArrayElements", 1);

    EXPECT_EQ(NATIVE(writeEncryptFile)(context, stream), 0);

    EXPECT_EQ(imported(), "8 bytes.");
    NATIVE(closeEncryptFile)(context);
}

TEST_F(EncryptedImport, KeepsTheReferenceCountFlat) {
    const JavaObject thousandBlocks = stream([](int number, std::vector<jbyte>& array) -> jint {
        return number > 1000 ? endOfStream : static_cast<jint>(array.size());
    });

    EXPECT_EQ(importFrom(thousandBlocks, 1000), 0);

    EXPECT_EQ(imported().size(), 8000u);
    EXPECT_LE(java.peakReferences(), 3u);
}

TEST_F(EncryptedImport, RefusesAStreamWithoutRead) {
    EXPECT_EQ(importFrom(java.collector("read", "()I", [](const Arguments&) -> Value { return jint{0}; }), 0),
              0);

    EXPECT_EQ(thrown, ioException(L"[Ljava/io/InputStream;] Cannot get read() methodID"));
    EXPECT_EQ(system().count("WriteEncryptedFileRaw"), 0u);
}

TEST_F(EncryptedImport, RefusesAStreamThatIsNull) {
    EXPECT_EQ(importFrom(nullptr, 0), 0);

    EXPECT_EQ(thrown, ioException(L"[Ljava/io/InputStream;] Cannot get read() methodID"));
    EXPECT_EQ(system().count("WriteEncryptedFileRaw"), 0u);
}

TEST_F(EncryptedImport, ThrowsTheCodeOfAFailedCopy) {
    raw.failure = ERROR_DISK_FULL;

    EXPECT_EQ(importFrom(streamOf({}), 0), static_cast<jint>(ERROR_DISK_FULL));

    EXPECT_EQ(thrown, ioException(errorMessage(L"WriteEncryptedFileRaw", ERROR_DISK_FULL)));
}

TEST_F(EncryptedImport, SaysNothingOfTheCodeOfAnInterruption) {
    raw.failure = 0xFFFFFFFF;

    EXPECT_EQ(importFrom(streamOf({}), 0), -1);

    EXPECT_EQ(thrown, nothingThrown());
}

TEST_F(EncryptedImport, EndsAtTheExceptionOfTheStreamAndLetsItThrough) {
    EXPECT_EQ(importWithSecondRead([&](std::vector<jbyte>&) -> jint {
                  throw JavaThrow{java.exception(streamBroke.className, streamBroke.message)};
              }),
              static_cast<jint>(ERROR_READ_FAULT));

    EXPECT_EQ(thrown, streamBroke);
    EXPECT_EQ(imported(), "aaaaaaaa");
    EXPECT_THAT(raw.lengths(), ElementsAre(8u, 0u));
    EXPECT_THAT(raw.answers(), ElementsAre(0u, ERROR_READ_FAULT));
}

TEST_F(EncryptedImport, MakesNoJavaCallBehindTheExceptionOfTheStream) {
    raw.extraBlocks = 2;

    importWithSecondRead([&](std::vector<jbyte>&) -> jint {
        throw JavaThrow{java.exception(streamBroke.className, streamBroke.message)};
    });

    EXPECT_EQ(thrown, streamBroke);
    EXPECT_EQ(reads, 2);
    EXPECT_EQ(java.count("NewByteArray"), 2u);
    EXPECT_THAT(raw.lengths(), ElementsAre(8u, 0u, 0u, 0u));
    EXPECT_THAT(raw.answers(), ElementsAre(0u, ERROR_READ_FAULT, ERROR_READ_FAULT, ERROR_READ_FAULT));
}

TEST_F(EncryptedImport, RaisesNothingOverTheExceptionOfTheStream) {
    raw.failure = ERROR_HANDLE_EOF;

    EXPECT_EQ(importWithSecondRead([&](std::vector<jbyte>&) -> jint {
                  throw JavaThrow{java.exception(streamBroke.className, streamBroke.message)};
              }),
              static_cast<jint>(ERROR_HANDLE_EOF));

    EXPECT_EQ(thrown, streamBroke);
}

TEST_F(EncryptedImport, RefusesALengthBelowMinusOne) {
    EXPECT_EQ(importWithSecondRead([](std::vector<jbyte>&) -> jint { return -2; }),
              static_cast<jint>(ERROR_INVALID_DATA));

    EXPECT_EQ(thrown, badLength);
    EXPECT_EQ(imported(), "aaaaaaaa");
    EXPECT_THAT(raw.lengths(), ElementsAre(8u, 0u));
    EXPECT_THAT(raw.answers(), ElementsAre(0u, ERROR_INVALID_DATA));
}

TEST_F(EncryptedImport, RefusesALengthBeyondTheBlock) {
    EXPECT_EQ(
        importWithSecondRead([](std::vector<jbyte>& array) { return static_cast<jint>(array.size() + 1); }),
        static_cast<jint>(ERROR_INVALID_DATA));

    EXPECT_EQ(thrown, badLength);
    EXPECT_EQ(imported(), "aaaaaaaa");
    EXPECT_THAT(raw.lengths(), ElementsAre(8u, 0u));
    EXPECT_THAT(raw.answers(), ElementsAre(0u, ERROR_INVALID_DATA));
}

TEST_F(EncryptedImport, AsksNoFurtherBehindAWrongLength) {
    raw.extraBlocks = 2;
    raw.failure = ERROR_HANDLE_EOF;

    EXPECT_EQ(importWithSecondRead([](std::vector<jbyte>&) -> jint { return -2; }),
              static_cast<jint>(ERROR_HANDLE_EOF));

    EXPECT_EQ(thrown, badLength);
    EXPECT_EQ(reads, 2);
}

TEST_F(EncryptedImport, EndsWhereJavaHasNoMemoryForABlock) {
    java.failCall("NewByteArray", 2);

    EXPECT_EQ(importFrom(streamOf({"8 bytes.", "8 bytes."}), 1), static_cast<jint>(ERROR_NOT_ENOUGH_MEMORY));

    EXPECT_EQ(thrown.className, "java/lang/OutOfMemoryError");
    EXPECT_EQ(imported(), "8 bytes.");
    EXPECT_EQ(reads, 1);
    EXPECT_THAT(raw.lengths(), ElementsAre(8u, 0u));
}

TEST_F(EncryptedImport, EndsWhereJavaHasNoMemoryForTheElements) {
    java.failCall("GetByteArrayElements", 2);

    EXPECT_EQ(importFrom(streamOf({"8 bytes.", "8 bytes."}), 1), static_cast<jint>(ERROR_NOT_ENOUGH_MEMORY));

    EXPECT_EQ(thrown, noMemory);
    EXPECT_EQ(imported(), "8 bytes.");
    EXPECT_THAT(raw.lengths(), ElementsAre(8u, 0u));
    EXPECT_THAT(raw.answers(), ElementsAre(0u, ERROR_NOT_ENOUGH_MEMORY));
}

TEST_F(EncryptedImport, ThrowsForABlockThatIsMissingAlsoWhenTheSystemMakesNothingOfIt) {
    raw.failure = ERROR_SUCCESS;
    java.failCall("GetByteArrayElements", 2);

    EXPECT_EQ(importFrom(streamOf({"8 bytes.", "8 bytes."}), 1), 0);

    EXPECT_EQ(thrown, noMemory);
}

}  // namespace
