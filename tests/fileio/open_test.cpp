// Opening and creating files.
#include "preallocation_steps.h"

namespace {

using namespace testbed;
using ::testing::Each;
using ::testing::ElementsAre;

constexpr std::uint64_t noHandle = ~0ull;
constexpr jint genericRead = static_cast<jint>(GENERIC_READ);

// The arguments of one CreateFileW call.
struct OpenCall {
    std::wstring path;
    DWORD access;
    DWORD share;
    bool withoutSecurity;
    DWORD disposition;
    DWORD flags;
    bool withoutTemplate;
    bool operator==(const OpenCall&) const = default;
};

class OpenTest : public WinUtilTest {
protected:
    // Fails every CreateFileW with a code and records what it was asked for.
    Replacement failOpens(DWORD code) {
        return REPLACE(CreateFileW,
                       [this, code](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                    DWORD disposition, DWORD flags, HANDLE model) -> HANDLE {
                           opens.push_back({path, access, share, security == nullptr, disposition, flags,
                                            model == nullptr});
                           SetLastError(code);
                           return INVALID_HANDLE_VALUE;
                       });
    }

    // Opens for real and records what was asked for.
    Replacement watchOpens() {
        return REPLACE(CreateFileW,
                       [this](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                              DWORD disposition, DWORD flags, HANDLE model) -> HANDLE {
                           opens.push_back({path, access, share, security == nullptr, disposition, flags,
                                            model == nullptr});
                           return REAL(CreateFileW)(path, access, share, security, disposition, flags, model);
                       });
    }

    jlong create(const std::wstring& path, jint access, jint disposition, jint flags, jlong size) {
        return NATIVE(createFileNC__Ljava_lang_String_2IIIJ)(path, access, disposition, flags, size);
    }

