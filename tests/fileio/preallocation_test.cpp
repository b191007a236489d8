// Giving files their length before their content.
#include "preallocation_steps.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;

constexpr jint genericRead = static_cast<jint>(GENERIC_READ);
constexpr jlong megabyte = 1024 * 1024;

class PreallocationTest : public WinUtilTest {
protected:
    jlong create(const std::wstring& path, jlong size) {
        return NATIVE(createFileNC__Ljava_lang_String_2IIIJ)(path, genericRead, CREATE_ALWAYS,
                                                             FILE_ATTRIBUTE_NORMAL, size);
    }
};

TEST_F(PreallocationTest, GivesTheFileItsLengthAndBeginsAtItsStart) {
    const jlong record = create(folder() / L"file", megabyte);

    EXPECT_EQ(NATIVE(getFileSize)(record), megabyte);
    EXPECT_EQ(NATIVE(getFilePosition)(record), 0);
    NATIVE(closeFile)(record);
}

TEST_F(PreallocationTest, OpensForWritingWhateverTheAccessSays) {
    const auto open = system().watch("CreateFileW");

    const jlong record = create(folder() / L"file", 1);
    NATIVE(closeFile)(record);

    ASSERT_EQ(open.count(), 1u);
    EXPECT_EQ(open.calls()[0].argument<DWORD>(1), GENERIC_READ | GENERIC_WRITE);
}

TEST_F(PreallocationTest, AddsNothingToTheAccessWithoutASize) {
    PreallocationSteps steps(system());

    const jlong record = create(folder() / L"file", 0);
    NATIVE(closeFile)(record);

    EXPECT_THAT(steps.taken(), ElementsAre("open for reading", "close"));
}

TEST_F(PreallocationTest, HoldsThePrivilegeFromTheOpenToTheMoveBackAndNoLonger) {
    PreallocationSteps steps(system());

    const jlong record = create(folder() / L"file", 4096);

    EXPECT_THAT(steps.taken(), ElementsAre(privilegeOn, "open for writing", "move 4096", "end", "valid 4096",
                                           "move 0", privilegeOff));
    NATIVE(closeFile)(record);
    EXPECT_THAT(steps.taken(), ElementsAre("end", "close"));
}

TEST_F(PreallocationTest, GivesThePrivilegeBackWhenTheOpenFails) {
    PreallocationSteps steps(system());
    const auto open = system().answer("CreateFileW", ~0ull, ERROR_ACCESS_DENIED);

    EXPECT_EQ(create(folder() / L"file", 1), 0);

    EXPECT_THAT(steps.taken(), ElementsAre(privilegeOn, privilegeOff));
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"CreateFileW", ERROR_ACCESS_DENIED)));
}

TEST_F(PreallocationTest, DeclaresNoContentValidWithoutThePrivilege) {
    PreallocationSteps steps(system());
    const auto token = system().answer("OpenProcessToken", FALSE, ERROR_ACCESS_DENIED);

    const jlong record = create(folder() / L"file", 4096);

    EXPECT_THAT(steps.taken(), ElementsAre("open for writing", "move 4096", "end", "move 0"));
    NATIVE(closeFile)(record);
}

TEST_F(PreallocationTest, GoesOnWhenTheContentCannotBeDeclaredValid) {
    const auto valid = system().answer("SetFileValidData", FALSE, ERROR_PRIVILEGE_NOT_HELD);

    const jlong record = create(folder() / L"file", 4096);

    EXPECT_EQ(NATIVE(getFileSize)(record), 4096);
    NATIVE(closeFile)(record);
}

TEST_F(PreallocationTest, RaisesDiskFullWhenThereIsNoRoomForTheLength) {
    PreallocationSteps steps(system());
    const auto end = system().failCall("SetEndOfFile", 1, ERROR_DISK_FULL);

    EXPECT_EQ(create(folder() / L"file", megabyte), 0);

    EXPECT_EQ(java.takeException(),
              (Thrown{"com/qarvo/dov/io/DiskFullException", errorMessage(L"createFileN", ERROR_DISK_FULL)}));
    EXPECT_THAT(steps.taken(),
                ElementsAre(privilegeOn, "open for writing", "move 1048576", "close", privilegeOff));
}

