// Setting security descriptor and attributes together.
#include "descriptors.h"
#include "system_text.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const std::wstring sddl = L"O:SYG:BAD:(A;;FA;;;WD)";
constexpr jint unchanged = -1;
const Thrown noArguments =
    ioException(errorMessage(L"setFileAttrWithSecurityDescriptor", ERROR_NOT_ENOUGH_MEMORY));

class SettingTest : public WinUtilTest {
protected:
    SettingTest() { writeFile(folder() / L"file", "content"); }

    bool set(const std::wstring& text, jint attributes) {
        return NATIVE(setFileAttrWithSecurityDescriptor)(path(), 7, text, attributes);
    }

    std::wstring path() { return folder() / L"file"; }

    // Records the descriptors that are set in the first way, and what comes of it.
    Replacement firstWay(BOOL result, DWORD lastError) {
        return REPLACE(SetFileSecurityW, [this, result, lastError](LPCWSTR file, SECURITY_INFORMATION parts,
                                                                   PSECURITY_DESCRIPTOR descriptor) {
            EXPECT_EQ(parts, 7u);
            staleErrors.push_back(GetLastError());
            setTexts.push_back(std::wstring(file) + L" " + textOf(descriptor, parts));
            SetLastError(lastError);
            return result;
        });
    }

    // The same for the second way.
    Replacement secondWay(DWORD result) {
        return REPLACE(SetSecurityInfo,
                       [this, result](HANDLE file, SE_OBJECT_TYPE type, SECURITY_INFORMATION parts,
                                      PSID owner, PSID group, PACL dacl, PACL sacl) -> DWORD {
                           EXPECT_EQ(file, openedFile);
                           EXPECT_EQ(type, SE_FILE_OBJECT);
                           EXPECT_EQ(sacl, nullptr);
                           SECURITY_DESCRIPTOR descriptor;
                           InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
                           SetSecurityDescriptorOwner(&descriptor, owner, FALSE);
                           SetSecurityDescriptorGroup(&descriptor, group, FALSE);
                           SetSecurityDescriptorDacl(&descriptor, dacl != nullptr, dacl, FALSE);
                           handleTexts.push_back(textOf(&descriptor, parts));
                           return result;
                       });
    }

    std::wstring reason(DWORD code) {
        return L" setSecurityDescriptor():  (" + std::to_wstring(code) + L") " + systemText(code);
    }

    std::wstring noDescriptor(DWORD code, const std::wstring& hexCode) {
        return L"Fail to set security descriptor: " + path() + L" ErrCode: 0x" + hexCode + L" " +
               reason(code);
    }

    std::vector<std::wstring> setTexts;
    std::vector<std::wstring> handleTexts;
    std::vector<DWORD> staleErrors;
    std::vector<std::wstring> openedPaths;
    HANDLE openedFile = nullptr;
    const Replacement open = REPLACE(CreateFileW, [this](LPCWSTR file, auto... options) {
        openedPaths.emplace_back(file);
        return openedFile = REAL(CreateFileW)(file, options...);
    });
};

TEST_F(SettingTest, SetsDescriptorAndAttributes) {
    const auto security = firstWay(TRUE, ERROR_SUCCESS);

    EXPECT_TRUE(set(sddl, FILE_ATTRIBUTE_HIDDEN));

    EXPECT_THAT(setTexts, ElementsAre(path() + L" " + sddl));
    EXPECT_NE(GetFileAttributesW(path().c_str()) & FILE_ATTRIBUTE_HIDDEN, 0u);
}

TEST_F(SettingTest, SetsTheAttributesBehindTheDescriptor) {
    const auto security = firstWay(TRUE, ERROR_SUCCESS);
    const auto attributes = REPLACE(SetFileAttributesW, [this](LPCWSTR, DWORD) {
        EXPECT_THAT(setTexts, SizeIs(1));
        return TRUE;
    });

    EXPECT_TRUE(set(sddl, FILE_ATTRIBUTE_HIDDEN));

    EXPECT_EQ(attributes.count(), 1u);
}

TEST_F(SettingTest, SetsADescriptorThatTheSystemReadsBack) {
    const std::wstring own = L"D:(A;;FA;;;SY)(A;;FA;;;S-1-5-21-0-0-0-1000)(A;;0x1200a9;;;WD)";

    EXPECT_TRUE(NATIVE(setFileAttrWithSecurityDescriptor)(path(), 4, own, unchanged));

    EXPECT_EQ(NATIVE(getWinSecurityDescriptor)(path(), 4, nullptr).text(), own);
}