    std::vector<OpenCall> opens;
};

// What lies behind a Java long, field by field.
struct OpenRecord {
    const wchar_t* path;
    HANDLE* handleCell;
    std::int64_t position;
    std::int64_t fileSize;
    DWORD flags;
    DWORD access;
    std::int64_t preallocatedSize;
};

OpenRecord recordAt(jlong address) {
    return *reinterpret_cast<const OpenRecord*>(address);
}

TEST_F(OpenTest, KeepsInTheRecordWhatTheCallerAskedFor) {
    const jint flags = static_cast<jint>(FILE_FLAG_SEQUENTIAL_SCAN);
    const auto size = system().watch("GetFileSizeEx");

    const jlong address = create(folder() / L"file", genericRead, CREATE_ALWAYS, flags, 4096);

    const OpenRecord record = recordAt(address);
    EXPECT_EQ(record.path, folder() / L"file");
    EXPECT_EQ(*record.handleCell, size.calls().at(0).argument<HANDLE>(0));
    EXPECT_EQ(record.position, 0);
    EXPECT_EQ(record.fileSize, 4096);
    EXPECT_EQ(record.flags, FILE_FLAG_SEQUENTIAL_SCAN);
    EXPECT_EQ(record.access, GENERIC_READ);
    EXPECT_EQ(record.preallocatedSize, 4096);
    NATIVE(closeFile)(address);
}

TEST_F(OpenTest, LeavesZeroInTheRecordForWhatOpenFileIsNotTold) {
    writeFile(folder() / L"file", "content");

    const jlong address = NATIVE(openFile)(folder() / L"file");

    const OpenRecord record = recordAt(address);
    EXPECT_EQ(record.path, folder() / L"file");
    EXPECT_EQ(record.position, 0);
    EXPECT_EQ(record.fileSize, 7);
    EXPECT_EQ(record.flags, 0u);
    EXPECT_EQ(record.access, 0u);
    EXPECT_EQ(record.preallocatedSize, 0);
    NATIVE(closeFile)(address);
    EXPECT_EQ(system().count("SetEndOfFile"), 0u);
}

TEST_F(OpenTest, OpensAFileForReadingWithBackupSemanticsAndToleratesOtherWriters) {
    writeFile(folder() / L"file.txt", "content");
    const auto watch = watchOpens();

    const jlong record = NATIVE(openFile)(folder() / L"file.txt");
    NATIVE(closeFile)(record);

    EXPECT_GT(record, 0);
    EXPECT_THAT(opens,
                ElementsAre(OpenCall{folder() / L"file.txt", 0x80000000, 3, true, 3, 0x2000001, true}));
}

TEST_F(OpenTest, OpensADirectory) {
    const jlong record = NATIVE(openFile)(folder().path());

    EXPECT_GT(record, 0);
    NATIVE(closeFile)(record);
}

TEST_F(OpenTest, PassesAccessDispositionAndFlagsOnAsTheyAre) {
    const auto watch = watchOpens();
    const jint flags = static_cast<jint>(FILE_FLAG_WRITE_THROUGH | FILE_ATTRIBUTE_HIDDEN);

    const jlong record = NATIVE(createFileNC__Ljava_lang_String_2III)(
        folder() / L"new", static_cast<jint>(GENERIC_WRITE), CREATE_NEW, flags);
    NATIVE(closeFile)(record);

    EXPECT_THAT(opens, ElementsAre(OpenCall{folder() / L"new", GENERIC_WRITE, 3, true, CREATE_NEW,
                                            static_cast<DWORD>(flags), true}));
}

TEST_F(OpenTest, CreatesAMissingFileWithCreateFileN) {
    const auto watch = watchOpens();

    const jlong record = NATIVE(createFileN)(folder() / L"new", genericRead, FILE_ATTRIBUTE_NORMAL);
    NATIVE(closeFile)(record);

    EXPECT_TRUE(fileExists(folder() / L"new"));
    EXPECT_THAT(opens, ElementsAre(OpenCall{folder() / L"new", GENERIC_READ, 3, true, 4,
                                            FILE_ATTRIBUTE_NORMAL, true}));
}

TEST_F(OpenTest, TriesTheLongFormOnce) {
    const auto fail = failOpens(ERROR_ACCESS_DENIED);

    NATIVE(openFile)(L"C:/dir/file");

    ASSERT_EQ(opens.size(), 2u);
    EXPECT_EQ(opens[0].path, L"C:/dir/file");
    EXPECT_EQ(opens[1].path, L"\\\\?\\C:\\dir\\file");
    EXPECT_EQ(opens[1].flags, opens[0].flags);
    java.takeException();
}

TEST_F(OpenTest, TriesALongFormAsItIsAndNoMore) {
    const auto fail = failOpens(ERROR_ACCESS_DENIED);

    NATIVE(openFile)(L"\\\\?\\C:\\dir\\file");

    EXPECT_EQ(opens.size(), 1u);
    java.takeException();
}

TEST_F(OpenTest, OpensByTheLongFormWhatThePlainOneCannot) {
    writeFile(folder() / L"file", "content");
    const auto open =
        REPLACE(CreateFileW,
                [this](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                       DWORD disposition, DWORD flags, HANDLE model) -> HANDLE {
                    if (std::wstring_view(path).starts_with(L"\\\\?\\")) {
                        return REAL(CreateFileW)(path, access, share, security, disposition, flags, model);
                    }
                    SetLastError(ERROR_PATH_NOT_FOUND);
                    return INVALID_HANDLE_VALUE;
                });

    const jlong record = NATIVE(openFile)(folder() / L"file");

    EXPECT_EQ(NATIVE(getFileSize)(record), 7);
    NATIVE(closeFile)(record);
}

struct OpenError {
    DWORD code;
    const char* exceptionClass;
};

class OpenErrorTest : public OpenTest, public ::testing::WithParamInterface<OpenError> {};

TEST_P(OpenErrorTest, RaisesTheExceptionOfItsCodeWithTheTagOfTheMethodThatOpens) {
    const auto fail = failOpens(GetParam().code);
    const auto sleep = system().answer("Sleep", 0);

    EXPECT_EQ(NATIVE(openFile)(L"C:\\file"), 0);

    EXPECT_EQ(java.takeException(),
              (Thrown{GetParam().exceptionClass, errorMessage(L"openFile", GetParam().code)}));
}

TEST_P(OpenErrorTest, RaisesTheExceptionOfItsCodeWithTheTagOfTheCallThatCreates) {
    const auto fail = failOpens(GetParam().code);
    const auto sleep = system().answer("Sleep", 0);

    EXPECT_EQ(create(L"C:\\file", genericRead, OPEN_EXISTING, 0, 0), 0);

    EXPECT_EQ(java.takeException(),
              (Thrown{GetParam().exceptionClass, errorMessage(L"CreateFileW", GetParam().code)}));
}

INSTANTIATE_TEST_SUITE_P(Codes, OpenErrorTest,
                         ::testing::Values(OpenError{ERROR_FILE_NOT_FOUND, "java/io/FileNotFoundException"},
                                           OpenError{ERROR_PATH_NOT_FOUND, "java/io/FileNotFoundException"},
                                           OpenError{ERROR_CANT_ACCESS_FILE, "java/io/FileNotFoundException"},
                                           OpenError{ERROR_DISK_FULL, "com/qarvo/dov/io/DiskFullException"},
                                           OpenError{ERROR_SHARING_VIOLATION,
                                                     "com/qarvo/dov/io/SharingViolationException"},
                                           OpenError{ERROR_ACCESS_DENIED, "java/io/IOException"},
                                           OpenError{ERROR_INVALID_NAME, "java/io/IOException"}),
                         [](const auto& error) { return "Code" + std::to_string(error.param.code); });

TEST_F(OpenTest, WaitsHalfASecondTenTimesForASharingViolationToEnd) {
    const auto fail = failOpens(ERROR_SHARING_VIOLATION);
    const auto sleep = system().answer("Sleep", 0);

    NATIVE(openFile)(L"C:\\busy");

    EXPECT_EQ(java.takeException(),
              (Thrown{"com/qarvo/dov/io/SharingViolationException", errorMessage(L"openFile", 32)}));
    std::vector<DWORD> waits;
    for (const RecordedCall& call : sleep.calls()) {
        waits.push_back(call.argument<DWORD>(0));
    }
    EXPECT_EQ(waits.size(), 10u);
    EXPECT_THAT(waits, Each(500u));
    // Eleven rounds of the plain and the long form.
    EXPECT_EQ(opens.size(), 22u);
}

TEST_F(OpenTest, OpensAFileThatIsSharedAgainAfterThreeWaits) {
    writeFile(folder() / L"busy", "content");
    HANDLE holder =
        ::CreateFileW((folder() / L"busy").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(holder, INVALID_HANDLE_VALUE);
    int waits = 0;
    const auto sleep = REPLACE(Sleep, [&](DWORD) {
        if (++waits == 3) {
            ::CloseHandle(holder);
        }
    });

    const jlong record = NATIVE(openFile)(folder() / L"busy");

    EXPECT_GT(record, 0);
    EXPECT_EQ(waits, 3);
    NATIVE(closeFile)(record);
}

TEST_F(OpenTest, TakesTheCodeOfTheLongFormsFailure) {
    const auto open = REPLACE(
        CreateFileW, [](LPCWSTR path, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) -> HANDLE {
            SetLastError(std::wstring_view(path).starts_with(L"\\\\?\\") ? ERROR_ACCESS_DENIED
                                                                         : ERROR_FILE_NOT_FOUND);
            return INVALID_HANDLE_VALUE;
        });

    NATIVE(openFile)(L"C:\\file");

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"openFile", ERROR_ACCESS_DENIED)));
}

