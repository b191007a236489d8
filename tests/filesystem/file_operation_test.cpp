// Making, deleting, renaming, and what else is done with a path. (The calls with the long form are looked at
// in the tests of the bridge.)
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

constexpr const char* securityException = "java/lang/SecurityException";
constexpr const char* diskFullException = "com/qarvo/dov/io/DiskFullException";

std::wstring notMade(const std::wstring& path, DWORD code) {
    return errorMessage(L"createDir", code) + L", '" + path + L"'";
}

class MakeDirectoryTest : public WinUtilTest {
protected:
    Replacement failWith(DWORD code) { return system().answer("CreateDirectoryW", FALSE, code); }
};

TEST_F(MakeDirectoryTest, MakesTheLastFolderOfAPath) {
    EXPECT_TRUE(NATIVE(mkdir)(folder() / L"new \x00E4\xD83D\xDE00"));

    EXPECT_TRUE(NATIVE(isDir)(folder() / L"new \x00E4\xD83D\xDE00"));
}

TEST_F(MakeDirectoryTest, MakesFoldersBelowVeryLongPaths) {
    std::wstring path = folder().path();
    for (int i = 0; i < 5; ++i) {
        path += L"\\" + std::wstring(100, L'd');
        EXPECT_TRUE(NATIVE(mkdir)(path));
    }

    EXPECT_GT(path.size(), 500u);
    EXPECT_TRUE(NATIVE(isDir)(path));
}

TEST_F(MakeDirectoryTest, IsFalseWhereAFolderOrAFileIs) {
    writeFile(folder() / L"file", "");

    EXPECT_FALSE(NATIVE(mkdir)(folder().path()));
    EXPECT_FALSE(NATIVE(mkdir)(folder() / L"file"));

    EXPECT_FALSE(java.isPending());
}

TEST_F(MakeDirectoryTest, IsFalseWithoutAnExceptionWhenTheSystemHasNoError) {
    for (const DWORD code : {ERROR_ALREADY_EXISTS, ERROR_SUCCESS}) {
        const auto fail = failWith(code);

        EXPECT_FALSE(NATIVE(mkdir)(L"C:\\x"));

        EXPECT_EQ(java.takeException(), nothingThrown()) << code;
    }
}

TEST_F(MakeDirectoryTest, ThrowsAtOnceWhenTheParentIsMissing) {
    const std::wstring path = folder() / L"missing\\new";

    EXPECT_FALSE(NATIVE(mkdir)(path));

    EXPECT_EQ(java.takeException(), (Thrown{securityException, notMade(path, ERROR_PATH_NOT_FOUND)}));
    EXPECT_EQ(system().count("Sleep"), 0u);
    EXPECT_FALSE(fileExists(folder() / L"missing"));
}

struct MakeError {
    DWORD code;
    const char* exceptionClass;
};

class MakeErrorTest : public MakeDirectoryTest, public ::testing::WithParamInterface<MakeError> {};

TEST_P(MakeErrorTest, ThrowsWithCodeAndPath) {
    const auto fail = failWith(GetParam().code);

    EXPECT_FALSE(NATIVE(mkdir)(L"C:/some folder/\xD83D\xDE00"));

    EXPECT_EQ(java.takeException(),
              (Thrown{GetParam().exceptionClass, notMade(L"C:/some folder/\xD83D\xDE00", GetParam().code)}));
    EXPECT_EQ(system().count("Sleep"), 0u);
}

INSTANTIATE_TEST_SUITE_P(Codes, MakeErrorTest,
                         ::testing::Values(MakeError{ERROR_DISK_FULL, diskFullException},
                                           MakeError{ERROR_ACCESS_DENIED, securityException},
                                           MakeError{ERROR_FILE_NOT_FOUND, securityException},
                                           MakeError{ERROR_PATH_NOT_FOUND, securityException},
                                           MakeError{ERROR_INVALID_NAME, securityException},
                                           MakeError{ERROR_SHARING_VIOLATION, securityException},
                                           MakeError{ERROR_HANDLE_DISK_FULL, securityException},
                                           MakeError{ERROR_FILENAME_EXCED_RANGE, securityException}),
                         [](const auto& error) { return "Code" + std::to_string(error.param.code); });

TEST_F(MakeDirectoryTest, NeverCutsThePathInTheMessage) {
    const auto fail = failWith(ERROR_DISK_FULL);
    for (const std::size_t length : {4000u, 4090u, 4096u, 32767u, 100000u}) {
        const std::wstring path = L"C:\\" + std::wstring(length, L'x') + L"end";

        EXPECT_FALSE(NATIVE(mkdir)(path));

        EXPECT_EQ(java.takeException(), (Thrown{diskFullException, notMade(path, ERROR_DISK_FULL)}));
    }
}

