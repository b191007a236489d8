// Listing into null: nothing is listed, and the JVM is not asked for the class of nothing, which would end
// it.
#include "winutil_fixture.h"

namespace {

using namespace testbed;

using NoCollector = WinUtilTest;

TEST_F(NoCollector, ListsNoFiles) {
    writeFile(folder() / L"here.txt", "content");

    NATIVE(listWinFiles)(nullptr, folder().path(), true, true, nullptr, true);

    EXPECT_EQ(java.count("GetObjectClass"), 0U);
    EXPECT_GE(system().count("FindFirstFileW"), 1U);
}

TEST_F(NoCollector, ListsNoFoldersOfTheSystem) {
    NATIVE(getSystemExcludeFolders)(nullptr);

    EXPECT_EQ(java.count("GetObjectClass"), 0U);
}

TEST_F(NoCollector, ListsNoFoldersOfALibrary) {
    NATIVE(getLibraryFolders)(L"C:\\missing.library-ms", nullptr);

    EXPECT_EQ(java.count("GetObjectClass"), 0U);
}

TEST_F(NoCollector, ListsNoGroups) {
    NATIVE(getDomainUserGroups)(L"", L"someone", nullptr);

    EXPECT_EQ(java.count("GetObjectClass"), 0U);
}

TEST_F(NoCollector, ListsNoFeatures) {
    NATIVE(getWindowsInstalledFeatures)(nullptr);

    EXPECT_EQ(java.count("GetObjectClass"), 0U);
}

}  // namespace
