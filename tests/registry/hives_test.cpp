// Attaching hive files and reading what is in them.
#include <string>

#include "registry_fixture.h"

namespace testbed {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

// The privilege on the process token, for as long as this lives.
class HeldPrivilege {
public:
    explicit HeldPrivilege(const wchar_t* name) : name_(name) { set(SE_PRIVILEGE_ENABLED); }
    HeldPrivilege(const HeldPrivilege&) = delete;
    HeldPrivilege& operator=(const HeldPrivilege&) = delete;
    ~HeldPrivilege() { set(0); }

private:
    void set(DWORD attributes) const {
        HANDLE token = nullptr;
        ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token));
        TOKEN_PRIVILEGES request{1, {{{}, attributes}}};
        EXPECT_TRUE(LookupPrivilegeValueW(nullptr, name_, &request.Privileges[0].Luid));
        EXPECT_TRUE(AdjustTokenPrivileges(token, FALSE, &request, 0, nullptr, nullptr));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
        CloseHandle(token);
    }

    const wchar_t* name_;
};

class RegistryHives : public RegistryTest {
protected:
    // Saves the test's key as a hive file.
    std::wstring saveHive() {
        std::wstring file = folder() / L"hive";
        EXPECT_EQ(RegSaveKeyW(key(), file.c_str(), nullptr), ERROR_SUCCESS);
        return file;
    }

    const std::wstring hiveName = L"WinUtilTests" + std::to_wstring(GetCurrentProcessId());
};

TEST_F(RegistryHives, AreLoadedReadAndUnloaded) {
    put(L"text", REG_SZ, bytesOf(L"in the hive\0"s));
    put(L"number", REG_DWORD, "\x07\0\0\0"s);
    makeSubkey(L"subkey");
    const HeldPrivilege backup(L"SeBackupPrivilege");
    const HeldPrivilege restore(L"SeRestorePrivilege");
    const std::wstring file = saveHive();

    ASSERT_TRUE(NATIVE(loadRegistry)(L"hkey_Users", hiveName, file));
    Collector collector(java);
    NATIVE(listRegistry)(collector.object(), L"HKEY_USERS", hiveName);
    EXPECT_THAT(collector.items(),
                UnorderedElementsAre(subkeyItem(L"subkey"), textItem(L"text", L"in the hive"),
                                     numberItem(L"number", L"7")));
    EXPECT_EQ(NATIVE(getRegistryString)(L"HKEY_USERS\\" + hiveName + L"\\text").text(), L"in the hive");
    EXPECT_EQ(NATIVE(getRegistryDWORD)(L"HKEY_USERS\\" + hiveName + L"\\number"), 7);

    EXPECT_TRUE(NATIVE(unloadRegistry)(L"HKEY_users", hiveName));
    EXPECT_EQ(NATIVE(getRegistryDWORD)(L"HKEY_USERS\\" + hiveName + L"\\number"), -1);
    EXPECT_FALSE(NATIVE(unloadRegistry)(L"HKEY_USERS", hiveName));
}

TEST_F(RegistryHives, GoToTheKeyThatIsNamed) {
    const Replacement loading = REPLACE(RegLoadKeyW, [](HKEY root, LPCWSTR name, LPCWSTR file) {
        EXPECT_EQ(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(root)), 0x80000002U);
        EXPECT_STREQ(name, L"\u4e2d");
        EXPECT_STREQ(file, L"C:\\\u20ac");
        return LSTATUS{ERROR_SUCCESS};
    });
    const Replacement unloading = REPLACE(RegUnLoadKeyW, [](HKEY root, LPCWSTR name) {
        EXPECT_EQ(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(root)), 0x80000002U);
        EXPECT_STREQ(name, L"\u4e2d");
        return LSTATUS{ERROR_SUCCESS};
    });
    EXPECT_TRUE(NATIVE(loadRegistry)(L"hkey_local_machine", L"\u4e2d", L"C:\\\u20ac"));
    EXPECT_TRUE(NATIVE(unloadRegistry)(L"hkey_local_machine", L"\u4e2d"));
    EXPECT_EQ(loading.count(), 1U);
    EXPECT_EQ(unloading.count(), 1U);
}

TEST_F(RegistryHives, SwitchNoPrivilegeOn) {
    const Replacement adjusting = system().watch("AdjustTokenPrivileges");
    EXPECT_FALSE(NATIVE(loadRegistry)(L"HKEY_USERS", hiveName, folder() / L"missing"));
    EXPECT_FALSE(NATIVE(unloadRegistry)(L"HKEY_USERS", hiveName));
    EXPECT_EQ(adjusting.count(), 0U);
}

TEST_F(RegistryHives, FailWhereTheSystemRefuses) {
    const Replacement loading = system().answer("RegLoadKeyW", ERROR_PRIVILEGE_NOT_HELD);
    const Replacement unloading = system().answer("RegUnLoadKeyW", ERROR_ACCESS_DENIED);
    EXPECT_FALSE(NATIVE(loadRegistry)(L"HKEY_USERS", hiveName, L"C:\\hive"));
    EXPECT_FALSE(NATIVE(unloadRegistry)(L"HKEY_USERS", hiveName));
    EXPECT_EQ(loading.count(), 1U);
    EXPECT_EQ(unloading.count(), 1U);
}

TEST_F(RegistryHives, FailForAnUnknownRoot) {
    EXPECT_FALSE(NATIVE(loadRegistry)(L"HKU", hiveName, L"C:\\hive"));
    EXPECT_FALSE(NATIVE(unloadRegistry)(L"HKU", hiveName));
    EXPECT_EQ(system().count("RegLoadKeyW") + system().count("RegUnLoadKeyW"), 0U);
}

}  // namespace

}  // namespace testbed