TEST_F(OpenTest, SaysThatThereIsNoTextForACodeWithoutOne) {
    constexpr DWORD codeWithoutText = 0x2FFFFFFF;
    ASSERT_EQ(systemText(codeWithoutText), L"");
    const auto fail = failOpens(codeWithoutText);

    NATIVE(openFile)(L"C:\\file");

    EXPECT_EQ(java.takeException(), ioException(L"[openFile] (805306367) Failed to obtain error message"));
}

// Of an open it would be a DiskFullException.
constexpr DWORD sizeFailure = ERROR_DISK_FULL;

// The required leak: the record, the copy of its path, the cell and the open handle.
class LeftRecordTest : public OpenTest {
protected:
    void SetUp() override {
        ledger().expectLeft("malloc", 3);
        ledger().expectLeft("CreateFileW", 1);
    }

    // The system does not forget the handle, and the folder cannot be removed before it is closed.
    void TearDown() override { ::CloseHandle(left); }

    HANDLE left = INVALID_HANDLE_VALUE;
    Replacement size = REPLACE(GetFileSizeEx, [this](HANDLE file, PLARGE_INTEGER) -> BOOL {
        left = file;
        SetLastError(sizeFailure);
        return FALSE;
    });
};

TEST_F(LeftRecordTest, StaysWhenTheSizeOfAnOpenedFileCannotBeRead) {
    writeFile(folder() / L"file", "content");

    EXPECT_EQ(NATIVE(openFile)(folder() / L"file"), 0);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"GetFileSizeEx", sizeFailure)));
}