TEST_F(SettingTest, LeavesTheDescriptorForANullOrEmptyText) {
    const auto security = firstWay(TRUE, ERROR_SUCCESS);

    EXPECT_TRUE(set(L"", unchanged));
    EXPECT_TRUE(NATIVE(setFileAttrWithSecurityDescriptor)(path(), 7, nullptr, FILE_ATTRIBUTE_HIDDEN));

    EXPECT_THAT(setTexts, IsEmpty());
    EXPECT_NE(GetFileAttributesW(path().c_str()) & FILE_ATTRIBUTE_HIDDEN, 0u);
}

TEST_F(SettingTest, LeavesTheAttributesForTheInvalidWord) {
    const auto security = firstWay(TRUE, ERROR_SUCCESS);
    const auto attributes = system().watch("SetFileAttributesW");

    EXPECT_TRUE(set(sddl, unchanged));

    EXPECT_EQ(attributes.count(), 0u);
}

TEST_F(SettingTest, ClearsTheLastErrorBeforeItSetsTheDescriptor) {
    const auto security = firstWay(TRUE, ERROR_SUCCESS);
    SetLastError(ERROR_GEN_FAILURE);

    EXPECT_TRUE(set(sddl, unchanged));

    EXPECT_THAT(staleErrors, ElementsAre(ERROR_SUCCESS));
}

TEST_F(SettingTest, TakesTheLastErrorBehindASuccessForTheResult) {
    const auto security = firstWay(TRUE, ERROR_PRIVILEGE_NOT_HELD);

    EXPECT_FALSE(set(sddl, unchanged));

    EXPECT_EQ(java.takeException(), ioException(noDescriptor(ERROR_PRIVILEGE_NOT_HELD, L"522")));
}

TEST_F(SettingTest, ThrowsForATextThatIsNoDescriptor) {
    const auto security = firstWay(TRUE, ERROR_SUCCESS);
    const auto convert = system().answer("ConvertStringSecurityDescriptorToSecurityDescriptorW", FALSE,
                                         ERROR_UNKNOWN_REVISION);

    EXPECT_FALSE(set(L"nonsense", unchanged));

    EXPECT_EQ(java.takeException(), ioException(noDescriptor(ERROR_UNKNOWN_REVISION, L"519")));
    EXPECT_EQ(convert.calls().at(0).argument<DWORD>(1), 1u);
    EXPECT_THAT(setTexts, IsEmpty());
}

TEST_F(SettingTest, SetsThroughAHandleWhatCannotBeSetByName) {
    const auto first = firstWay(FALSE, ERROR_ACCESS_DENIED);
    const auto second = secondWay(ERROR_SUCCESS);

    EXPECT_TRUE(set(sddl, unchanged));

    EXPECT_THAT(handleTexts, ElementsAre(sddl));
    EXPECT_THAT(openedPaths, ElementsAre(path()));
    const RecordedCall call = open.calls().at(0);
    EXPECT_EQ(call.argument<DWORD>(1), GENERIC_READ | GENERIC_WRITE);
    EXPECT_EQ(call.argument<DWORD>(2), 3u);
    EXPECT_EQ(call.argument<DWORD>(4), static_cast<DWORD>(OPEN_EXISTING));
    EXPECT_EQ(call.argument<DWORD>(5), 0x2000080u);
}

TEST_F(SettingTest, SetsThroughAHandleNoneOfThePartsThatAreAbsent) {
    const auto first = firstWay(FALSE, ERROR_ACCESS_DENIED);
    const auto second = secondWay(ERROR_SUCCESS);

    EXPECT_TRUE(set(L"O:SY", unchanged));

    EXPECT_THAT(handleTexts, ElementsAre(L"O:SY"));
}

TEST_F(SettingTest, TellsTheCodeOfTheSecondWay) {
    const auto first = firstWay(FALSE, ERROR_ACCESS_DENIED);
    const auto second = secondWay(ERROR_INVALID_OWNER);

    EXPECT_FALSE(set(sddl, unchanged));

    EXPECT_EQ(java.takeException(), ioException(noDescriptor(ERROR_INVALID_OWNER, L"51b")));
}

