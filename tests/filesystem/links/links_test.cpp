// Junctions and symbolic links through the shipped DLL, on a disk of attributes and reparse data.
#include "reparse_disk.h"

namespace {

using namespace testbed;

constexpr DWORD directoryBit = FILE_ATTRIBUTE_DIRECTORY;
constexpr DWORD plainFile = FILE_ATTRIBUTE_ARCHIVE;

class Links : public WinUtilTest {
protected:
    ReparseDisk disk{system()};

    void SetUp() override {
        disk.entries[L"C:\\file"] = {plainFile, {}};
        disk.entries[L"C:\\folder"] = {directoryBit, {}};
        disk.entries[L"C:\\with every other bit"] = {~DWORD{FILE_ATTRIBUTE_REPARSE_POINT}, {}};
        disk.put(L"C:\\junction", directoryBit, {});
        disk.put(L"C:\\volume", directoryBit, {.path = L"\\??\\Volume{1}\\"});
        disk.put(L"C:\\dirlink", directoryBit, {.tag = IO_REPARSE_TAG_SYMLINK, .path = L"..\\x"});
        disk.put(L"C:\\filelink", plainFile, {.tag = IO_REPARSE_TAG_SYMLINK});
        disk.put(L"C:\\cloud", plainFile, {.tag = 0x9000001A});
        disk.put(L"C:\\foreign", plainFile, {.tag = 0x00000011});
    }
};

// The same on the system's own files.
using RealLinks = WinUtilTest;

TEST_F(Links, TellsTheKindsApart) {
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\junction"), 16);
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\volume"), 16);
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\filelink"), 17);
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\dirlink"), 18);
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\cloud"), static_cast<jint>(0x900000FF));
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\foreign"), 255);
}

TEST_F(Links, OpensNothingThatIsNoReparsePoint) {
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\file"), 255);
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\with every other bit"), 255);
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\folder"), nullptr);
    EXPECT_FALSE(NATIVE(isLink)(L"C:\\file"));
    EXPECT_FALSE(NATIVE(isDirectoryJunction)(L"C:\\folder"));

    EXPECT_TRUE(disk.opens.empty());
}

TEST_F(Links, OpensTheLinkItselfAndLeavesItToOthers) {
    NATIVE(getLinkType)(L"C:\\junction");

    ASSERT_EQ(disk.opens.size(), 1u);
    EXPECT_EQ(disk.opens[0].path, L"C:\\junction");
    EXPECT_EQ(disk.opens[0].access, 0x100080u);
    EXPECT_EQ(disk.opens[0].share, 1u);
    EXPECT_EQ(disk.opens[0].disposition, 3u);
    EXPECT_EQ(disk.opens[0].flags, 0x2200000u);
    EXPECT_EQ(disk.opens[0].security, nullptr);
}

TEST_F(Links, GivesTheTargetOfALink) {
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\junction").text(), L"C:\\data");
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\filelink").text(), L"C:\\data");
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\dirlink").text(), L"..\\x");
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\volume").text(), L"\\\\?\\Volume{1}\\");
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\cloud"), nullptr);
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\foreign"), nullptr);
}

TEST_F(Links, CountsJunctionsAndSymbolicLinksAsLinks) {
    for (const wchar_t* path : {L"C:\\junction", L"C:\\volume", L"C:\\filelink", L"C:\\dirlink"}) {
        EXPECT_TRUE(NATIVE(isLink)(path)) << toUtf8(path);
    }
    for (const wchar_t* path : {L"C:\\cloud", L"C:\\foreign", L"C:\\missing"}) {
        EXPECT_FALSE(NATIVE(isLink)(path)) << toUtf8(path);
    }
}

TEST_F(Links, TakesOnlyJunctionsForJunctions) {
    EXPECT_TRUE(NATIVE(isDirectoryJunction)(L"C:\\junction"));
    EXPECT_TRUE(NATIVE(isDirectoryJunction)(L"C:\\volume"));
    EXPECT_FALSE(NATIVE(isDirectoryJunction)(L"C:\\dirlink"));
    EXPECT_FALSE(NATIVE(isDirectoryJunction)(L"C:\\filelink"));
}

TEST_F(Links, SeesNoJunctionInAFileWithItsTag) {
    disk.put(L"C:\\odd", plainFile, {});

    EXPECT_FALSE(NATIVE(isDirectoryJunction)(L"C:\\odd"));
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\odd"), 16);
}

TEST_F(Links, TriesToOpenWhatHasNoReadableAttributesUnlessAskedForAJunction) {
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\missing"), 255);
    EXPECT_EQ(disk.opens.size(), 2u) << "as given and by its long form";
    disk.opens.clear();

    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\missing"), nullptr);
    EXPECT_EQ(disk.opens.size(), 2u);
    disk.opens.clear();

    EXPECT_FALSE(NATIVE(isDirectoryJunction)(L"C:\\missing"));
    EXPECT_TRUE(disk.opens.empty());
}

TEST_F(Links, TakesADirectoryLinkWhoseAttributesCannotBeReadForOneToADirectory) {
    const auto attributes = system().answer("GetFileAttributesExW", 0, ERROR_ACCESS_DENIED);
    const auto word = system().answer("GetFileAttributesW", 0xFFFFFFFF, ERROR_ACCESS_DENIED);

    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\filelink"), 18);
}

TEST_F(Links, AnswersQuietlyWhenALinkCannotBeRead) {
    disk.openError = ERROR_ACCESS_DENIED;
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\junction"), 255);
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\junction"), nullptr);
    disk.openError = 0;
    disk.controlError = ERROR_ACCESS_DENIED;
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\junction"), 255);
    EXPECT_FALSE(NATIVE(isLink)(L"C:\\junction"));
    EXPECT_FALSE(NATIVE(isDirectoryJunction)(L"C:\\junction"));
}

TEST_F(Links, KeepsTheKindOfAHostileLinkAndGivesATextWithinItsBytes) {
    disk.put(L"C:\\far", directoryBit, {.nameOffset = 0xFFFE, .nameLength = 0xFFFE});
    disk.put(L"C:\\long", directoryBit, {.path = std::wstring(3000, L'a')});
    disk.put(L"C:\\full", directoryBit, {.path = std::wstring(8184, L'a'), .nameLength = 20});
    disk.put(L"C:\\half", directoryBit, {.path = L""});
    disk.entries[L"C:\\half"].data.resize(15);

    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\far"), 16);
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\far").text(), L"C:\\data");
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\long"), 16);
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\long").text(), L"");
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\full").text(), L"aaaaaaaaaa");
    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\half"), 255);
}

TEST_F(Links, DoesNotReadBehindItsBufferWhateverTheSystemSaysItWrote) {
    disk.put(L"C:\\full", directoryBit, {.path = std::wstring(8184, L'a'), .nameLength = 0xFFFE});
    disk.claimedSize = 0xFFFFFFFF;

    EXPECT_EQ(NATIVE(getLinkType)(L"C:\\full"), 16);
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\full").text(), L"");
}

TEST_F(Links, AnswersNothingWithoutMemory) {
    // The path, and what it takes to open a link or to ask for the attributes by the long form.
    for (const auto& [path, k] :
         {std::pair(L"C:\\junction", 1u), std::pair(L"C:\\junction", 2u), std::pair(L"C:\\missing", 2u)}) {
        const auto expectNone = [&](auto call) {
            const auto memory = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);
            call();
            EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << toUtf8(path) << k;
        };
        expectNone([&] { NATIVE(getLinkType)(path); });
        expectNone([&] { EXPECT_EQ(NATIVE(getLinkTarget)(path), nullptr); });
        expectNone([&] { EXPECT_FALSE(NATIVE(isLink)(path)); });
        expectNone([&] { EXPECT_FALSE(NATIVE(isDirectoryJunction)(path)); });
    }
    EXPECT_TRUE(disk.opens.empty());
}

