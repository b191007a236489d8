// The record of one file.
#include "record_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::StartsWith;

TEST_F(RecordTest, TellsWhatAFileIs) {
    const std::wstring path = folder() / L"file \x00E4\xD83D\xDE00";
    writeFile(path, "12345");
    ASSERT_TRUE(NATIVE(setLastModified)(path, -86400000));

    EXPECT_EQ(fieldsOf(record(path)),
              (Fields{path, false, 5, -86400000, static_cast<jlong>(GetFileAttributesW(path.c_str())), L"", 2,
                      L""}));
}

TEST_F(RecordTest, TellsWhatAFolderIs) {
    const std::wstring path = folder().path();
    ASSERT_TRUE(NATIVE(setLastModified)(path, 1234567890123));

    EXPECT_EQ(fieldsOf(record(path)),
              (Fields{path, true, 0, 1234567890123, static_cast<jlong>(GetFileAttributesW(path.c_str())), L"",
                      0, L""}));
}

TEST_F(RecordTest, TellsWhatAFileWithAVeryLongPathIs) {
    const std::wstring path =
        folder() / (std::wstring(200, L'd') + L"\\" + std::wstring(200, L'e') + L"\\file");
    writeFile(path, "12345");
    for (const std::wstring& form : {path, L"\\\\?\\" + path}) {
        ASSERT_TRUE(NATIVE(setLastModified)(form, 1234567890123));

        EXPECT_EQ(fieldsOf(record(form)),
                  (Fields{form, false, 5, 1234567890123, NATIVE(getFileAttr)(form), L"", 2, L""}));
    }
}