TEST_F(SettingTest, TellsWhyTheFileCannotBeOpenedForTheSecondWay) {
    const auto first = firstWay(FALSE, ERROR_ACCESS_DENIED);
    const auto fail = system().answer("CreateFileW", ~0ull, ERROR_SHARING_VIOLATION);

    EXPECT_FALSE(set(sddl, unchanged));

    EXPECT_EQ(java.takeException(), ioException(noDescriptor(ERROR_SHARING_VIOLATION, L"20")));
}

TEST_F(SettingTest, GoesByTheLongFormWhenTheAttributesCannotBeRead) {
    const auto first = firstWay(FALSE, ERROR_ACCESS_DENIED);
    const auto second = secondWay(ERROR_SUCCESS);
    const auto attributes = system().answer("GetFileAttributesExW", FALSE, ERROR_PATH_NOT_FOUND);

    EXPECT_TRUE(set(sddl, unchanged));

    EXPECT_THAT(setTexts, ElementsAre(L"\\\\?\\" + path() + L" " + sddl));
    EXPECT_THAT(openedPaths, ElementsAre(L"\\\\?\\" + path()));
    EXPECT_THAT(handleTexts, ElementsAre(sddl));
}

TEST_F(SettingTest, TellsThatTheAttributesFailed) {
    const auto security = firstWay(TRUE, ERROR_SUCCESS);
    const auto attributes = system().answer("SetFileAttributesW", FALSE, ERROR_ACCESS_DENIED);

    EXPECT_FALSE(set(sddl, FILE_ATTRIBUTE_HIDDEN));

    EXPECT_EQ(java.takeException(), ioException(L"Fail to set file attributes: " + path()));
}

TEST_F(SettingTest, TellsThatBothFailed) {
    const auto first = firstWay(FALSE, ERROR_ACCESS_DENIED);
    const auto second = secondWay(ERROR_ACCESS_DENIED);
    const auto attributes = system().answer("SetFileAttributesW", FALSE, ERROR_WRITE_PROTECT);

    EXPECT_FALSE(set(sddl, FILE_ATTRIBUTE_HIDDEN));

    EXPECT_EQ(java.takeException(),
              ioException(L"Fail to set both file attributes and security descriptor: " + path() +
                          L" ErrCode: 0x5 " + reason(ERROR_ACCESS_DENIED)));
}

TEST_F(SettingTest, LeavesTheExceptionOfAFailedCompression) {
    const auto first = firstWay(FALSE, ERROR_ACCESS_DENIED);
    const auto second = secondWay(ERROR_ACCESS_DENIED);
    const auto control = system().answer("DeviceIoControl", FALSE, ERROR_INVALID_FUNCTION);

    EXPECT_FALSE(set(sddl, FILE_ATTRIBUTE_COMPRESSED));

    EXPECT_EQ(java.takeException(), ioException(L"Fail to compress file: " + path()));
}

TEST_F(SettingTest, LeavesTheExceptionOfAFailedEncryption) {
    const auto first = firstWay(FALSE, ERROR_ACCESS_DENIED);
    const auto second = secondWay(ERROR_ACCESS_DENIED);
    const auto encrypt = system().answer("EncryptFileW", FALSE, ERROR_NOT_SUPPORTED);

    EXPECT_FALSE(set(sddl, FILE_ATTRIBUTE_ENCRYPTED));
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"EncryptFileW", ERROR_NOT_SUPPORTED)));
    EXPECT_FALSE(set(L"", FILE_ATTRIBUTE_ENCRYPTED));
    EXPECT_EQ(java.takeException(), ioException(errorMessage(L"EncryptFileW", ERROR_NOT_SUPPORTED)));
}

TEST_F(SettingTest, CutsTheMessageOfALongPath) {
    const std::wstring longPath = L"C:\\" + std::wstring(4000, L'd');
    const auto security = firstWay(TRUE, ERROR_PRIVILEGE_NOT_HELD);
    const auto attributes = system().answer("SetFileAttributesW", FALSE, ERROR_ACCESS_DENIED);
    const struct {
        std::wstring text;
        jint attributes;
        std::wstring message;
    } forms[] = {
        {L"", FILE_ATTRIBUTE_HIDDEN, L"Fail to set file attributes: "},
        {sddl, unchanged, L"Fail to set security descriptor: "},
        {sddl, FILE_ATTRIBUTE_HIDDEN, L"Fail to set both file attributes and security descriptor: "},
    };
    for (const auto& form : forms) {
        EXPECT_FALSE(NATIVE(setFileAttrWithSecurityDescriptor)(longPath, 7, form.text, form.attributes));

        EXPECT_EQ(java.takeException(), ioException((form.message + longPath).substr(0, 2047)));
    }
}