// Making junctions

TEST_F(Links, WritesAJunctionByteByByte) {
    EXPECT_TRUE(NATIVE(createJunctionPoint)(L"C:\\new", L"C:\\data"));

    const std::wstring name = L"\\??\\C:\\data";
    Bytes expected(42);
    const std::uint16_t header[] = {0x0003, 0xA000, 34, 0, 0, 22, 24, 0};
    std::memcpy(expected.data(), header, sizeof(header));
    std::memcpy(expected.data() + sizeof(header), name.data(), 22);
    ASSERT_EQ(disk.writes.size(), 1u);
    EXPECT_EQ(disk.writes[0].data, expected);
    EXPECT_EQ(disk.writes[0].outputSize, 0u);
    EXPECT_EQ(disk.writes[0].output, nullptr);
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\new").text(), L"C:\\data");
}

TEST_F(Links, OpensTheNewDirectoryForWriting) {
    NATIVE(createJunctionPoint)(L"C:\\new", L"C:\\data");

    ASSERT_EQ(disk.opens.size(), 1u);
    EXPECT_EQ(disk.opens[0].path, L"C:\\new");
    EXPECT_EQ(disk.opens[0].access, 0x40000000u);
    EXPECT_EQ(disk.opens[0].share, 1u);
    EXPECT_EQ(disk.opens[0].disposition, 3u);
    EXPECT_EQ(disk.opens[0].flags, 0x2200000u);
    EXPECT_EQ(disk.opens[0].security, nullptr);
}