TEST_F(LeftRecordTest, StaysWhenTheSizeOfACreatedFileCannotBeRead) {
    EXPECT_EQ(create(folder() / L"file", genericRead, CREATE_ALWAYS, 0, 0), 0);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"GetFileSizeEx", sizeFailure)));
}

TEST_F(LeftRecordTest, StaysWithoutThePrivilegeOfAPreallocation) {
    PreallocationSteps steps(system());

    EXPECT_EQ(create(folder() / L"file", genericRead, CREATE_ALWAYS, 0, 4096), 0);

    EXPECT_EQ(steps.taken().back(), privilegeOff);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"GetFileSizeEx", sizeFailure)));
}

TEST_F(OpenTest, FailsCleanlyWhereverMemoryRunsOut) {
    writeFile(folder() / L"file", "content");
    for (std::size_t k = 1; k <= 3; ++k) {
        const auto fail = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_EQ(NATIVE(openFile)(folder() / L"file"), 0) << "allocation " << k;

        EXPECT_EQ(java.takeException(), ioException(errorMessage(L"openFile", ERROR_NOT_ENOUGH_MEMORY)));
    }
}

TEST_F(OpenTest, HandsTheSystemNoNullWhereThereIsNoMemoryForTheLongForm) {
    const auto fail = failOpens(ERROR_PATH_NOT_FOUND);
    {
        const auto allocation = system().failCall("malloc", 2, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_EQ(NATIVE(openFile)(L"C:\\file"), 0);

        EXPECT_EQ(java.takeException(), ioException(errorMessage(L"openFile", ERROR_NOT_ENOUGH_MEMORY)));
    }
    const auto allocation = system().failCall("malloc", 2, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_EQ(create(L"C:\\file", genericRead, OPEN_EXISTING, 0, 0), 0);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"createFileN", ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(opens.size(), 2u);
}

TEST_F(OpenTest, WaitsNoLongerForASharingViolationOnceMemoryIsGone) {
    const auto fail = failOpens(ERROR_SHARING_VIOLATION);
    const auto sleep = system().answer("Sleep", 0);
    // The cell, and the long form of each round.
    const auto allocation = system().failCall("malloc", 4, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_EQ(NATIVE(openFile)(L"C:\\busy"), 0);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"openFile", ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(sleep.count(), 2u);
    EXPECT_EQ(opens.size(), 5u);
}

TEST_F(OpenTest, RaisesCodeEightWhereTheJvmHasNoMemoryForThePath) {
    java.failCall("GetStringChars");
    EXPECT_EQ(NATIVE(openFile)(L"C:\\file"), 0);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"openFile", ERROR_NOT_ENOUGH_MEMORY)));

    java.failCall("GetStringChars");
    EXPECT_EQ(create(L"C:\\file", genericRead, CREATE_ALWAYS, 0, 0), 0);
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"createFileN", ERROR_NOT_ENOUGH_MEMORY)));
    EXPECT_EQ(system().count("CreateFileW"), 0u);
}

TEST_F(OpenTest, ClosesAFileOnceAndFreesItsRecord) {
    const jlong record = create(folder() / L"file", genericRead, CREATE_ALWAYS, 0, 0);
    ASSERT_FALSE(ledger().isEmpty());

    NATIVE(closeFile)(record);

    EXPECT_TRUE(ledger().isEmpty());
    EXPECT_EQ(system().count("CloseHandle"), 1u);
    EXPECT_EQ(system().count("SetEndOfFile"), 0u);
}

TEST_F(OpenTest, ClosesNothingForARecordOfZeroAndBelow) {
    NATIVE(closeFile)(0);
    NATIVE(closeFile)(-1);

    EXPECT_EQ(system().count("CloseHandle"), 0u);
}

TEST_F(OpenTest, CannotBeToldItsMessageWhenTheExceptionClassIsMissing) {
    java.removeClass("java/io/IOException");
    const auto fail = failOpens(ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(openFile)(L"C:\\file"), 0);

    EXPECT_EQ(java.takeException().className, "java/lang/NoClassDefFoundError");
}

TEST_F(OpenTest, LeavesTheErrorOfAnExceptionClassWithoutItsConstructor) {
    java.removeMethod("java/io/IOException", "<init>", "(Ljava/lang/String;)V");
    const auto fail = failOpens(ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(openFile)(L"C:\\file"), 0);

    EXPECT_EQ(java.takeException().className, "java/lang/NoSuchMethodError");
}

}  // namespace
