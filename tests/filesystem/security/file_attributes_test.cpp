// Attributes, compression and encryption of files.
#include <windows.h>

#include <winioctl.h>

#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FileAttributesTest : public WinUtilTest {
protected:
    FileAttributesTest() { writeFile(folder() / L"file", "content"); }

    void setFileAttr(DWORD attributes) {
        NATIVE(setFileAttr)(folder() / L"file", static_cast<jint>(attributes));
    }

    DWORD attributes() { return GetFileAttributesW((folder() / L"file").c_str()); }

    std::wstring notCompressed() { return L"Fail to compress file: " + (folder() / L"file"); }
};

TEST_F(FileAttributesTest, SetsTheWholeWord) {
    const auto set = system().watch("SetFileAttributesW");

    setFileAttr(FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY);

    EXPECT_EQ(attributes() & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM),
              static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(set.calls().at(0).argument<DWORD>(1),
              static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY));
    setFileAttr(FILE_ATTRIBUTE_NORMAL);
}

TEST_F(FileAttributesTest, ChangesNothingForTheInvalidWord) {
    const auto set = system().watch("SetFileAttributesW");
    const auto encrypt = system().watch("EncryptFileW");

    setFileAttr(INVALID_FILE_ATTRIBUTES);

    EXPECT_EQ(set.count() + encrypt.count(), 0u);
    EXPECT_EQ(system().count("CreateFileW"), 0u);
}

TEST_F(FileAttributesTest, IsSilentWhenTheWordCannotBeSet) {
    const auto set = system().answer("SetFileAttributesW", FALSE, ERROR_ACCESS_DENIED);

    setFileAttr(FILE_ATTRIBUTE_HIDDEN);

    EXPECT_EQ(set.count(), 1u);
}

TEST_F(FileAttributesTest, GoesByTheLongFormWhenTheAttributesCannotBeRead) {
    const auto read = system().answer("GetFileAttributesExW", FALSE, ERROR_PATH_NOT_FOUND);
    std::vector<std::wstring> paths;
    const auto open = REPLACE(CreateFileW, [&](LPCWSTR path, auto...) {
        paths.emplace_back(path);
        return Ledger::fakeHandle();
    });
    const auto compress = system().answer("DeviceIoControl", TRUE);
    const auto set = REPLACE(SetFileAttributesW, [&](LPCWSTR path, DWORD) {
        paths.emplace_back(path);
        return TRUE;
    });
    const auto encrypt = REPLACE(EncryptFileW, [&](LPCWSTR path) {
        paths.emplace_back(path);
        return TRUE;
    });

    setFileAttr(FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_ENCRYPTED);

    const std::wstring longForm = L"\\\\?\\" + (folder() / L"file");
    EXPECT_THAT(paths, ElementsAre(longForm, longForm, longForm));
}

TEST_F(FileAttributesTest, CompressesBeforeItSetsTheWord) {
    std::vector<std::string> steps;
    HANDLE opened = nullptr;
    const auto open =
        REPLACE(CreateFileW, [&](auto... arguments) { return opened = REAL(CreateFileW)(arguments...); });
    const auto control = REPLACE(DeviceIoControl, [&](HANDLE file, DWORD code, LPVOID input, DWORD inputSize,
                                                      LPVOID output, DWORD, LPDWORD, LPOVERLAPPED) {
        EXPECT_EQ(file, opened);
        EXPECT_EQ(code, 0x9C040u);
        EXPECT_EQ(inputSize, 2u);
        EXPECT_EQ(*static_cast<const USHORT*>(input), 1u);
        EXPECT_EQ(output, nullptr);
        steps.emplace_back("compress");
        return TRUE;
    });
    const auto set = REPLACE(SetFileAttributesW, [&](LPCWSTR, DWORD word) {
        EXPECT_EQ(word, static_cast<DWORD>(FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_HIDDEN));
        steps.emplace_back("set");
        return TRUE;
    });

    setFileAttr(FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_HIDDEN);

    EXPECT_THAT(steps, ElementsAre("compress", "set"));
    const RecordedCall call = open.calls().at(0);
    EXPECT_EQ(call.argument<DWORD>(1), GENERIC_ALL);
    EXPECT_EQ(call.argument<DWORD>(2), static_cast<DWORD>(FILE_SHARE_READ));
    EXPECT_EQ(call.argument<DWORD>(4), static_cast<DWORD>(OPEN_EXISTING));
    EXPECT_EQ(call.argument<DWORD>(5), static_cast<DWORD>(FILE_FLAG_BACKUP_SEMANTICS));
}