TEST_F(Links, StoresANetworkTargetAndReadsItBack) {
    EXPECT_TRUE(NATIVE(createJunctionPoint)(L"C:\\new", L"\\\\srv\\share\\x"));

    const Bytes& data = disk.entries[L"C:\\new"].data;
    const std::wstring name = L"\\??\\UNC\\srv\\share\\x";
    EXPECT_EQ(std::memcmp(data.data() + 16, name.c_str(), (name.size() + 1) * 2), 0);
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\new").text(), L"\\\\srv\\share\\x");
}

TEST_F(Links, MakesNoJunctionWhereSomethingIs) {
    EXPECT_FALSE(NATIVE(createJunctionPoint)(L"C:\\folder", L"C:\\data"));

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"CreateJunctionPoint", 183)));
    EXPECT_TRUE(disk.opens.empty());
}

TEST_F(Links, LeavesTheDirectoryOfAJunctionThatFails) {
    disk.openError = ERROR_ACCESS_DENIED;
    NATIVE(createJunctionPoint)(L"C:\\unopened", L"C:\\data");
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"CreateJunctionPoint", ERROR_ACCESS_DENIED)));
    EXPECT_EQ(disk.entries[L"C:\\unopened"].attributes, directoryBit);

    disk.openError = 0;
    disk.controlError = ERROR_INVALID_REPARSE_DATA;
    NATIVE(createJunctionPoint)(L"C:\\unset", L"C:\\data");
    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"CreateJunctionPoint", ERROR_INVALID_REPARSE_DATA)));
    EXPECT_EQ(disk.entries[L"C:\\unset"].attributes, directoryBit);
}

TEST_F(Links, RefusesATargetThatIsTooLong) {
    EXPECT_FALSE(NATIVE(createJunctionPoint)(L"C:\\new", std::wstring(2044, L'a')));

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"CreateJunctionPoint", 206)));
    EXPECT_TRUE(disk.writes.empty());
    EXPECT_EQ(disk.entries[L"C:\\new"].attributes, directoryBit);

    EXPECT_TRUE(NATIVE(createJunctionPoint)(L"C:\\longest", std::wstring(2043, L'a')));
    EXPECT_EQ(NATIVE(getLinkTarget)(L"C:\\longest").text(), std::wstring(2043, L'a'));
}

TEST_F(Links, WaitsForADirectoryThatIsInUse) {
    disk.openError = ERROR_SHARING_VIOLATION;
    const auto sleep = system().answer("Sleep", 0);

    NATIVE(createJunctionPoint)(L"C:\\new", L"C:\\data");

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"CreateJunctionPoint", ERROR_SHARING_VIOLATION)));
    EXPECT_EQ(sleep.count(), 10u);
}

TEST_F(Links, SaysSoWhenThereIsNoMemoryForALink) {
    const Thrown noMemory = ioException(errorMessage(L"CreateJunctionPoint", ERROR_NOT_ENOUGH_MEMORY));
    for (const std::size_t k : {1, 2, 3}) {
        disk.entries.erase(L"C:\\new");
        const auto memory = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_FALSE(NATIVE(createJunctionPoint)(L"C:\\new", L"C:\\data"));

        EXPECT_EQ(java.takeException(), noMemory) << "allocation " << k;
    }
}

