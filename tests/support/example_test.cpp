// How a test of the library looks. README.md beside this file explains the parts.
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

using Example = WinUtilTest;

TEST_F(Example, FindsAFileThatIsThere) {
    writeFile(folder() / L"here.txt", "content");

    EXPECT_TRUE(NATIVE(exists)(folder() / L"here.txt"));
    EXPECT_FALSE(NATIVE(exists)(folder() / L"missing.txt"));
}

TEST_F(Example, ThrowsForAFileThatIsNot) {
    EXPECT_EQ(NATIVE(openFile)(folder() / L"missing.txt"), 0);

    EXPECT_EQ(java.takeException(), fileNotFound(errorMessage(L"openFile", ERROR_FILE_NOT_FOUND)));
}

TEST_F(Example, HandsEachEntryToTheCollector) {
    writeFile(folder() / L"one.txt", "1");
    std::vector<std::wstring> paths;
    const JavaObject collector =
        java.collector("addFile", "(Ljava/lang/String;ZJJILjava/lang/String;Z)V",
                       [&](const Arguments& arguments) { paths.push_back(arguments[0].text()); });

    NATIVE(listWinFiles)(collector, folder().path(), false, true, nullptr, false);

    EXPECT_THAT(paths, ElementsAre(folder() / L"one.txt"));
}

TEST_F(Example, WaitsTenTimesForASharingViolationToEnd) {
    const auto open = system().answer("CreateFileW", ~0ull, ERROR_SHARING_VIOLATION);
    const auto sleep = system().answer("Sleep", 0);

    NATIVE(openFile)(L"C:\\busy");

    EXPECT_EQ(java.takeException().className, "com/qarvo/dov/io/SharingViolationException");
    ASSERT_EQ(sleep.count(), 10u);
    EXPECT_EQ(sleep.calls().front().argument<DWORD>(0), 500u);
}

TEST_F(Example, AsksForBackupSemantics) {
    writeFile(folder() / L"file.txt", "content");
    DWORD flags = 0;
    const auto open =
        REPLACE(CreateFileW, [&](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                                 DWORD disposition, DWORD given, HANDLE model) {
            flags = given;
            return REAL(CreateFileW)(path, access, share, security, disposition, given, model);
        });

    const jlong record = NATIVE(openFile)(folder() / L"file.txt");
    NATIVE(closeFile)(record);

    EXPECT_EQ(flags & FILE_FLAG_BACKUP_SEMANTICS, FILE_FLAG_BACKUP_SEMANTICS);
}

}  // namespace
