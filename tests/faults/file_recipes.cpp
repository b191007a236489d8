// Paths, and files that are opened, read, written and positioned.
#include "../fileio/preallocation_steps.h"
#include "../fileio/read_write_fixture.h"
#include "reasons.h"
#include "recipe.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;

constexpr jint readAndWrite = static_cast<jint>(GENERIC_READ | GENERIC_WRITE);
constexpr DWORD accessDenied = 0xC0000022;  // as NTSTATUS
constexpr char kept[] = "a record whose size cannot be read at open is never freed";
constexpr char roomAsAskedFor[] = "a buffer of the very size that was asked for is large enough";

// A file with content in a folder of its own.
class FileTest : public WinUtilTest {
protected:
    FileTest() { writeFile(path, "content"); }

    const std::wstring path = folder() / L"a file with a name";
};

class OpenTest : public RecipeOn<FileTest> {
protected:
    OpenTest() { mask(folder().path()); }

    template <class Call>
    void open(Call&& call) {
        mustLeak("malloc", 3, kept, {"GetFileSizeEx"});
        mustLeak("CreateFileW", 1, kept, {"GetFileSizeEx"});
        jlong record = 0;
        examine([&] { return handleText(record = call()); });
        NATIVE(closeFile)(record);
    }
};

#define OPEN_RECIPE(method, branch)                                       \
    class Recipe_##method##_##branch final : public OpenTest {            \
        void perform() override;                                          \
    };                                                                    \
    [[maybe_unused]] const bool method##_##branch##Added =                \
        testbed::addRecipe<Recipe_##method##_##branch>(#method, #branch); \
    void Recipe_##method##_##branch::perform()

OPEN_RECIPE(openFile, ofAFile) {
    open([&] { return NATIVE(openFile)(path); });
}

OPEN_RECIPE(createFileN, ofAFile) {
    open([&] { return NATIVE(createFileN)(path, readAndWrite, 0); });
}

OPEN_RECIPE(createFileNC__Ljava_lang_String_2III, ofANewFile) {
    open([&] {
        return NATIVE(createFileNC__Ljava_lang_String_2III)(folder() / L"new", readAndWrite, CREATE_ALWAYS,
                                                            0);
    });
}

OPEN_RECIPE(createFileNC__Ljava_lang_String_2IIIJ, preallocated) {
    PreallocationSteps steps(system());
    tolerates({"SetFileValidData", "LookupPrivilegeValueA", "AdjustTokenPrivileges", "OpenProcessToken"},
              "the size is set all the same; only the zeroing of what is beyond it is not spared");
    tolerates({"SetFilePointerEx 2"}, nothingLeftToDo);
    open([&] {
        return NATIVE(createFileNC__Ljava_lang_String_2IIIJ)(path, readAndWrite, OPEN_EXISTING, 0, 8192);
    });
}

RECIPE(FileTest, isSupportExtendFileSize, ofAFile) {
    PreallocationSteps steps(system());
    tolerates({"DeleteFileW", "SetFileAttributesW", "OpenProcessToken 2", "LookupPrivilegeValueA 2",
               "AdjustTokenPrivileges 2"},
              nothingLeftToDo);
    examine([&] { return NATIVE(isSupportExtendFileSize)(path); });
}

RECIPE(FileTest, isSupportExtendFileSize, withoutMemory) {
    java.failCall("GetStringChars");
    examine([&] { return NATIVE(isSupportExtendFileSize)(path); });
}

RECIPE(FileTest, getLongPathName, ofAFile) {
    mask(folder().path());
    mayAnswer(L"\"<it>\\a file with a name\"");
    examine([&] { return NATIVE(getLongPathName)(path); });
}

RECIPE(WinUtilTest, getLongPathName, thatIsVeryLong) {
    const std::wstring name = L"C:\\" + std::wstring(1000, L'x');
    const auto expand = REPLACE(GetLongPathNameW, [&](LPCWSTR, LPWSTR buffer, DWORD room) -> DWORD {
        if (room <= name.size()) {
            return static_cast<DWORD>(name.size() + 1);
        }
        wcscpy_s(buffer, room, name.c_str());
        return static_cast<DWORD>(name.size());
    });
    comesWhole("GetLongPathNameW", roomAsAskedFor);
    mayAnswer(L"\"C:\\x~1\"");
    examine([&] { return NATIVE(getLongPathName)(L"C:\\x~1"); });
}

RECIPE(WinUtilTest, CovertEnvPathToFilePath, withAVariable) {
    examine([&] { return NATIVE(CovertEnvPathToFilePath)(L"%SystemRoot%\\x"); });
}

