// Listings, records, file operations, security.
#include "../filesystem/listing_fixture.h"
#include "../filesystem/record_fixture.h"
#include "../filesystem/security/descriptors.h"
#include "reasons.h"
#include "recipe.h"
#include "switched_privileges.h"
#include "thread_token.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;

constexpr char addFile[] = "(Ljava/lang/String;ZJJILjava/lang/String;Z)V";
constexpr char fireEvent[] = "(Ljava/lang/String;Ljava/lang/String;)V";
class TreeTest : public WinUtilTest {
protected:
    TreeTest() {
        writeFile(folder() / L"one", "1");
        writeFile(folder() / L"folder\\two", "22");
    }

    // The entries without their times, which are others each time; which of them came with their descriptor
    // is noted apart.
    JavaObject collector(const std::function<void(std::wstring)>& noteSecurity) {
        return java.collector("addFile", addFile, [this, noteSecurity](const Arguments& a) {
            entries += a[0].text() + (a[1].boolean() ? L" directory " : L" ") +
                       std::to_wstring(a[4].number()) + L"|";
            if (!a[5].text().empty()) {
                noteSecurity(a[0].text());
            }
        });
    }

    std::wstring entries;
};

class TreeRecipe : public RecipeOn<TreeTest> {
protected:
    void list(bool security, bool attributes, bool withListener) {
        mask(folder().path());
        mayAnswerAnythingBesideAnException();
        tolerates({"GetFileAttributesExW"}, formOfPath);
        tolerates({"GetMethodID"}, noMethod, Tolerance::any);
        if (security) {
            leavesOut({"GetVolumePathNameW", "GetVolumeInformationW"}, comesEmpty);
            tolerates({"GetFileSecurityW", "malloc"}, comesEmpty,
                      withListener ? Tolerance::sameValue : Tolerance::less);
        }
        const auto take = [this](const std::wstring& path) { note(path + L" with security"); };
        const JavaObject receiver = collector(take);
        const JavaObject told = withListener ? noting("fireFileErrorEvent", fireEvent) : JavaObject();
        examine([&] {
            NATIVE(listWinFiles)(receiver, folder().path(), security, attributes, told, security);
            return entries;
        });
    }
};

class Recipe_listWinFiles_withUnreadableSecurity final : public TreeRecipe {
    void perform() override {
        const auto refused = system().answer("GetFileSecurityW", FALSE, ERROR_ACCESS_DENIED);
        tolerates({"FormatMessageW", "GetNamedSecurityInfoW"}, comesEmpty, Tolerance::sameValue);
        list(true, true, true);
    }
};
class Recipe_listWinFiles_plain final : public TreeRecipe {
    void perform() override { list(false, false, false); }
};
class Recipe_listWinFiles_withAttributes final : public TreeRecipe {
    void perform() override { list(false, true, false); }
};
class Recipe_listWinFiles_withSecurity final : public TreeRecipe {
    void perform() override {
        tolerates({"ConvertSecurityDescriptorToStringSecurityDescriptorW"}, comesEmpty, Tolerance::sameValue);
        list(true, true, true);
    }
};
class Recipe_listWinFiles_withSecurityUntold final : public TreeRecipe {
    void perform() override {
        tolerates({"ConvertSecurityDescriptorToStringSecurityDescriptorW"}, comesEmpty, Tolerance::less);
        list(true, true, false);
    }
};
[[maybe_unused]] const bool listingsAdded =
    addRecipe<Recipe_listWinFiles_plain>("listWinFiles", "plain") &&
    addRecipe<Recipe_listWinFiles_withAttributes>("listWinFiles", "withAttributes") &&
    addRecipe<Recipe_listWinFiles_withUnreadableSecurity>("listWinFiles", "withUnreadableSecurity") &&
    addRecipe<Recipe_listWinFiles_withSecurity>("listWinFiles", "withSecurity") &&
    addRecipe<Recipe_listWinFiles_withSecurityUntold>("listWinFiles", "withSecurityUntold");

// A record as a text, without what differs each time.
std::wstring recordText(const JavaObject& record) {
    if (!record) {
        return L"null";
    }
    if (record.constructor() == olderConstructor) {
        return L"an older record";
    }
    const Fields fields = fieldsOf(record);
    return fields.path + L" " + std::to_wstring(fields.size) + L" " + std::to_wstring(fields.attributes) +
           L" " + std::to_wstring(fields.kind) + L" " + fields.target +
           (fields.security.empty() ? L"" : L" security");
}

