// The extended-length forms of paths, and the calls that are made once more with them.
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

struct Form {
    const char* name;
    const wchar_t* given;
    const wchar_t* longForm;
};

class LongFormTest : public WinUtilTest, public ::testing::WithParamInterface<Form> {};

TEST_P(LongFormTest, IsTriedBehindThePathAsGiven) {
    std::vector<std::wstring> asked;
    const auto fail = REPLACE(GetFileAttributesExW, [&](LPCWSTR path, GET_FILEEX_INFO_LEVELS, LPVOID) {
        asked.emplace_back(path);
        return FALSE;
    });

    EXPECT_FALSE(NATIVE(exists)(GetParam().given));

    EXPECT_THAT(asked, ElementsAre(GetParam().given, GetParam().longForm));
}

INSTANTIATE_TEST_SUITE_P(
    Paths, LongFormTest,
    ::testing::Values(Form{"Drive", L"C:\\data\\file.txt", L"\\\\?\\C:\\data\\file.txt"},
                      Form{"DriveWithSlashes", L"C:/data/file.txt", L"\\\\?\\C:\\data\\file.txt"},
                      Form{"Share", L"\\\\server\\share/dir", L"\\\\?\\UNC\\server\\share\\dir"},
                      Form{"ShareWithSlashesInFront", L"//server/share", L"\\\\?\\\\\\server\\share"},
                      Form{"LongForm", L"\\\\?\\C:/x", L"\\\\?\\C:/x"},
                      Form{"LongFormOfAShare", L"\\\\?\\UNC\\server/x", L"\\\\?\\UNC\\server/x"},
                      Form{"Device", L"\\\\.\\PhysicalDrive0", L"\\\\.\\PhysicalDrive0"},
                      Form{"DeviceWithSlash", L"\\\\.\\C:/x", L"\\\\.\\C:/x"},
                      Form{"PrefixInTheMiddle", L"C:\\\\?\\x", L"\\\\?\\C:\\\\?\\x"},
                      Form{"DevicePrefixInTheMiddle", L"a\\\\.\\b/c", L"\\\\?\\a\\\\.\\b\\c"},
                      Form{"UnfinishedPrefix", L"\\\\?", L"\\\\?\\UNC\\?"},
                      Form{"UnfinishedDevice", L"\\\\.", L"\\\\?\\UNC\\."},
                      Form{"TwoBackslashes", L"\\\\", L"\\\\?\\UNC\\"},
                      Form{"OneBackslash", L"\\x", L"\\\\?\\\\x"},
                      Form{"Relative", L"dir/file", L"\\\\?\\dir\\file"}, Form{"Empty", L"", L"\\\\?\\"},
                      Form{"DotsAndSpaces", L"C:\\a\\..\\b. ", L"\\\\?\\C:\\a\\..\\b. "},
                      Form{"BeyondTheBasicPlane", L"C:/\xD83D\xDE00", L"\\\\?\\C:\\\xD83D\xDE00"}),
    [](const auto& form) { return form.param.name; });

// Every call that the workers make, in order and with its arguments. Each fails with a code of its own, but
// for the one that a test wants to succeed.
class RetryTest : public WinUtilTest {
protected:
    static constexpr DWORD firstCode = 1000;

    // Logs a call; the answer of this one.
    BOOL next(std::wstring call) {
        calls.push_back(std::move(call));
        if (calls.size() >= succeedFrom) {
            return TRUE;
        }
        SetLastError(firstCode + static_cast<DWORD>(calls.size()));
        return FALSE;
    }

    static std::wstring text(LPCWSTR path) { return path == nullptr ? L"(none)" : path; }