RECIPE(WinUtilTest, CovertEnvPathToFilePath, thatIsVeryLong) {
    const std::wstring text = L"%SystemRoot%\\" + std::wstring(5000, L'x');
    comesWhole("ExpandEnvironmentStringsW", roomAsAskedFor);
    examine([&] { return NATIVE(CovertEnvPathToFilePath)(text); });
}

RECIPE(WinUtilTest, isMethodSupported, thatIsThere) {
    examine([&] { return NATIVE(isMethodSupported)(L"version.dll", L"VerQueryValueW"); });
}

RECIPE(ReadWriteTest, write__J_3BII, ofBytes) {
    open("content");
    mayAnswerAnythingBesideAnException();
    answersInstead("WriteFile", L"32", shortTransfer);
    examine([&] {
        NATIVE(write__J_3BII)(record, java.byteArray(std::vector<jbyte>(64)), 0, 64);
        return static_cast<jlong>(content().size());
    });
}

RECIPE(ReadWriteTest, read__J_3BII, ofBytes) {
    open("content of a file");
    answersInstead("ReadFile", L"4", shortTransfer);
    examine([&] { return NATIVE(read__J_3BII)(record, java.byteArray(std::vector<jbyte>(8)), 0, 8); });
}

RECIPE(DirectBufferTest, write__JLjava_nio_ByteBuffer_2III, ofABuffer) {
    open("content");
    mayAnswerAnythingBesideAnException();
    answersInstead("WriteFile", L"256", shortTransfer);
    examine([&] {
        write(0, 512);
        return static_cast<jlong>(content().size());
    });
}

RECIPE(DirectBufferTest, write__JLjava_nio_ByteBuffer_2III, ofTheEndOfAnUnbufferedFile) {
    open("content", noBuffering);
    examine([&] { write(0, 700); });
}

RECIPE(DirectBufferTest, read__JLjava_nio_ByteBuffer_2III, ofABuffer) {
    open("content of a file");
    answersInstead("ReadFile", L"4", shortTransfer);
    examine([&] { return read(0, 8); });
}

RECIPE(DirectBufferTest, read__JLjava_nio_ByteBuffer_2III, ofAnUnbufferedFile) {
    open(std::string(1024, 'x'), noBuffering);
    answersInstead("ReadFile", L"256", shortTransfer);
    examine([&] { return read(0, 512); });
}

RECIPE(ReadWriteTest, seek, forward) {
    open("content of a file");
    examine([&] { return NATIVE(seek)(record, 5); });
}

RECIPE(ReadWriteTest, skip, forward) {
    open("content of a file");
    examine([&] { return NATIVE(skip)(record, 5); });
}

RECIPE(ReadWriteTest, getFilePosition, ofAnOpenFile) {
    open("content of a file");
    NATIVE(seek)(record, 3);
    examine([&] { return NATIVE(getFilePosition)(record); });
}

RECIPE(ReadWriteTest, getFileSize, ofAnOpenFile) {
    open("content of a file");
    examine([&] { return NATIVE(getFileSize)(record); });
}

RECIPE(ReadWriteTest, setFileEndOfFileInfo, ofAnOpenFile) {
    open("content of a file");
    examine([&] { return NATIVE(setFileEndOfFileInfo)(record, 4); });
}

RECIPE(ReadWriteTest, setFileEndOfFileInfo, thatIsRefused) {
    open("content of a file");
    const auto refused = system().answer("NtSetInformationFile", accessDenied);
    examine([&] { return NATIVE(setFileEndOfFileInfo)(record, 4); });
}

RECIPE(ReadWriteTest, closeFile, ofAnOpenFile) {
    open("content of a file");
    examine([&] { NATIVE(closeFile)(std::exchange(record, 0)); });
}

RECIPE(WinUtilTest, closeFile, ofAPreallocatedFile) {
    PreallocationSteps steps(system());
    const jlong record = NATIVE(createFileNC__Ljava_lang_String_2IIIJ)(folder() / L"new", readAndWrite,
                                                                       CREATE_ALWAYS, 0, 8192);
    tolerates({"SetEndOfFile"}, nothingLeftToDo);
    examine([&] { NATIVE(closeFile)(record); });
}

RECIPE(WinUtilTest, getSectorSize, ofADrive) {
    examine([&] { return NATIVE(getSectorSize)(L"C:\\windows"); });
}

RECIPE(DirectBufferTest, GetDirectBufferAddress, ofABuffer) {
    examine([&] { return handleText(NATIVE(GetDirectBufferAddress)(buffer())); });
}

RECIPE(WinUtilTest, getAlignedByteBuffer, ofSomeBytes) {
    examine([&] { return NATIVE(getAlignedByteBuffer)(512); });
}

}  // namespace