TEST_F(MakeDirectoryTest, HasRoomForThePathBehindTheLongestMessage) {
    const auto fail = failWith(ERROR_DISK_FULL);
    const std::wstring start = L"[createDir] (112) ";
    const std::wstring text(4095 - start.size(), L'x');
    const auto longText =
        REPLACE(FormatMessageW, [&](DWORD, LPCVOID, DWORD, DWORD, LPWSTR buffer, DWORD, va_list*) {
            const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
            auto* copy = static_cast<wchar_t*>(::LocalAlloc(LMEM_FIXED, bytes));
            std::copy_n(text.c_str(), text.size() + 1, copy);
            *reinterpret_cast<wchar_t**>(buffer) = copy;
            return static_cast<DWORD>(text.size());
        });

    EXPECT_FALSE(NATIVE(mkdir)(L"C:\\x"));

    EXPECT_EQ(java.takeException(), (Thrown{diskFullException, start + text + L", 'C:\\x'"}));
}

TEST_F(MakeDirectoryTest, ThrowsWithoutMemoryForTheMessage) {
    const auto fail = failWith(ERROR_DISK_FULL);
    // Behind the path and its long form.
    const auto noMemory = system().failCall("malloc", 3, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_FALSE(NATIVE(mkdir)(L"C:\\x"));

    // As much as there is.
    EXPECT_EQ(java.takeException(), (Thrown{diskFullException, errorMessage(L"createDir", ERROR_DISK_FULL)}));
}

TEST_F(MakeDirectoryTest, ThrowsWithoutMemoryForThePath) {
    const Thrown noMemory{securityException, errorMessage(L"createDir", ERROR_NOT_ENOUGH_MEMORY)};
    {
        const auto fail = system().failCall("malloc", 1, ERROR_INVALID_DATA);
        EXPECT_FALSE(NATIVE(mkdir)(L"C:\\x"));
        EXPECT_EQ(java.takeException(), noMemory);
    }
    java.failCall("GetStringChars");
    EXPECT_FALSE(NATIVE(mkdir)(L"C:\\x"));
    EXPECT_EQ(java.takeException(), noMemory);
    EXPECT_EQ(system().count("CreateDirectoryW"), 0u);
}

TEST_F(MakeDirectoryTest, ThrowsWithoutMemoryForTheLongForm) {
    const auto fail = failWith(ERROR_FILENAME_EXCED_RANGE);
    const auto noMemory = system().failCall("malloc", 2, ERROR_INVALID_DATA);

    EXPECT_FALSE(NATIVE(mkdir)(L"C:\\x"));

    EXPECT_EQ(java.takeException(), (Thrown{securityException, notMade(L"C:\\x", ERROR_NOT_ENOUGH_MEMORY)}));
    EXPECT_EQ(fail.count(), 1u);
}

// A share may show a folder late.
class SlowShareTest : public MakeDirectoryTest {
protected:
    const Replacement fail = failWith(ERROR_PATH_NOT_FOUND);
    std::vector<std::wstring> calls;
    bool isThere = false;
    const Replacement sleep = REPLACE(
        Sleep, [this](DWORD milliseconds) { calls.push_back(L"wait " + std::to_wstring(milliseconds)); });
    const Replacement query =
        REPLACE(GetFileAttributesExW, [this](LPCWSTR path, GET_FILEEX_INFO_LEVELS, LPVOID) {
            calls.push_back(L"query " + std::wstring(path));
            SetLastError(ERROR_BAD_NETPATH);
            return static_cast<BOOL>(isThere);
        });
};

TEST_F(SlowShareTest, IsGivenTwoSecondsToShowTheFolder) {
    isThere = true;

    EXPECT_FALSE(NATIVE(mkdir)(L"\\\\server\\share\\x"));

    EXPECT_EQ(java.takeException(), nothingThrown());
    EXPECT_THAT(calls, ElementsAre(L"wait 2000", L"query \\\\server\\share\\x"));
    EXPECT_EQ(system().count("CreateDirectoryW"), 2u);
}

TEST_F(SlowShareTest, LeavesTheFirstCodeToTellWhenTheFolderDoesNotCome) {
    EXPECT_FALSE(NATIVE(mkdir)(L"\\\\server\\share\\x"));

    EXPECT_EQ(java.takeException(),
              (Thrown{securityException, notMade(L"\\\\server\\share\\x", ERROR_PATH_NOT_FOUND)}));
    EXPECT_THAT(calls, ElementsAre(L"wait 2000", L"query \\\\server\\share\\x",
                                   L"query \\\\?\\UNC\\server\\share\\x"));
}

TEST_F(SlowShareTest, LeavesTheFirstCodeToTellWithoutMemoryToLookTwice) {
    const auto memory = system().failCall("malloc", 3, 0);  // behind the path and its long form

    EXPECT_FALSE(NATIVE(mkdir)(L"\\\\server\\share\\x"));

    EXPECT_EQ(java.takeException().message, notMade(L"\\\\server\\share\\x", ERROR_PATH_NOT_FOUND));
    EXPECT_THAT(calls, ElementsAre(L"wait 2000", L"query \\\\server\\share\\x"));
}

TEST_F(SlowShareTest, IsAnyPathThatBeginsWithTwoBackslashes) {
    isThere = true;

    EXPECT_FALSE(NATIVE(mkdir)(L"\\\\?\\C:\\x"));
    EXPECT_FALSE(NATIVE(mkdir)(L"//server/x"));

    EXPECT_EQ(java.takeException().className, securityException);
    EXPECT_THAT(calls, ElementsAre(L"wait 2000", L"query \\\\?\\C:\\x"));
}

TEST_F(MakeDirectoryTest, WaitsForNoOtherErrorOfAShare) {
    for (const DWORD code : {ERROR_ACCESS_DENIED, ERROR_BAD_NETPATH, ERROR_FILE_NOT_FOUND, ERROR_DISK_FULL}) {
        const auto failing = failWith(code);

        EXPECT_FALSE(NATIVE(mkdir)(L"\\\\server\\x"));

        EXPECT_EQ(java.takeException().message, notMade(L"\\\\server\\x", code));
    }
    EXPECT_EQ(system().count("Sleep"), 0u);
    EXPECT_EQ(system().count("GetFileAttributesExW"), 0u);
}

class FileOperationTest : public WinUtilTest {};

TEST_F(FileOperationTest, WorksOnVeryLongPathsInEitherForm) {
    const std::wstring deep = folder() / (std::wstring(200, L'd') + L"\\" + std::wstring(200, L'e'));
    for (const std::wstring& form : {deep, L"\\\\?\\" + deep}) {
        const std::wstring path = form + L"\\file";
        const std::wstring moved = form + L"\\" + std::wstring(100, L'm');
        writeFile(path, "content");

        EXPECT_TRUE(NATIVE(exists)(path));
        EXPECT_FALSE(NATIVE(isDir)(path));
        EXPECT_TRUE(NATIVE(isDir)(form));
        EXPECT_TRUE(NATIVE(setLastModified)(path, 1234567890123));
        EXPECT_EQ(NATIVE(lastModified)(path), 1234567890123);
        EXPECT_NE(NATIVE(getFileAttr)(path), -1);
        EXPECT_TRUE(NATIVE(renameTo)(path, moved));
        EXPECT_FALSE(NATIVE(exists)(path));
        EXPECT_TRUE(NATIVE(delete)(moved));
        EXPECT_FALSE(NATIVE(exists)(moved));
    }
}

TEST_F(FileOperationTest, FindsNothingUnderTheEmptyPath) {
    ledger().allowUnknown("CloseHandle");
    writeFile(folder() / L"file", "content");

    EXPECT_FALSE(NATIVE(exists)(L""));
    EXPECT_FALSE(NATIVE(isDir)(L""));
    EXPECT_FALSE(NATIVE(delete)(L""));
    EXPECT_FALSE(NATIVE(renameTo)(L"", folder() / L"moved"));
    EXPECT_FALSE(NATIVE(renameTo)(folder() / L"file", L""));
    EXPECT_FALSE(NATIVE(setLastModified)(L"", 0));
    EXPECT_EQ(NATIVE(lastModified)(L""), 0);
    EXPECT_EQ(NATIVE(getFileAttr)(L""), -1);
    EXPECT_TRUE(fileExists(folder() / L"file"));

    EXPECT_FALSE(NATIVE(mkdir)(L""));
    EXPECT_EQ(java.takeException().className, securityException);
}

TEST_F(FileOperationTest, DeletesFilesAlsoReadOnlyOnes) {
    const std::wstring path = folder() / L"file";
    writeFile(path, "content");
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));

    EXPECT_TRUE(NATIVE(delete)(path));

    EXPECT_FALSE(fileExists(path));
    EXPECT_FALSE(NATIVE(delete)(path));
}