class OneFile : public RecordTest {
protected:
    OneFile() { writeFile(path, "content"); }
    const std::wstring path = folder() / L"file";
};

RECIPE(OneFile, WinFile, ofAFile) {
    answersInstead("GetMethodID", L"an older record", standsIn);
    mask(folder().path());
    examine([&] { return recordText(record(path)); });
}

RECIPE(OneFile, WinFile, withSecurity) {
    answersInstead("GetMethodID", L"an older record", standsIn);
    mask(folder().path());
    for (const char* function :
         {"GetFileSecurityW", "ConvertSecurityDescriptorToStringSecurityDescriptorW"}) {
        answersInstead(function, L"<it>\\file 7 32 2 ", comesEmpty);
    }
    examine([&] { return recordText(record(path, true, true)); });
}

RECIPE(OneFile, getFileAttr, ofAFile) {
    tolerates({"GetFileAttributesExW"}, formOfPath);
    examine([&] { return NATIVE(getFileAttr)(path); });
}

RECIPE(OneFile, mkdir, ofANewFolder) {
    examine([&] { return NATIVE(mkdir)(folder() / L"new"); });
}

RECIPE(OneFile, delete, ofAFile) {
    tolerates({"SetFileAttributesW"}, nextDecides);
    examine([&] { return NATIVE(delete)(path); });
}

RECIPE(OneFile, renameTo, ofAFile) {
    examine([&] { return NATIVE(renameTo)(path, folder() / L"new name"); });
}

RECIPE(OneFile, exists, ofAFile) {
    examine([&] { return NATIVE(exists)(path); });
}

RECIPE(OneFile, isDir, ofAFolder) {
    examine([&] { return NATIVE(isDir)(folder().path()); });
}

RECIPE(OneFile, lastModified, ofAFile) {
    NATIVE(setLastModified)(path, 1'000'000'000'000);
    examine([&] { return NATIVE(lastModified)(path); });
}

RECIPE(OneFile, setLastModified, ofAFile) {
    givesBackWhatIsNone("CloseHandle", "the invalid handle of a failed open is closed too", {"CreateFileW"});
    examine([&] { return NATIVE(setLastModified)(path, 1'000'000'000'000); });
}

RECIPE(OneFile, getWinSecurityDescriptor, ofAFile) {
    const JavaObject listener = noting("fireFileErrorEvent", fireEvent);
    mask(folder().path());
    tolerates({"GetFileAttributesExW"}, formOfPath);
    examine([&] {
        const JavaObject text = NATIVE(getWinSecurityDescriptor)(path, 7, listener);
        return text && !text.text().empty() ? std::wstring(L"a descriptor") : describe(text);
    });
}

RECIPE(OneFile, setFileAttr, ofAFile) {
    tolerates({"GetFileAttributesExW"}, formOfPath);
    tolerates({"SetFileAttributesW"}, "that the attributes could not be set is not reported");
    examine([&] { NATIVE(setFileAttr)(path, FILE_ATTRIBUTE_ARCHIVE); });
}

RECIPE(OneFile, setFileAttrWithSecurityDescriptor, ofAFile) {
    tolerates({"GetFileAttributesExW"}, formOfPath);
    examine([&] {
        return NATIVE(setFileAttrWithSecurityDescriptor)(path, DACL_SECURITY_INFORMATION, L"D:(A;;FA;;;WD)",
                                                         FILE_ATTRIBUTE_ARCHIVE);
    });
}

RECIPE(OneFile, setFileAttrWithSecurityDescriptor, withOwnerAndGroup) {
    tolerates({"GetFileAttributesExW"}, formOfPath);
    examine(
        [&] { return NATIVE(setFileAttrWithSecurityDescriptor)(path, 7, L"O:WDG:WDD:(A;;FA;;;WD)", -1); });
}

RECIPE(OneFile, setFileAttrWithSecurityDescriptor, throughAHandle) {
    const auto refused = system().answer("SetFileSecurityW", FALSE, ERROR_ACCESS_DENIED);
    const auto set = system().answer("SetSecurityInfo", ERROR_SUCCESS);
    tolerates({"SetFileSecurityW"}, nextDecides);
    tolerates({"GetFileAttributesExW"}, formOfPath);
    tolerates({"GetSecurityDescriptorOwner", "GetSecurityDescriptorGroup", "GetSecurityDescriptorDacl"},
              comesEmpty);
    examine(
        [&] { return NATIVE(setFileAttrWithSecurityDescriptor)(path, 7, L"O:WDG:WDD:(A;;FA;;;WD)", -1); });
}