TEST_F(Links, SaysSoWhenTheJvmHasNoMemoryForALink) {
    for (const std::size_t k : {1, 2}) {
        java.failCall("GetStringChars", k);

        EXPECT_FALSE(NATIVE(createFileSymbolicLink)(L"C:\\new", L"C:\\data"));

        EXPECT_EQ(java.takeException(),
                  ioException(errorMessage(L"CreateFileSymbolicLink", ERROR_NOT_ENOUGH_MEMORY)))
            << "string " << k;
    }
}

// Making symbolic links

TEST_F(Links, HandsLinkTargetAndKindToTheSystem) {
    std::vector<std::wstring> calls;
    const auto create =
        REPLACE(CreateSymbolicLinkW, [&](LPCWSTR link, LPCWSTR target, DWORD flags) -> BOOLEAN {
            calls.push_back(std::wstring(link) + L"|" + target + L"|" + std::to_wstring(flags));
            return TRUE;
        });

    EXPECT_TRUE(NATIVE(createDirectorySymbolicLink)(L"C:\\new", L"..\\x"));
    EXPECT_TRUE(NATIVE(createFileSymbolicLink)(L"new", L"C:/x"));

    EXPECT_EQ(calls, (std::vector<std::wstring>{L"C:\\new|..\\x|1", L"new|C:/x|0"}));
}

TEST_F(Links, LooksAtTheLowByteOfTheAnswerOnly) {
    const auto create = system().answer("CreateSymbolicLinkW", 0xABCDEF00, ERROR_PRIVILEGE_NOT_HELD);

    EXPECT_FALSE(NATIVE(createDirectorySymbolicLink)(L"C:\\new", L"C:\\data"));
    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"CreateDirectorySymbolicLink", ERROR_PRIVILEGE_NOT_HELD)));
    EXPECT_FALSE(NATIVE(createFileSymbolicLink)(L"C:\\new", L"C:\\data"));
    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"CreateFileSymbolicLink", ERROR_PRIVILEGE_NOT_HELD)));
}

TEST_F(RealLinks, FailsWhereTheSystemHasNoSymbolicLinks) {
    FreshLibrary old(folder(), L"old.dll");
    old.ledger().allowUnknown("FreeLibrary");  // of a module that was only looked up
    const auto hidden = old.system().hide({"CreateSymbolicLinkW"});
    ASSERT_TRUE(old.load());
    using Function = decltype(Java_com_qarvo_kel_util_WindowsUtil_createFileSymbolicLink);
    const char* name = "Java_com_qarvo_kel_util_WindowsUtil_createFileSymbolicLink";
    const NativeMethod<Function> create(java, name, old.exported<Function>(name));

    EXPECT_FALSE(create(folder() / L"link", L"C:\\data"));

    EXPECT_EQ(java.takeException(),
              ioException(errorMessage(L"CreateFileSymbolicLink", ERROR_CALL_NOT_IMPLEMENTED)));
    old.unload();
}

TEST_F(RealLinks, SeesPlainFilesAndFoldersAsNoLinks) {
    writeFile(folder() / L"file.txt", "content");

    EXPECT_EQ(NATIVE(getLinkType)(folder() / L"file.txt"), 255);
    EXPECT_EQ(NATIVE(getLinkType)(folder().path()), 255);
    EXPECT_EQ(NATIVE(getLinkType)(folder() / L"missing"), 255);
    EXPECT_EQ(NATIVE(getLinkTarget)(folder() / L"file.txt"), nullptr);
    EXPECT_FALSE(NATIVE(isLink)(folder() / L"file.txt"));
    EXPECT_FALSE(NATIVE(isDirectoryJunction)(folder().path()));
    EXPECT_EQ(NATIVE(getLinkType)(L""), 255);
}

TEST_F(RealLinks, ReportsAnExistingDirectory) {
    NATIVE(createJunctionPoint)(folder().path(), L"C:\\data");

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"CreateJunctionPoint", ERROR_ALREADY_EXISTS)));
}

TEST_F(RealLinks, TriesTheLinksPathAsGivenOnly) {
    const auto mkdir = system().watch("CreateDirectoryW");

    NATIVE(createJunctionPoint)(folder() / L"missing\\link", L"C:\\data");

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"CreateJunctionPoint", ERROR_PATH_NOT_FOUND)));
    EXPECT_EQ(mkdir.count(), 1u);
}

}  // namespace