TEST_F(SettingTest, HasNoTextOfTheSystemThatDoesNotFitTheReason) {
    const auto security = firstWay(TRUE, ERROR_PRIVILEGE_NOT_HELD);
    const std::wstring start = L" setSecurityDescriptor():  (1314) ";
    const std::wstring longest(1023 - start.size(), L't');
    for (const auto& [text, shown] :
         {std::pair(longest, longest),
          std::pair(longest + L"t", std::wstring(L"Failed to obtain error message"))}) {
        const auto format = setSystemText(system(), text);

        EXPECT_FALSE(set(sddl, unchanged));

        EXPECT_EQ(java.takeException(), ioException(L"Fail to set security descriptor: " + path() +
                                                    L" ErrCode: 0x522 " + start + shown));
    }
}

TEST_F(SettingTest, TellsThatTheAttributesFailedWithoutMemoryForTheLongForm) {
    const auto read = system().answer("GetFileAttributesExW", FALSE, ERROR_PATH_NOT_FOUND);
    const auto memory = system().failCall("malloc", 3, ERROR_NOT_ENOUGH_MEMORY);
    const auto attributes = system().watch("SetFileAttributesW");

    EXPECT_FALSE(set(L"", FILE_ATTRIBUTE_HIDDEN));

    EXPECT_EQ(java.takeException(), ioException(L"Fail to set file attributes: " + path()));
    EXPECT_EQ(attributes.count(), 0u);
}

TEST_F(SettingTest, DoesNotPassForSuccessWithoutMemory) {
    for (std::size_t k = 1; k <= 2; ++k) {
        const auto memory = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);

        EXPECT_FALSE(set(sddl, FILE_ATTRIBUTE_HIDDEN));

        EXPECT_EQ(java.takeException(), noArguments) << k;
    }
    const auto read = system().answer("GetFileAttributesExW", FALSE, ERROR_PATH_NOT_FOUND);
    const auto memory = system().failCall("malloc", 3, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_FALSE(set(sddl, unchanged));

    EXPECT_EQ(java.takeException(), ioException(noDescriptor(ERROR_NOT_ENOUGH_MEMORY, L"8")));
}

TEST_F(SettingTest, DoesNotPassForSuccessWhenTheJvmHasNoMemory) {
    for (std::size_t k = 1; k <= 2; ++k) {
        java.failCall("GetStringChars", k);

        EXPECT_FALSE(set(sddl, FILE_ATTRIBUTE_HIDDEN));

        EXPECT_EQ(java.takeException(), noArguments) << k;
    }
}

// A system without one of the optional functions: the library is loaded while it is hidden.
class SettingWithoutTest : public SettingTest {
protected:
    bool setWithout(const std::string& function) {
        FreshLibrary fresh(folder(), L"fresh.dll");
        const auto hidden = fresh.system().hide({function});
        // Unloading gives back a module that was only looked up, on purpose.
        fresh.ledger().allowUnknown("FreeLibrary");
        EXPECT_TRUE(fresh.load());
        const auto denied = fresh.system().answer("SetFileSecurityW", FALSE, ERROR_ACCESS_DENIED);
        using Function = decltype(Java_com_qarvo_kel_util_WindowsUtil_setFileAttrWithSecurityDescriptor);
        constexpr const char* name = "Java_com_qarvo_kel_util_WindowsUtil_setFileAttrWithSecurityDescriptor";
        const NativeMethod<Function> method(java, name, fresh.exported<Function>(name));
        const bool result = method(path(), 7, sddl, unchanged);
        fresh.unload();
        return result;
    }
};

TEST_F(SettingWithoutTest, FailsWithoutTheConversion) {
    EXPECT_FALSE(setWithout("ConvertStringSecurityDescriptorToSecurityDescriptorW"));

    EXPECT_EQ(java.takeException(), ioException(noDescriptor(ERROR_PROC_NOT_FOUND, L"7f")));
}

TEST_F(SettingWithoutTest, KeepsTheFirstReasonWithoutTheSecondWay) {
    EXPECT_FALSE(setWithout("SetSecurityInfo"));

    EXPECT_EQ(java.takeException(), ioException(noDescriptor(ERROR_ACCESS_DENIED, L"5")));
}

}  // namespace