TEST_F(PreallocationTest, RaisesTheErrorOfTheFirstMoveOfThePointer) {
    PreallocationSteps steps(system());
    const auto move = system().failCall("SetFilePointerEx", 1, ERROR_NEGATIVE_SEEK);

    EXPECT_EQ(create(folder() / L"file", megabyte), 0);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"createFileN", ERROR_NEGATIVE_SEEK)));
    EXPECT_THAT(steps.taken(), ElementsAre(privilegeOn, "open for writing", "close", privilegeOff));
}

TEST_F(PreallocationTest, RaisesAFailureWithoutACode) {
    const auto end = system().failCall("SetEndOfFile", 1, ERROR_SUCCESS);

    EXPECT_EQ(create(folder() / L"file", megabyte), 0);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"createFileN", ERROR_SUCCESS)));
}

TEST_F(PreallocationTest, IgnoresAFailingMoveBackToTheStart) {
    const auto move = system().failCall("SetFilePointerEx", 2, ERROR_NEGATIVE_SEEK);

    const jlong record = create(folder() / L"file", 4096);

    EXPECT_GT(record, 0);
    NATIVE(closeFile)(record);
}

TEST_F(PreallocationTest, CutsTheFileAtWhatWasWritten) {
    const jlong record = create(folder() / L"file", megabyte);

    NATIVE(write__J_3BII)(record, java.byteArray({'a', 'b', 'c'}), 0, 3);
    NATIVE(closeFile)(record);

    EXPECT_EQ(readFile(folder() / L"file"), "abc");
}

TEST_F(PreallocationTest, SetsTheEndOfAFileThroughTheNativeApi) {
    const jlong record = NATIVE(createFileN)(folder() / L"file", static_cast<jint>(GENERIC_WRITE), 0);

    EXPECT_TRUE(NATIVE(setFileEndOfFileInfo)(record, 5000));

    EXPECT_EQ(NATIVE(getFileSize)(record), 5000);
    NATIVE(closeFile)(record);
}

using SetInformation = LONG(HANDLE, void*, void*, ULONG, int);

TEST_F(PreallocationTest, AsksForTheEndOfFileClassWithEightBytes) {
    const jlong record = NATIVE(createFileN)(folder() / L"file", static_cast<jint>(GENERIC_WRITE), 0);
    LONGLONG end = 0;
    ULONG length = 0;
    int informationClass = 0;
    const auto set = system().replace<SetInformation>(
        "NtSetInformationFile", [&](HANDLE, void*, void* information, ULONG given, int which) -> LONG {
            end = *static_cast<LONGLONG*>(information);
            length = given;
            informationClass = which;
            return 0;
        });

    EXPECT_TRUE(NATIVE(setFileEndOfFileInfo)(record, 0x123456789));

    EXPECT_EQ(end, 0x123456789);
    EXPECT_EQ(length, 8u);
    EXPECT_EQ(informationClass, 20);
    NATIVE(closeFile)(record);
}

TEST_F(PreallocationTest, PutsTheTextOfTheStatusBehindItsOwn) {
    const jlong record = NATIVE(createFileN)(folder() / L"file", static_cast<jint>(GENERIC_WRITE), 0);
    const auto set = system().answer("NtSetInformationFile", 0xC000007F);
    DWORD flags = 0;
    HMODULE source = nullptr;
    DWORD code = 0;
    DWORD language = 0;
    DWORD room = 0;
    const auto format = REPLACE(FormatMessageW,
                                [&](DWORD given, LPCVOID from, DWORD id, DWORD inLanguage, LPWSTR buffer,
                                    DWORD size, va_list*) -> DWORD {
                                    room = size;
                                    language = inLanguage;
                                    flags = given;
                                    source = static_cast<HMODULE>(const_cast<void*>(from));
                                    code = id;
                                    wcscpy_s(buffer, size, L" <disk full>");
                                    return 12;
                                });

    EXPECT_FALSE(NATIVE(setFileEndOfFileInfo)(record, 0x100000005));

    const std::wstring own =
        L"[WindowsUtil.setFileEndOfFileInfo] Failed to set the end of file position to 5";
    EXPECT_EQ(java.takeException(), ioException(own + L" <disk full>"));
    EXPECT_EQ(room, 4096 - own.size());
    EXPECT_EQ(flags, 0x1800u);
    EXPECT_EQ(source, GetModuleHandleW(L"ntdll.dll"));
    EXPECT_EQ(code, 0xC000007Fu);
    EXPECT_EQ(language, 0x400u);
    NATIVE(closeFile)(record);
}

TEST_F(PreallocationTest, RaisesCodeSixForTheEndOfNoRecord) {
    EXPECT_FALSE(NATIVE(setFileEndOfFileInfo)(0, 1));

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"setFileEndOfFileInfo", ERROR_INVALID_HANDLE)));
}

