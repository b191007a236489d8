// The record of a link: its kind and its target.
#include "record_fixture.h"

namespace {

using namespace testbed;
using ::testing::IsEmpty;

class LinkRecordTest : public RecordTest {
protected:
    Fields fields(const std::wstring& path) { return fieldsOf(record(path)); }

    ReparseDisk disk{system()};
};

TEST_F(LinkRecordTest, HasKindAndTargetOfALink) {
    disk.put(L"C:\\junction", FILE_ATTRIBUTE_DIRECTORY, {.path = L"\\??\\D:\\data"});
    disk.put(L"C:\\dirlink", FILE_ATTRIBUTE_DIRECTORY,
             {.tag = IO_REPARSE_TAG_SYMLINK, .path = L"\\??\\D:\\data"});
    disk.put(L"C:\\filelink", FILE_ATTRIBUTE_ARCHIVE, {.tag = IO_REPARSE_TAG_SYMLINK, .path = L"..\\x"});

    EXPECT_EQ(fields(L"C:\\junction"),
              (Fields{L"C:\\junction", true, 0, -11644473600000, 0x410, L"", 16, L"D:\\data"}));
    EXPECT_EQ(fields(L"C:\\dirlink"),
              (Fields{L"C:\\dirlink", true, 0, -11644473600000, 0x410, L"", 18, L"D:\\data"}));
    EXPECT_EQ(fields(L"C:\\filelink"),
              (Fields{L"C:\\filelink", false, 0, -11644473600000, 0x420, L"", 17, L"..\\x"}));
}

TEST_F(LinkRecordTest, OpensTheLinkItselfByThePathAsGiven) {
    disk.put(L"C:/link", FILE_ATTRIBUTE_DIRECTORY, {.path = L"\\??\\D:\\data"});
    // Only the long form of the path has attributes.
    const auto query = answerAttributes(FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT, true);

    EXPECT_EQ(fields(L"C:/link").kind, 16);

    ASSERT_EQ(disk.opens.size(), 1u);
    EXPECT_EQ(disk.opens[0].path, L"C:/link");
    EXPECT_EQ(disk.opens[0].access, 0x100080u);
    EXPECT_EQ(disk.opens[0].share, 1u);
    EXPECT_EQ(disk.opens[0].disposition, 3u);
    EXPECT_EQ(disk.opens[0].flags, 0x2200000u);
    EXPECT_EQ(disk.opens[0].security, nullptr);
}

TEST_F(LinkRecordTest, SeesAFolderWhereAVolumeIsMounted) {
    for (const wchar_t* target : {L"\\??\\Volume{1}\\", L"\\??\\VOLUME{1}\\", L"\\??\\volume"}) {
        disk.put(L"C:\\mount", FILE_ATTRIBUTE_DIRECTORY, {.path = target});
        disk.put(L"C:\\link", FILE_ATTRIBUTE_DIRECTORY, {.tag = IO_REPARSE_TAG_SYMLINK, .path = target});

        EXPECT_EQ(fields(L"C:\\mount").kind, 0);
        EXPECT_EQ(fields(L"C:\\mount").target, L"");
        EXPECT_EQ(fields(L"C:\\link").kind, 0);
        EXPECT_EQ(fields(L"C:\\link").target, L"");
    }
}

TEST_F(LinkRecordTest, SeesALinkWhereTheVolumeIsNotTheWholeStory) {
    disk.put(L"C:\\file", FILE_ATTRIBUTE_ARCHIVE,
             {.tag = IO_REPARSE_TAG_SYMLINK, .path = L"\\??\\Volume{1}\\x"});
    disk.put(L"C:\\near", FILE_ATTRIBUTE_DIRECTORY, {.path = L"\\??\\Volum"});

    EXPECT_EQ(fields(L"C:\\file").kind, 17);
    EXPECT_EQ(fields(L"C:\\file").target, L"\\\\?\\Volume{1}\\x");
    EXPECT_EQ(fields(L"C:\\near").kind, 16);
    EXPECT_EQ(fields(L"C:\\near").target, L"Volum");
}

TEST_F(LinkRecordTest, SeesPlainFilesAndFoldersBehindOtherTags) {
    disk.put(L"C:\\file", FILE_ATTRIBUTE_ARCHIVE, {.tag = 0x9000001A});
    disk.put(L"C:\\folder", FILE_ATTRIBUTE_DIRECTORY, {.tag = 0x9000001A});

    EXPECT_EQ(fields(L"C:\\file").kind, 2);
    EXPECT_EQ(fields(L"C:\\folder").kind, 0);
    EXPECT_EQ(fields(L"C:\\folder").target, L"");
}

TEST_F(LinkRecordTest, SeesPlainFilesAndFoldersWhereTheLinkCannotBeRead) {
    disk.put(L"C:\\file", FILE_ATTRIBUTE_ARCHIVE, {.tag = IO_REPARSE_TAG_SYMLINK});
    disk.put(L"C:\\folder", FILE_ATTRIBUTE_DIRECTORY, {});

    disk.controlError = ERROR_NOT_A_REPARSE_POINT;
    EXPECT_EQ(fields(L"C:\\file").kind, 2);
    EXPECT_EQ(fields(L"C:\\folder").kind, 0);

    disk.openError = ERROR_ACCESS_DENIED;
    EXPECT_EQ(fields(L"C:\\file").kind, 2);
    EXPECT_EQ(fields(L"C:\\folder").kind, 0);
}

TEST_F(LinkRecordTest, IsMissedLikeAFileWithoutMemoryToReadTheLink) {
    disk.put(L"C:\\junction", FILE_ATTRIBUTE_DIRECTORY, {});
    // Behind the path.
    const auto noMemory = system().failCall("malloc", 2, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_FALSE(record(L"C:\\junction"));

    EXPECT_EQ(java.takeException(), fileNotFound(L""));
    EXPECT_THAT(disk.opens, IsEmpty());
}

TEST_F(LinkRecordTest, OpensNothingThatIsNoLink) {
    disk.entries[L"C:\\file"] = {FILE_ATTRIBUTE_ARCHIVE, {}};

    EXPECT_EQ(fields(L"C:\\file").kind, 2);

    EXPECT_THAT(disk.opens, IsEmpty());
}

}  // namespace