TEST_F(FileOperationTest, AnswersNothingWithoutMemory) {
    ledger().allowUnknown("CloseHandle");
    const std::wstring missing = folder() / L"missing";
    // The path and its long form, or both paths.
    for (const std::size_t k : {1, 2}) {
        SCOPED_TRACE(k);
        const auto expectNone = [&](auto call) {
            const auto noMemory = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);
            EXPECT_EQ(call(), 0);
            EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
        };
        expectNone([&] { return NATIVE(delete)(missing); });
        expectNone([&] { return NATIVE(exists)(missing); });
        expectNone([&] { return NATIVE(isDir)(missing); });
        expectNone([&] { return NATIVE(lastModified)(missing); });
        expectNone([&] { return NATIVE(setLastModified)(missing, 0); });
        expectNone([&] { return NATIVE(renameTo)(missing, missing); });
    }
}

TEST_F(FileOperationTest, MovesNothingWithoutMemoryForTheLongForms) {
    const auto move = system().watch("MoveFileW");
    // Behind both paths.
    for (const std::size_t k : {3, 4}) {
        const auto noMemory = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_FALSE(NATIVE(renameTo)(folder() / L"missing", folder() / L"moved"));
    }

    EXPECT_EQ(move.count(), 2u);
}

TEST_F(FileOperationTest, DeletesNoFolder) {
    writeFile(folder() / L"sub\\file", "content");

    EXPECT_FALSE(NATIVE(delete)(folder() / L"sub"));

    EXPECT_TRUE(fileExists(folder() / L"sub\\file"));
}