    std::vector<std::wstring> calls;
    std::size_t succeedFrom = SIZE_MAX;
    DWORD attributes = FILE_ATTRIBUTE_ARCHIVE;
    HANDLE file = Ledger::fakeHandle();

private:
    const Replacement query_ =
        REPLACE(GetFileAttributesExW, [this](LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data) {
            const BOOL done = next(L"query " + text(path) + L" " + std::to_wstring(level));
            if (done) {
                // Five seconds after the beginning of Java time.
                *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data) = {
                    attributes, {}, {}, {0xD8397080, 0x019DB1DE}, 0, 0};
            }
            return done;
        });
    const Replacement make_ = REPLACE(CreateDirectoryW, [this](LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
        EXPECT_EQ(security, nullptr);
        return next(L"make " + text(path));
    });
    const Replacement attribute_ = REPLACE(SetFileAttributesW, [this](LPCWSTR path, DWORD word) {
        return next(L"attributes " + text(path) + L" " + std::to_wstring(word));
    });
    const Replacement delete_ =
        REPLACE(DeleteFileW, [this](LPCWSTR path) { return next(L"delete " + text(path)); });
    const Replacement move_ = REPLACE(MoveFileW, [this](LPCWSTR from, LPCWSTR to) {
        return next(L"move " + text(from) + L" to " + text(to));
    });
    const Replacement open_ =
        REPLACE(CreateFileW,
                [this](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                       DWORD disposition, DWORD flags, HANDLE model) -> HANDLE {
                    EXPECT_EQ(access, 0x40000000u);
                    EXPECT_EQ(share, 3u);
                    EXPECT_EQ(security, nullptr);
                    EXPECT_EQ(disposition, 3u);
                    EXPECT_EQ(flags, 0x2200080u);
                    EXPECT_EQ(model, nullptr);
                    return next(L"open " + text(path)) ? file : INVALID_HANDLE_VALUE;
                });
    const Replacement time_ = REPLACE(SetFileTime, [this](HANDLE handle, const FILETIME* made,
                                                          const FILETIME* read, const FILETIME* written) {
        EXPECT_EQ(handle, file);
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(read, nullptr);
        const std::uint64_t units = std::uint64_t{written->dwHighDateTime} << 32 | written->dwLowDateTime;
        return next(L"time " + std::to_wstring(units));
    });
    const Replacement close_ = REPLACE(CloseHandle, [this](HANDLE handle) {
        calls.push_back(handle == file                   ? L"close"
                        : handle == INVALID_HANDLE_VALUE ? L"close invalid"
                                                         : L"close something else");
        return TRUE;
    });
};

TEST_F(RetryTest, AsksTwiceWhetherAPathExists) {
    EXPECT_FALSE(NATIVE(exists)(L"C:/x"));

    EXPECT_THAT(calls, ElementsAre(L"query C:/x 0", L"query \\\\?\\C:\\x 0"));
}

TEST_F(RetryTest, AsksOnceWhenTheFirstCallSucceeds) {
    succeedFrom = 1;

    EXPECT_TRUE(NATIVE(exists)(L"C:/x"));

    EXPECT_THAT(calls, ElementsAre(L"query C:/x 0"));
}

TEST_F(RetryTest, TriesALongFormASecondTimeAsItIs) {
    EXPECT_FALSE(NATIVE(exists)(L"\\\\?\\C:\\x"));

    EXPECT_THAT(calls, ElementsAre(L"query \\\\?\\C:\\x 0", L"query \\\\?\\C:\\x 0"));
}

TEST_F(RetryTest, FindsByTheLongFormWhatThePlainOneDoesNot) {
    succeedFrom = 2;
    attributes = FILE_ATTRIBUTE_DIRECTORY;
    EXPECT_TRUE(NATIVE(exists)(L"C:/x"));

    calls.clear();
    EXPECT_TRUE(NATIVE(isDir)(L"C:/x"));

    EXPECT_THAT(calls, ElementsAre(L"query C:/x 0", L"query \\\\?\\C:\\x 0"));
}

TEST_F(RetryTest, IsNoDirectoryWithoutTheBitOrWithoutAnswer) {
    EXPECT_FALSE(NATIVE(isDir)(L"C:\\x"));
    EXPECT_EQ(calls.size(), 2u);

    succeedFrom = 1;
    attributes = ~static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_FALSE(NATIVE(isDir)(L"C:\\x"));
}

