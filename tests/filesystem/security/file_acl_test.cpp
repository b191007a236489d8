// Adding an entry to a file's access rights, in silence.
#include "descriptors.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class FileAclTest : public WinUtilTest {
protected:
    FileAclTest() { writeFile(folder() / L"file", "content"); }

    void setFileACL(const std::wstring& trustee, jint permissions, jint mode) {
        NATIVE(setFileACL)(folder() / L"file", trustee, permissions, mode);
    }

    // Records the access rights that are set, and sets none.
    Replacement recordDacl() {
        return REPLACE(SetNamedSecurityInfoW,
                       [this](LPWSTR path, SE_OBJECT_TYPE type, SECURITY_INFORMATION parts, PSID owner,
                              PSID group, PACL dacl, PACL sacl) -> DWORD {
                           EXPECT_EQ(path, folder() / L"file");
                           EXPECT_EQ(type, SE_FILE_OBJECT);
                           EXPECT_EQ(parts, static_cast<DWORD>(DACL_SECURITY_INFORMATION));
                           EXPECT_TRUE(owner == nullptr && group == nullptr && sacl == nullptr);
                           SECURITY_DESCRIPTOR descriptor;
                           InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
                           SetSecurityDescriptorDacl(&descriptor, TRUE, dacl, FALSE);
                           set.push_back(textOf(&descriptor, DACL_SECURITY_INFORMATION));
                           return ERROR_SUCCESS;
                       });
    }

    std::vector<std::wstring> set;
};

TEST_F(FileAclTest, AddsAnEntryThatEverythingBelowInherits) {
    const auto record = recordDacl();

    setFileACL(L"Users", 0x120089, GRANT_ACCESS);

    ASSERT_EQ(set.size(), 1u);
    EXPECT_THAT(set[0], HasSubstr(L"(A;OICI;FR;;;BU)"));
    EXPECT_THAT(set[0], HasSubstr(L";;;SY)")) << "the entries that were there";
}

TEST_F(FileAclTest, AsksForTheAccessRightsByName) {
    const auto get = system().watch("GetNamedSecurityInfoW");
    EXPLICIT_ACCESS_W given = {};
    std::wstring trustee;
    const auto entries =
        REPLACE(SetEntriesInAclW, [&](ULONG count, PEXPLICIT_ACCESS_W entry, PACL, PACL*) -> DWORD {
            EXPECT_EQ(count, 1u);
            given = *entry;
            trustee = entry->Trustee.ptstrName;
            return ERROR_NONE_MAPPED;
        });

    setFileACL(L"DOM\\somebody", static_cast<jint>(GENERIC_READ), SET_ACCESS);

    EXPECT_EQ(get.calls().at(0).argument<DWORD>(1), static_cast<DWORD>(SE_FILE_OBJECT));
    EXPECT_EQ(get.calls().at(0).argument<DWORD>(2), static_cast<DWORD>(DACL_SECURITY_INFORMATION));
    EXPECT_EQ(given.grfAccessPermissions, GENERIC_READ);
    EXPECT_EQ(given.grfAccessMode, SET_ACCESS);
    EXPECT_EQ(given.grfInheritance, 3u);
    EXPECT_EQ(given.Trustee.pMultipleTrustee, nullptr);
    EXPECT_EQ(given.Trustee.MultipleTrusteeOperation, NO_MULTIPLE_TRUSTEE);
    EXPECT_EQ(given.Trustee.TrusteeForm, TRUSTEE_IS_NAME);
    EXPECT_EQ(given.Trustee.TrusteeType, TRUSTEE_IS_UNKNOWN);
    EXPECT_EQ(trustee, L"DOM\\somebody");
}

TEST_F(FileAclTest, PassesAnyNumberAsTheMode) {
    DWORD mode = 0;
    const auto entries =
        REPLACE(SetEntriesInAclW, [&](ULONG, PEXPLICIT_ACCESS_W entry, PACL, PACL*) -> DWORD {
            std::memcpy(&mode, &entry->grfAccessMode, sizeof(mode));
            return ERROR_INVALID_PARAMETER;
        });

    setFileACL(L"Users", 1, -5);

    EXPECT_EQ(mode, 0xFFFFFFFBu);
}

TEST_F(FileAclTest, IsSilentAboutAFileThatIsNotThere) {
    const auto entries = system().watch("SetEntriesInAclW");

    NATIVE(setFileACL)(folder() / L"missing", L"Users", 1, GRANT_ACCESS);

    EXPECT_EQ(entries.count(), 0u);
}

TEST_F(FileAclTest, IsSilentAboutATrusteeThatNobodyKnows) {
    const auto record = recordDacl();

    setFileACL(L"no such account", 1, GRANT_ACCESS);

    EXPECT_TRUE(set.empty());
}

TEST_F(FileAclTest, IsSilentAboutRightsThatCannotBeSet) {
    const auto failing = system().answer("SetNamedSecurityInfoW", ERROR_ACCESS_DENIED);

    setFileACL(L"Users", 1, GRANT_ACCESS);

    EXPECT_EQ(failing.count(), 1u);
}

TEST_F(FileAclTest, DoesNothingWithoutMemoryForItsStrings) {
    const auto get = system().watch("GetNamedSecurityInfoW");
    for (std::size_t k = 1; k <= 2; ++k) {
        java.failCall("GetStringChars", k);

        setFileACL(L"Users", 1, GRANT_ACCESS);

        EXPECT_EQ(java.takeException(), nothingThrown()) << k;
    }
    EXPECT_EQ(get.count(), 0u);
}

}  // namespace
