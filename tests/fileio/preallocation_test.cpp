// Giving files their length before their content.
#include "winutil_test.h"

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

    // Records each change of a privilege as "+name" or "-name".
    Replacement watchPrivileges() {
        lookups = REPLACE(LookupPrivilegeValueA, [this](LPCSTR machine, LPCSTR name, PLUID luid) {
            lastName = name;
            return REAL(LookupPrivilegeValueA)(machine, name, luid);
        });
        return REPLACE(AdjustTokenPrivileges, [this](HANDLE token, BOOL all, PTOKEN_PRIVILEGES state,
                                                     DWORD size, PTOKEN_PRIVILEGES previous, PDWORD length) {
            privileges.push_back((state->Privileges[0].Attributes == SE_PRIVILEGE_ENABLED ? "+" : "-") +
                                 lastName);
            return REAL(AdjustTokenPrivileges)(token, all, state, size, previous, length);
        });
    }

    Replacement lookups;
    std::string lastName;
    std::vector<std::string> privileges;
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
    const auto open = system().watch("CreateFileW");
    const auto watch = watchPrivileges();

    const jlong record = create(folder() / L"file", 0);
    NATIVE(closeFile)(record);

    EXPECT_EQ(open.calls()[0].argument<DWORD>(1), GENERIC_READ);
    EXPECT_THAT(privileges, ElementsAre());
    EXPECT_EQ(system().count("SetEndOfFile"), 0u);
}

TEST_F(PreallocationTest, HoldsThePrivilegeWhileItOpensAndNoLonger) {
    const auto watch = watchPrivileges();

    const jlong record = create(folder() / L"file", 1);
    NATIVE(closeFile)(record);

    EXPECT_THAT(privileges, ElementsAre("+SeManageVolumePrivilege", "-SeManageVolumePrivilege"));
}

TEST_F(PreallocationTest, GivesThePrivilegeBackWhenTheOpenFails) {
    const auto watch = watchPrivileges();
    const auto open = system().answer("CreateFileW", ~0ull, ERROR_ACCESS_DENIED);

    EXPECT_EQ(create(folder() / L"file", 1), 0);

    EXPECT_THAT(privileges, ElementsAre("+SeManageVolumePrivilege", "-SeManageVolumePrivilege"));
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"CreateFileW", ERROR_ACCESS_DENIED)));
}

TEST_F(PreallocationTest, DeclaresTheContentValidOnlyWithThePrivilege) {
    const auto valid = system().watch("SetFileValidData");
    {
        const jlong record = create(folder() / L"file", 4096);
        NATIVE(closeFile)(record);
    }
    ASSERT_EQ(valid.count(), 1u);
    EXPECT_EQ(valid.calls()[0].argument<LONGLONG>(1), 4096);

    const auto token = system().answer("OpenProcessToken", FALSE, ERROR_ACCESS_DENIED);
    const jlong record = create(folder() / L"file", 4096);
    NATIVE(closeFile)(record);

    EXPECT_EQ(valid.count(), 1u);
    EXPECT_EQ(system().count("AdjustTokenPrivileges"), 2u);
}

TEST_F(PreallocationTest, GoesOnWhenTheContentCannotBeDeclaredValid) {
    const auto valid = system().answer("SetFileValidData", FALSE, ERROR_PRIVILEGE_NOT_HELD);

    const jlong record = create(folder() / L"file", 4096);

    EXPECT_EQ(NATIVE(getFileSize)(record), 4096);
    NATIVE(closeFile)(record);
}

TEST_F(PreallocationTest, RaisesDiskFullWhenThereIsNoRoomForTheLength) {
    const auto end = system().failCall("SetEndOfFile", 1, ERROR_DISK_FULL);

    EXPECT_EQ(create(folder() / L"file", megabyte), 0);

    EXPECT_EQ(java.takeException(),
              (Thrown{"com/qarvo/dov/io/DiskFullException", errorMessage(L"createFileN", ERROR_DISK_FULL)}));
}