TEST_F(RetryTest, ReadsTheTimeByTheLongFormOrNotAtAll) {
    EXPECT_EQ(NATIVE(lastModified)(L"C:/x"), 0);
    EXPECT_THAT(calls, ElementsAre(L"query C:/x 0", L"query \\\\?\\C:\\x 0"));

    calls.clear();
    succeedFrom = 2;
    EXPECT_EQ(NATIVE(lastModified)(L"C:/x"), 5000);
}

TEST_F(RetryTest, ClearsTheAttributesBeforeEachDelete) {
    // The path exists; then everything fails again.
    succeedFrom = 1;
    const auto fail = REPLACE(SetFileAttributesW, [this](LPCWSTR path, DWORD word) {
        calls.push_back(L"attributes " + std::wstring(path) + L" " + std::to_wstring(word));
        return FALSE;
    });
    const auto refuse = REPLACE(DeleteFileW, [this](LPCWSTR path) {
        calls.push_back(L"delete " + std::wstring(path));
        return FALSE;
    });

    EXPECT_FALSE(NATIVE(delete)(L"C:/x"));

    EXPECT_THAT(calls, ElementsAre(L"query C:/x 0", L"attributes C:/x 128", L"delete C:/x",
                                   L"attributes \\\\?\\C:\\x 128", L"delete \\\\?\\C:\\x"));
}

TEST_F(RetryTest, DeletesByThePlainFormAlone) {
    succeedFrom = 1;

    EXPECT_TRUE(NATIVE(delete)(L"C:/x"));

    EXPECT_THAT(calls, ElementsAre(L"query C:/x 0", L"attributes C:/x 128", L"delete C:/x"));
}

TEST_F(RetryTest, DeletesNothingThatIsNotThere) {
    EXPECT_FALSE(NATIVE(delete)(L"C:/x"));

    EXPECT_THAT(calls, ElementsAre(L"query C:/x 0", L"query \\\\?\\C:\\x 0"));
}

TEST_F(RetryTest, DeletesByTheLongFormWhatThePlainOneDoesNot) {
    succeedFrom = 1;
    const auto refuse = REPLACE(DeleteFileW, [this](LPCWSTR path) {
        calls.push_back(L"delete " + std::wstring(path));
        return static_cast<BOOL>(std::wstring_view(path).starts_with(L"\\\\?\\"));
    });

    EXPECT_TRUE(NATIVE(delete)(L"C:/x"));

    EXPECT_EQ(calls.back(), L"delete \\\\?\\C:\\x");
}

TEST_F(RetryTest, RenamesWithBothLongForms) {
    EXPECT_FALSE(NATIVE(renameTo)(L"C:/x", L"\\\\server\\share\\y"));

    EXPECT_THAT(calls, ElementsAre(L"move C:/x to \\\\server\\share\\y",
                                   L"move \\\\?\\C:\\x to \\\\?\\UNC\\server\\share\\y"));
}

TEST_F(RetryTest, RenamesOnceWhenTheFirstCallSucceeds) {
    succeedFrom = 1;

    EXPECT_TRUE(NATIVE(renameTo)(L"C:/x", L"C:/y"));

    EXPECT_THAT(calls, ElementsAre(L"move C:/x to C:/y"));
}

TEST_F(RetryTest, RenamesOnceWhenBothNamesAreInLongForm) {
    EXPECT_FALSE(NATIVE(renameTo)(L"\\\\?\\C:\\x", L"\\\\?\\C:\\y"));

    EXPECT_THAT(calls, ElementsAre(L"move \\\\?\\C:\\x to \\\\?\\C:\\y"));
}