TEST_F(RecordTest, HasSizeTimeAndAttributesAsTheSystemGivesThem) {
    constexpr DWORD neitherFolderNorLink = ~DWORD{FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT};
    const auto query = answerAttributes(neitherFolderNorLink);

    EXPECT_EQ(fieldsOf(record(L"C:\\x")), (Fields{L"C:\\x", false, 0x100000002, -2,
                                                  static_cast<jint>(neitherFolderNorLink), L"", 2, L""}));
    EXPECT_THAT(queries, ElementsAre(L"C:\\x"));

    const auto queryOfAFolder = answerAttributes(FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(fieldsOf(record(L"C:\\x")), (Fields{L"C:\\x", true, 0x100000002, -2, 0x10, L"", 0, L""}));
}

TEST_F(RecordTest, HasTheOlderFormWhereTheClassHasNoOther) {
    java.removeMethod(recordClass, "<init>", newerConstructor);
    for (const DWORD attributes : {0x420u, 0x20u}) {
        const auto query = answerAttributes(attributes);

        const JavaObject made = record(L"C:\\x");

        EXPECT_EQ(made.constructor(), olderConstructor);
        const Arguments& a = made.arguments();
        ASSERT_EQ(a.size(), 7u);
        EXPECT_EQ(a[0].text(), L"C:\\x");
        EXPECT_FALSE(a[1].boolean());
        EXPECT_EQ(a[2].number(), 0x100000002);
        EXPECT_EQ(a[3].number(), -2);
        EXPECT_EQ(a[4].number(), attributes);
        EXPECT_EQ(a[5].text(), L"");
        EXPECT_EQ(a[6].boolean(), attributes == 0x420u);
    }
}

TEST_F(RecordTest, IsMissedLikeAFileWhereTheClassHasNoConstructor) {
    java.removeMethod(recordClass, "<init>", newerConstructor);
    java.removeMethod(recordClass, "<init>", olderConstructor);

    EXPECT_FALSE(record(folder().path()));

    EXPECT_EQ(java.takeException(), fileNotFound(L""));
}

TEST_F(RecordTest, IsMissedLikeAFileWhereThereIsNoClass) {
    java.removeClass(recordClass);

    EXPECT_FALSE(record(folder().path()));

    EXPECT_EQ(java.takeException(), fileNotFound(L""));
}

TEST_F(RecordTest, LeavesWhatItsConstructorThrows) {
    for (const bool newer : {true, false}) {
        if (!newer) {
            java.removeMethod(recordClass, "<init>", newerConstructor);
        }
        java.failCall("NewObject", 1, "java/lang/IllegalStateException");

        EXPECT_FALSE(record(folder().path()));

        EXPECT_EQ(java.takeException().className, "java/lang/IllegalStateException");
    }
}

TEST_F(RecordTest, LeavesTheErrorOfAJvmWithoutMemory) {
    const std::pair<const char*, std::size_t> steps[] = {
        {"NewString", 1}, {"NewString", 2}, {"NewString", 3}, {"NewObject", 1}};
    for (const auto& [function, k] : steps) {
        java.failCall(function, k);

        EXPECT_FALSE(record(folder().path())) << function << k;

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << function << k;
    }
}

TEST_F(RecordTest, IsMissedLikeAFileWithoutMemoryForItsPath) {
    {
        const auto fail = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_FALSE(record(folder().path()));

        EXPECT_EQ(java.takeException(), fileNotFound(L""));
    }
    java.failCall("GetStringChars");

    EXPECT_FALSE(record(folder().path()));

    EXPECT_EQ(java.takeException(), fileNotFound(L""));
}

TEST_F(RecordTest, IsMissedWithoutMemoryForTheDescriptor) {
    const auto query = answerAttributes(FILE_ATTRIBUTE_ARCHIVE);
    // The descriptor and its text, behind the path; the empty text of a file that none is read of.
    for (const auto& [onFiles, k] : {std::pair(true, 2u), std::pair(true, 3u), std::pair(false, 2u)}) {
        const auto noMemory = system().failCall("malloc", k, ERROR_INVALID_DATA);

        EXPECT_FALSE(record(folder().path(), true, onFiles)) << k;

        EXPECT_EQ(java.takeException(), fileNotFound(L"")) << k;
    }
    EXPECT_EQ(system().count("GetNamedSecurityInfoW"), 0u);
}

TEST_F(RecordTest, IsMissedWithoutAMessageWhereThereIsNoFile) {
    for (const std::wstring& path :
         {folder() / L"missing", L"\\\\?\\" + (folder() / L"missing"), std::wstring()}) {
        EXPECT_FALSE(record(path));

        EXPECT_EQ(java.takeException(), fileNotFound(L""));
    }
}

TEST_F(RecordTest, OfTwoBackslashesIsRefusedWithoutAskingTheSystem) {
    EXPECT_FALSE(record(L"\\\\"));

    EXPECT_EQ(java.takeException(), fileNotFound(L""));
    EXPECT_EQ(system().count("GetFileAttributesExW"), 0u);
}

TEST_F(RecordTest, IsReadByTheLongFormAndNamedAsGiven) {
    const auto query = answerAttributes(FILE_ATTRIBUTE_ARCHIVE, true);
    std::vector<std::wstring> read;
    const auto security = REPLACE(GetFileSecurityW, [&](LPCWSTR path, SECURITY_INFORMATION,
                                                        PSECURITY_DESCRIPTOR descriptor, DWORD, LPDWORD) {
        read.emplace_back(path);
        return InitializeSecurityDescriptor(descriptor, SECURITY_DESCRIPTOR_REVISION);
    });
    const auto convert = system().answer("ConvertSecurityDescriptorToStringSecurityDescriptorW", FALSE, 87);

    EXPECT_EQ(fieldsOf(record(L"C:/x", true, true)),
              (Fields{L"C:/x", false, 0x100000002, -2, 0x20, L"", 2, L""}));

    EXPECT_THAT(queries, ElementsAre(L"C:/x", L"\\\\?\\C:\\x"));
    EXPECT_THAT(read, ElementsAre(L"\\\\?\\C:\\x"));
}

TEST_F(RecordTest, HasTheDescriptorOfThePathThatCouldBeRead) {
    const auto query = answerAttributes(FILE_ATTRIBUTE_ARCHIVE);
    std::vector<std::wstring> read;
    const auto security = REPLACE(GetFileSecurityW, [&](LPCWSTR path, SECURITY_INFORMATION parts,
                                                        PSECURITY_DESCRIPTOR, DWORD, LPDWORD) {
        EXPECT_EQ(parts, 7u);
        read.emplace_back(path);
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    });
    const auto again = system().answer("GetNamedSecurityInfoW", ERROR_SUCCESS);

    EXPECT_EQ(fieldsOf(record(L"C:/x", true, true)).security, L"");

    EXPECT_THAT(read, ElementsAre(L"C:/x"));
}

TEST_F(RecordTest, IsAskedForOnceByALongForm) {
    const auto fail = system().answer("GetFileAttributesExW", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(record(L"\\\\?\\C:\\x"));

    EXPECT_EQ(fail.count(), 1u);
    EXPECT_EQ(java.takeException(), fileNotFound(L""));
}

TEST_F(RecordTest, IsMissedWithoutMemoryForTheLongForm) {
    const auto fail = system().answer("GetFileAttributesExW", FALSE, ERROR_ACCESS_DENIED);
    const auto noMemory = system().failCall("malloc", 2, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_FALSE(record(L"C:\\x"));

    EXPECT_EQ(java.takeException(), fileNotFound(L""));
    EXPECT_EQ(fail.count(), 1u) << "by the path as given";
}

TEST_F(RecordTest, HasTheDescriptorOnlyWhenItIsAskedFor) {
    const std::wstring file = folder() / L"file";
    writeFile(file, "content");

    EXPECT_EQ(fieldsOf(record(file, false, true)).security, L"");
    EXPECT_EQ(fieldsOf(record(file, true, false)).security, L"");
    EXPECT_EQ(fieldsOf(record(folder().path(), false, true)).security, L"");
    EXPECT_EQ(system().count("GetFileSecurityW"), 0u);

    EXPECT_THAT(fieldsOf(record(file, true, true)).security, StartsWith(L"O:"));
    EXPECT_THAT(fieldsOf(record(folder().path(), true, false)).security, StartsWith(L"O:"));
}

TEST_F(RecordTest, HasNoDescriptorOfAFolderOnAnotherFileSystem) {
    const auto information = REPLACE(GetVolumeInformationW, [](LPCWSTR, LPWSTR, DWORD, LPDWORD, LPDWORD,
                                                               LPDWORD, LPWSTR fileSystem, DWORD size) {
        wcscpy_s(fileSystem, size, L"FAT32");
        return TRUE;
    });

    EXPECT_EQ(fieldsOf(record(folder().path(), true, true)).security, L"");

    EXPECT_EQ(information.count(), 1u);
    EXPECT_EQ(system().count("GetFileSecurityW"), 0u);
}

TEST_F(RecordTest, AsksForTheVolumeOfThePathAsGiven) {
    const auto query = answerAttributes(FILE_ATTRIBUTE_DIRECTORY, true);
    std::vector<std::wstring> volumes;
    const auto volume = REPLACE(GetVolumePathNameW, [&](LPCWSTR path, LPWSTR, DWORD) {
        volumes.emplace_back(path);
        return FALSE;
    });

    record(L"C:/x", true, true);

    EXPECT_THAT(volumes, ElementsAre(L"C:/x"));
}

TEST_F(RecordTest, IsWholeWithoutADescriptorThatCannotBeRead) {
    // Longer than the note about it has room for.
    for (const std::wstring& path : {std::wstring(L"C:\\x"), std::wstring(9000, L'x')}) {
        const auto query = answerAttributes(FILE_ATTRIBUTE_ARCHIVE);
        const auto security = system().answer("GetFileSecurityW", FALSE, ERROR_ACCESS_DENIED);
        const auto again = system().answer("GetNamedSecurityInfoW", ERROR_ACCESS_DENIED);
        const auto convert =
            system().answer("ConvertSecurityDescriptorToStringSecurityDescriptorW", FALSE, 87);

        EXPECT_EQ(fieldsOf(record(path, true, true)),
                  (Fields{path, false, 0x100000002, -2, 0x20, L"", 2, L""}));
    }
}

class AttributeWordTest : public RecordTest {};

TEST_F(AttributeWordTest, IsThatOfTheSystem) {
    writeFile(folder() / L"file", "");
    ASSERT_TRUE(SetFileAttributesW((folder() / L"file").c_str(), FILE_ATTRIBUTE_READONLY));

    EXPECT_EQ(NATIVE(getFileAttr)(folder() / L"file"),
              static_cast<jint>(GetFileAttributesW((folder() / L"file").c_str())));
    EXPECT_EQ(NATIVE(getFileAttr)(folder().path()),
              static_cast<jint>(GetFileAttributesW(folder().path().c_str())));
    EXPECT_EQ(NATIVE(getFileAttr)(folder() / L"missing"), -1);
    const auto query = answerAttributes(0x80000020);
    EXPECT_EQ(NATIVE(getFileAttr)(L"C:\\x"), static_cast<jint>(0x80000020));
}

TEST_F(AttributeWordTest, IsAskedForByTheLongFormInAnotherWay) {
    const auto fail = system().answer("GetFileAttributesExW", FALSE, ERROR_FILENAME_EXCED_RANGE);
    std::vector<std::wstring> paths;
    DWORD answer = 0x21;
    const auto word = REPLACE(GetFileAttributesW, [&](LPCWSTR path) {
        paths.emplace_back(path);
        return answer;
    });

    EXPECT_EQ(NATIVE(getFileAttr)(L"C:/x"), 0x21);
    answer = INVALID_FILE_ATTRIBUTES;
    EXPECT_EQ(NATIVE(getFileAttr)(L"\\\\?\\C:\\x"), -1);

    EXPECT_THAT(paths, ElementsAre(L"\\\\?\\C:\\x", L"\\\\?\\C:\\x"));
    EXPECT_EQ(fail.count(), 2u);
}

TEST_F(AttributeWordTest, EndsWithAnOutOfMemoryErrorWhereTheJvmHasNoMemoryForThePath) {
    java.failCall("GetStringChars");
    NATIVE(getFileAttr)(L"C:\\x");
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_EQ(system().count("GetFileAttributesExW"), 0u);
}

TEST_F(AttributeWordTest, IsMinusOneWithoutMemoryForTheLongForm) {
    const auto fail = system().answer("GetFileAttributesExW", FALSE, ERROR_FILENAME_EXCED_RANGE);
    const auto noMemory = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_EQ(NATIVE(getFileAttr)(L"C:\\x"), -1);

    EXPECT_EQ(system().count("GetFileAttributesW"), 0u);
}

}  // namespace