TEST_F(FileOperationTest, LeavesTheAttributesClearedWhenADeleteFails) {
    const std::wstring path = folder() / L"file";
    writeFile(path, "content");
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    const auto fail = system().answer("DeleteFileW", FALSE, ERROR_SHARING_VIOLATION);

    EXPECT_FALSE(NATIVE(delete)(path));

    EXPECT_EQ(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
}

TEST_F(FileOperationTest, MovesFilesAndFolders) {
    writeFile(folder() / L"sub\\file", "content");

    EXPECT_TRUE(NATIVE(renameTo)(folder() / L"sub\\file", folder() / L"sub\\moved"));
    EXPECT_TRUE(NATIVE(renameTo)(folder() / L"sub", folder() / L"elsewhere"));

    EXPECT_EQ(readFile(folder() / L"elsewhere\\moved"), "content");
}

TEST_F(FileOperationTest, MovesNothingOverWhatIsThere) {
    writeFile(folder() / L"a", "a");
    writeFile(folder() / L"b", "b");

    EXPECT_FALSE(NATIVE(renameTo)(folder() / L"a", folder() / L"b"));
    EXPECT_FALSE(NATIVE(renameTo)(folder() / L"missing", folder() / L"c"));

    EXPECT_EQ(readFile(folder() / L"b"), "b");
}

TEST_F(FileOperationTest, TellsFilesFoldersAndNothingApart) {
    writeFile(folder() / L"file", "");

    EXPECT_TRUE(NATIVE(exists)(folder() / L"file"));
    EXPECT_FALSE(NATIVE(isDir)(folder() / L"file"));
    EXPECT_TRUE(NATIVE(exists)(folder().path()));
    EXPECT_TRUE(NATIVE(isDir)(folder().path()));
    EXPECT_FALSE(NATIVE(exists)(folder() / L"missing"));
    EXPECT_FALSE(NATIVE(isDir)(folder() / L"missing"));
}

TEST_F(FileOperationTest, SetsAndReadsTimesOfFilesAndFolders) {
    writeFile(folder() / L"file", "");
    for (const std::wstring& path : {folder() / L"file", folder().path()}) {
        for (const jlong time :
             {jlong{0}, jlong{1234567890123}, jlong{-1}, jlong{-2000000000000}, jlong{4102444800999}}) {
            EXPECT_TRUE(NATIVE(setLastModified)(path, time));

            EXPECT_EQ(NATIVE(lastModified)(path), time);
        }
    }
}

TEST_F(FileOperationTest, HasNoTimeForWhatIsMissing) {
    ledger().allowUnknown("CloseHandle");

    EXPECT_EQ(NATIVE(lastModified)(folder() / L"missing"), 0);
    EXPECT_FALSE(NATIVE(setLastModified)(folder() / L"missing", 0));

    EXPECT_FALSE(java.isPending());
}

}  // namespace