RECIPE(OneFile, setFileAttr, encrypted) {
    const auto encrypt = system().answer("EncryptFileW", TRUE);
    tolerates({"GetFileAttributesExW"}, formOfPath);
    tolerates({"SetFileAttributesW"}, "that the attributes could not be set is not reported");
    examine([&] { NATIVE(setFileAttr)(path, FILE_ATTRIBUTE_ENCRYPTED); });
}

RECIPE(OneFile, setFileAttr, compressed) {
    const auto compress = system().answer("DeviceIoControl", TRUE);
    tolerates({"GetFileAttributesExW"}, formOfPath);
    tolerates({"SetFileAttributesW"}, "that the attributes could not be set is not reported");
    examine([&] { NATIVE(setFileAttr)(path, FILE_ATTRIBUTE_COMPRESSED); });
}

RECIPE(OneFile, setFileACL, ofAFile) {
    examine([&] { NATIVE(setFileACL)(path, L"Everyone", 1, 1); });
}

RECIPE(WinUtilTest, enableSecurityPrivilege, ofTheProcess) {
    examine([&] { return NATIVE(enableSecurityPrivilege)(); });
}

// An account that logs on, and is then the process' own user.
class AccessTest : public OneFile {
protected:
    Replacement logon_ = REPLACE(LogonUserA, [](LPCSTR, LPCSTR, LPCSTR, DWORD, DWORD, PHANDLE token) {
        *token = impersonationToken();
        return TRUE;
    });
    Replacement descriptor_ = REPLACE(
        GetFileSecurityW,
        [this](LPCWSTR, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR buffer, DWORD size, LPDWORD needed) {
            const auto bytes = descriptorOf(L"O:SYG:SYD:" + entries);
            *needed = static_cast<DWORD>(bytes.size());
            if (size < bytes.size()) {
                SetLastError(ERROR_INSUFFICIENT_BUFFER);
                return FALSE;
            }
            std::memcpy(buffer, bytes.data(), bytes.size());
            return TRUE;
        });
    std::wstring entries = L"(A;;0x3;;;WD)";
};

RECIPE(AccessTest, isAccessRead, granted) {
    tolerates({"GetFileAttributesExW"}, formOfPath);
    tolerates({"AdjustTokenPrivileges", "LookupPrivilegeValueA", "OpenProcessToken"}, systemDecides);
    raisesOtherCode("OpenThreadToken", "the token of the process decides, which is none of an impersonation");
    examine([&] { return NATIVE(isAccessRead)(path, L"DOM", L"user", L"secret"); });
}

RECIPE(AccessTest, isAccessRead, grantedToTheProcess) {
    const auto thread = system().answer("OpenThreadToken", FALSE, ERROR_NO_TOKEN);
    const auto process = REPLACE(OpenProcessToken, [](HANDLE of, DWORD access, PHANDLE token) -> BOOL {
        if (access != TOKEN_QUERY) {
            return REAL(OpenProcessToken)(of, access, token);
        }
        *token = impersonationToken();
        return TRUE;
    });
    tolerates({"GetFileAttributesExW"}, formOfPath);
    tolerates({"OpenThreadToken"}, standsIn);
    tolerates({"AdjustTokenPrivileges", "LookupPrivilegeValueA", "OpenProcessToken"}, systemDecides);
    examine([&] { return NATIVE(isAccessRead)(path, L"DOM", L"user", L"secret"); });
}

RECIPE(AccessTest, isAccessWrite, granted) {
    tolerates({"GetFileAttributesExW"}, formOfPath);
    tolerates({"AdjustTokenPrivileges", "LookupPrivilegeValueA", "OpenProcessToken"}, systemDecides);
    examine([&] { return NATIVE(isAccessWrite)(path, L"DOM", L"user", L"secret"); });
}

RECIPE(AccessTest, isAccessWrite, grantedByOneOfManyEntries) {
    while (entries.size() < 1000) {
        entries += L"(A;;0x3;;;WD)";
    }
    tolerates({"GetFileAttributesExW"}, formOfPath);
    tolerates({"AdjustTokenPrivileges", "LookupPrivilegeValueA", "OpenProcessToken"}, systemDecides);
    examine([&] { return NATIVE(isAccessWrite)(path, L"DOM", L"user", L"secret"); });
}

}  // namespace