TEST_F(FileAttributesTest, SetsNothingWhenTheFileCannotBeCompressed) {
    const auto set = system().watch("SetFileAttributesW");
    for (const char* function : {"DeviceIoControl", "CreateFileW"}) {
        const std::uint64_t failure = std::string_view(function) == "CreateFileW" ? ~0ull : 0;
        const auto failing = system().answer(function, failure, ERROR_ACCESS_DENIED);

        setFileAttr(FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_ENCRYPTED);

        EXPECT_EQ(java.takeException(), ioException(notCompressed())) << function;
    }
    EXPECT_EQ(set.count(), 0u);
    EXPECT_EQ(system().count("EncryptFileW"), 0u);
}

TEST_F(FileAttributesTest, NamesThePathAsGivenWhenItCannotBeCompressed) {
    NATIVE(setFileAttr)(L"C:/missing/file", FILE_ATTRIBUTE_COMPRESSED);

    EXPECT_EQ(java.takeException(), ioException(L"Fail to compress file: C:/missing/file"));
}

TEST_F(FileAttributesTest, CutsTheMessageOfALongPathThatCannotBeCompressed) {
    const std::wstring path = L"C:\\" + std::wstring(5000, L'd');

    NATIVE(setFileAttr)(path, FILE_ATTRIBUTE_COMPRESSED);

    EXPECT_EQ(java.takeException(), ioException((L"Fail to compress file: " + path).substr(0, 4095)));
}

TEST_F(FileAttributesTest, EncryptsAlsoWhenTheWordCannotBeSet) {
    std::vector<std::wstring> encrypted;
    const auto set = system().answer("SetFileAttributesW", FALSE, ERROR_ACCESS_DENIED);
    const auto encrypt = REPLACE(EncryptFileW, [&](LPCWSTR path) {
        encrypted.emplace_back(path);
        return TRUE;
    });

    setFileAttr(FILE_ATTRIBUTE_ENCRYPTED);

    EXPECT_THAT(encrypted, ElementsAre(folder() / L"file"));
    EXPECT_EQ(set.calls().at(0).argument<DWORD>(1), static_cast<DWORD>(FILE_ATTRIBUTE_ENCRYPTED));
}

TEST_F(FileAttributesTest, ThrowsWhenTheFileCannotBeEncrypted) {
    const auto encrypt = system().answer("EncryptFileW", FALSE, ERROR_NOT_SUPPORTED);

    setFileAttr(FILE_ATTRIBUTE_ENCRYPTED | FILE_ATTRIBUTE_HIDDEN);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"EncryptFileW", ERROR_NOT_SUPPORTED)));
    EXPECT_NE(attributes() & FILE_ATTRIBUTE_HIDDEN, 0u);
}

TEST_F(FileAttributesTest, DoesNothingWithoutMemory) {
    const auto memory = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);
    const auto set = system().watch("SetFileAttributesW");

    setFileAttr(FILE_ATTRIBUTE_HIDDEN);

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_EQ(set.count(), 0u);
}

TEST_F(FileAttributesTest, DoesNothingWithoutMemoryForTheLongForm) {
    const auto memory = system().failCall("malloc", 2, ERROR_NOT_ENOUGH_MEMORY);
    const auto set = system().watch("SetFileAttributesW");

    NATIVE(setFileAttr)(folder() / L"missing", FILE_ATTRIBUTE_HIDDEN);

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_EQ(set.count(), 0u);
}

}  // namespace