TEST_F(PreallocationTest, AnswersFalseWhereTheSystemCannotSetTheEndThatWay) {
    FreshLibrary older(folder(), L"older.dll");
    older.ledger().allowUnknown("FreeLibrary");  // kernel32, of which no reference was taken
    const auto hidden = older.system().hide({"NtSetInformationFile"});
    ASSERT_TRUE(older.load());
    constexpr char name[] = "Java_com_qarvo_kel_util_WindowsUtil_setFileEndOfFileInfo";
    using Function = decltype(Java_com_qarvo_kel_util_WindowsUtil_setFileEndOfFileInfo);
    const NativeMethod<Function> setEnd(java, name, older.exported<Function>(name));

    EXPECT_FALSE(setEnd(0, 1));
}

TEST_F(PreallocationTest, SaysThatAFileCanBeExtendedAndLeavesNothingBehind) {
    const auto open = system().watch("CreateFileW");
    PreallocationSteps steps(system());

    EXPECT_TRUE(NATIVE(isSupportExtendFileSize)(folder() / L"probe"));

    ASSERT_EQ(open.count(), 1u);
    EXPECT_EQ(open.calls()[0].argument<DWORD>(1), GENERIC_WRITE);
    EXPECT_EQ(open.calls()[0].argument<DWORD>(2), 3u);
    EXPECT_EQ(open.calls()[0].argument<DWORD>(4), 2u);
    EXPECT_EQ(open.calls()[0].argument<DWORD>(5), 0x10000000u);
    EXPECT_FALSE(fileExists(folder() / L"probe"));
    EXPECT_THAT(steps.taken(), ElementsAre(privilegeOn, "open for writing", "move 1048576", "end",
                                           "valid 1048576", "close", privilegeOff));
}

TEST_F(PreallocationTest, MakesNoFileWithoutThePrivilege) {
    const auto token = system().answer("OpenProcessToken", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(NATIVE(isSupportExtendFileSize)(folder() / L"probe"));

    EXPECT_EQ(system().count("CreateFileW"), 0u);
}

TEST_F(PreallocationTest, SaysThatAFileCannotBeExtendedWhereItCannotBeMade) {
    PreallocationSteps steps(system());

    EXPECT_FALSE(NATIVE(isSupportExtendFileSize)(folder() / L"missing\\probe"));

    EXPECT_THAT(steps.taken(), ElementsAre(privilegeOn, privilegeOff));
}

TEST_F(PreallocationTest, DoesNotSayWhetherAFileCanBeExtendedWithoutMemory) {
    // The cell of the file; the long form of a path that cannot be opened as it is.
    for (std::size_t k = 1; k <= 2; ++k) {
        PreallocationSteps steps(system());
        const auto fail = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_FALSE(NATIVE(isSupportExtendFileSize)(folder() / L"missing\\probe"));

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << "allocation " << k;
        EXPECT_THAT(steps.taken(), ElementsAre(privilegeOn, privilegeOff));
    }
    EXPECT_EQ(system().count("CreateFileW"), 1u);
}

struct ProbeFailure {
    const char* function;
    std::vector<std::string> steps;  // the failing one left out
};

class ProbeFailureTest : public PreallocationTest, public ::testing::WithParamInterface<ProbeFailure> {};

TEST_P(ProbeFailureTest, SaysThatAFileCannotBeExtendedAndGivesEverythingBack) {
    PreallocationSteps steps(system());
    const auto fail = system().failCall(GetParam().function, 1, ERROR_DISK_FULL);

    EXPECT_FALSE(NATIVE(isSupportExtendFileSize)(folder() / L"probe"));

    EXPECT_FALSE(fileExists(folder() / L"probe"));
    EXPECT_EQ(steps.taken(), GetParam().steps);
}

INSTANTIATE_TEST_SUITE_P(
    Functions, ProbeFailureTest,
    ::testing::Values(
        ProbeFailure{"SetFilePointerEx", {privilegeOn, "open for writing", "close", privilegeOff}},
        ProbeFailure{"SetEndOfFile",
                     {privilegeOn, "open for writing", "move 1048576", "close", privilegeOff}},
        ProbeFailure{"SetFileValidData",
                     {privilegeOn, "open for writing", "move 1048576", "end", "close", privilegeOff}}),
    [](const auto& failure) { return failure.param.function; });

}  // namespace