TEST_F(PreallocationTest, RaisesTheErrorOfTheFirstMoveOfThePointer) {
    const auto move = system().failCall("SetFilePointerEx", 1, ERROR_NEGATIVE_SEEK);

    EXPECT_EQ(create(folder() / L"file", megabyte), 0);

    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"createFileN", ERROR_NEGATIVE_SEEK)));
    EXPECT_EQ(system().count("SetEndOfFile"), 0u);
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
    const auto format = REPLACE(
        FormatMessageW,
        [&](DWORD given, LPCVOID from, DWORD id, DWORD, LPWSTR buffer, DWORD size, va_list*) -> DWORD {
            flags = given;
            source = static_cast<HMODULE>(const_cast<void*>(from));
            code = id;
            wcscpy_s(buffer, size, L" <disk full>");
            return 12;
        });

    EXPECT_FALSE(NATIVE(setFileEndOfFileInfo)(record, 0x100000005));

    EXPECT_EQ(
        java.takeException(),
        ioException(
            L"[WindowsUtil.setFileEndOfFileInfo] Failed to set the end of file position to 5 <disk full>"));
    EXPECT_EQ(flags, 0x1800u);
    EXPECT_EQ(source, GetModuleHandleW(L"ntdll.dll"));
    EXPECT_EQ(code, 0xC000007Fu);
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
    const auto watch = watchPrivileges();
    const auto open = system().watch("CreateFileW");
    LONGLONG valid = 0;
    const auto declare = REPLACE(SetFileValidData, [&](HANDLE, LONGLONG length) -> BOOL {
        valid = length;
        return TRUE;
    });

    EXPECT_TRUE(NATIVE(isSupportExtendFileSize)(folder() / L"probe"));

    ASSERT_EQ(open.count(), 1u);
    EXPECT_EQ(open.calls()[0].argument<DWORD>(1), GENERIC_WRITE);
    EXPECT_EQ(open.calls()[0].argument<DWORD>(2), 3u);
    EXPECT_EQ(open.calls()[0].argument<DWORD>(4), 2u);
    EXPECT_EQ(open.calls()[0].argument<DWORD>(5), 0x10000000u);
    EXPECT_EQ(valid, 1048576);
    EXPECT_FALSE(fileExists(folder() / L"probe"));
    EXPECT_THAT(privileges, ElementsAre("+SeManageVolumePrivilege", "-SeManageVolumePrivilege"));
}

TEST_F(PreallocationTest, SaysThatAFileCannotBeExtendedWhereItsContentCannotBeDeclaredValid) {
    const auto declare = system().answer("SetFileValidData", FALSE, ERROR_PRIVILEGE_NOT_HELD);

    EXPECT_FALSE(NATIVE(isSupportExtendFileSize)(folder() / L"probe"));

    EXPECT_FALSE(fileExists(folder() / L"probe"));
}

TEST_F(PreallocationTest, MakesNoFileWithoutThePrivilege) {
    const auto token = system().answer("OpenProcessToken", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(NATIVE(isSupportExtendFileSize)(folder() / L"probe"));

    EXPECT_EQ(system().count("CreateFileW"), 0u);
}

TEST_F(PreallocationTest, SaysThatAFileCannotBeExtendedWhereItCannotBeMade) {
    const auto watch = watchPrivileges();

    EXPECT_FALSE(NATIVE(isSupportExtendFileSize)(folder() / L"missing\\probe"));

    EXPECT_THAT(privileges, ElementsAre("+SeManageVolumePrivilege", "-SeManageVolumePrivilege"));
}

TEST_F(PreallocationTest, SaysThatAFileCannotBeExtendedWhereThereIsNoRoom) {
    const auto end = system().failCall("SetEndOfFile", 1, ERROR_DISK_FULL);

    EXPECT_FALSE(NATIVE(isSupportExtendFileSize)(folder() / L"probe"));

    EXPECT_FALSE(fileExists(folder() / L"probe"));
    EXPECT_EQ(system().count("SetFileValidData"), 0u);
}

}  // namespace