TEST_F(RetryTest, RenamesTwiceWhenOneNameIsInLongForm) {
    succeedFrom = 2;

    EXPECT_TRUE(NATIVE(renameTo)(L"\\\\?\\C:\\x", L"C:/y"));
    EXPECT_THAT(calls, ElementsAre(L"move \\\\?\\C:\\x to C:/y", L"move \\\\?\\C:\\x to \\\\?\\C:\\y"));

    calls.clear();
    EXPECT_TRUE(NATIVE(renameTo)(L"C:/x", L"\\\\?\\C:\\y"));
    EXPECT_THAT(calls, ElementsAre(L"move C:/x to \\\\?\\C:\\y", L"move \\\\?\\C:\\x to \\\\?\\C:\\y"));
}

TEST_F(RetryTest, ClosesEvenTheHandleThatItDidNotGet) {
    ledger().allowUnknown("CloseHandle");

    EXPECT_FALSE(NATIVE(setLastModified)(L"C:/x", 5000));

    EXPECT_THAT(calls, ElementsAre(L"open C:/x", L"open \\\\?\\C:\\x", L"close invalid"));
}

TEST_F(RetryTest, SetsTheTimeThroughTheLongForm) {
    succeedFrom = 2;

    EXPECT_TRUE(NATIVE(setLastModified)(L"C:/x", 5000));

    EXPECT_THAT(calls, ElementsAre(L"open C:/x", L"open \\\\?\\C:\\x", L"time 116444736050000000", L"close"));
}

TEST_F(RetryTest, ClosesAFileWhoseTimeCannotBeSet) {
    succeedFrom = 1;
    const auto refuse =
        REPLACE(SetFileTime, [](HANDLE, const FILETIME*, const FILETIME*, const FILETIME*) { return FALSE; });

    EXPECT_FALSE(NATIVE(setLastModified)(L"C:/x", 0));

    EXPECT_THAT(calls, ElementsAre(L"open C:/x", L"close"));
}

TEST_F(RetryTest, MakesADirectoryByTheLongFormAndTakesItsCode) {
    EXPECT_FALSE(NATIVE(mkdir)(L"C:/x"));

    EXPECT_THAT(calls, ElementsAre(L"make C:/x", L"make \\\\?\\C:\\x"));
    EXPECT_EQ(java.takeException(), (Thrown{"java/lang/SecurityException",
                                            errorMessage(L"createDir", firstCode + 2) + L", 'C:/x'"}));
}

TEST_F(RetryTest, MakesADirectoryOnceWhenTheFirstCallSucceeds) {
    succeedFrom = 1;

    EXPECT_TRUE(NATIVE(mkdir)(L"C:/x"));

    EXPECT_THAT(calls, ElementsAre(L"make C:/x"));
}

TEST_F(RetryTest, GivesNoAnswerWithoutMemoryForTheLongForm) {
    const auto fail = system().failCall("malloc", 2, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_FALSE(NATIVE(exists)(L"C:/x"));

    EXPECT_THAT(calls, ElementsAre(L"query C:/x 0"));
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
}

TEST_F(RetryTest, MakesADirectoryByTheGivenPathAloneWithoutMemoryForTheLongForm) {
    const auto fail = system().failCall("malloc", 2, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_FALSE(NATIVE(mkdir)(L"C:/x"));

    EXPECT_THAT(calls, ElementsAre(L"make C:/x"));
    EXPECT_EQ(java.takeException(),
              (Thrown{"java/lang/SecurityException",
                      errorMessage(L"createDir", ERROR_NOT_ENOUGH_MEMORY) + L", 'C:/x'"}));
}

// A null in place of the new name would be the wish to delete the file.
TEST_F(RetryTest, MovesByTheGivenNamesAloneWithoutMemoryForEitherLongForm) {
    for (const std::size_t block : {3, 4}) {
        calls.clear();
        const auto fail = system().failCall("malloc", block, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_FALSE(NATIVE(renameTo)(L"C:/x", L"C:/y"));

        EXPECT_THAT(calls, ElementsAre(L"move C:/x to C:/y")) << block;
    }
}

}  // namespace
