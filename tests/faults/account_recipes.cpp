// Logons, names of accounts, groups.
// windows.h comes first: the others build on it.
#include <windows.h>

#include <lm.h>
#include <malloc.h>
#include <winnetwk.h>

#include "../account/identity/membership_fixture.h"
#include "../account/scripted_provider.h"
#include "reasons.h"
#include "recipe.h"
#include "thread_token.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;

class LogonTest : public WinUtilTest {
protected:
    ~LogonTest() override { RevertToSelf(); }

    Replacement logon_ = REPLACE(LogonUserA, [](LPCSTR, LPCSTR, LPCSTR, DWORD, DWORD, PHANDLE token) {
        *token = impersonationToken();
        return TRUE;
    });
};

RECIPE(LogonTest, impersonateUser, thatLogsOn) {
    tolerates({"LookupPrivilegeValueA", "AdjustTokenPrivileges", "OpenProcessToken"}, systemDecides);
    mayAnswerAnythingBesideAnException();
    examine([&] { return NATIVE(impersonateUser)(L"DOM", L"user", L"secret"); });
    if (answered()) {
        NATIVE(impersonateToSelf)();
    }
}

RECIPE(LogonTest, impersonateToSelf, fromAnother) {
    NATIVE(impersonateUser)(L"DOM", L"user", L"secret");
    examine([&] { NATIVE(impersonateToSelf)(); });
}

// The ways of validating credentials, each of which only the one before it can spare: a handshake, a logon, a
// connection.
class ValidationRecipe : public RecipeOn<WinUtilTest> {
protected:
    void validate() {
        examine([&] { NATIVE(validateUserNative)(L"DOM", L"user", L"secret"); });
    }
    // What fails here is not the last word, and the reason is that of the last.
    void anotherWayDecides(std::initializer_list<const char*> functions) {
        tolerates(functions, nextDecides);
    }

    ScriptedProvider provider{system()};
    Replacement connection_ = system().answer("WNetUseConnectionW", ERROR_LOGON_FAILURE);
    Replacement cancelling_ = system().answer("WNetCancelConnectionW", NO_ERROR);
};

constexpr char lastWay[] = "the reason is that of the last way of validating";
constexpr char noEntryPoint[] = "a provider need not have this entry point";

class HandshakeRecipe : public ValidationRecipe {
protected:
    void shakeHands() {
        const auto logon = system().answer("LogonUserW", FALSE, ERROR_LOGON_FAILURE);
        OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &provider.token);
        const auto word = reinterpret_cast<std::uint64_t>(provider.token);
        ledger().take(Kind::handle, word, "QuerySecurityContextToken", "the test");
        for (const char* function : {"LoadLibraryA", "GetProcAddress", "QuerySecurityPackageInfoW",
                                     "AcquireCredentialsHandleW", "InitializeSecurityContextW",
                                     "AcceptSecurityContext", "GetVersionExA", "HeapAlloc", "LocalAlloc"}) {
            raisesOtherCode(function, lastWay);
        }
        tolerates({"GetProcAddress 9"}, noEntryPoint);
        tolerates({"QuerySecurityContextToken", "GetTokenInformation", "NetUserModalsGet", "InitializeSid"},
                  standsIn);
        validate();
        if (provider.count("query token") == 0) {
            ledger().drop(Kind::handle, word);
            CloseHandle(provider.token);
        }
    }
};

class Recipe_validateUserNative_byAHandshake final : public HandshakeRecipe {
    void perform() override {
        tolerates({"GetProcAddress 3"}, noEntryPoint);
        shakeHands();
    }
};
class Recipe_validateUserNative_byACompletedHandshake final : public HandshakeRecipe {
    void perform() override {
        raisesOtherCode("CompleteAuthToken", lastWay);
        provider.statuses["client"] = {SEC_I_COMPLETE_AND_CONTINUE, SEC_I_COMPLETE_NEEDED};
        shakeHands();
    }
};

class Recipe_validateUserNative_byALogon final : public ValidationRecipe {
    void perform() override {
        provider.missing = {"AcceptSecurityContext"};
        const auto logon = REPLACE(LogonUserW, [](LPCWSTR, LPCWSTR, LPCWSTR, DWORD, DWORD, PHANDLE token) {
            *token = impersonationToken();
            return TRUE;
        });
        anotherWayDecides({"LoadLibraryA", "GetProcAddress", "GetVersionExA"});
        tolerates({"LookupPrivilegeValueA", "AdjustTokenPrivileges", "OpenProcessToken"}, systemDecides);
        validate();
    }
};

class Recipe_validateUserNative_byAConnection final : public ValidationRecipe {
    void perform() override {
        provider.missing = {"AcceptSecurityContext"};
        const auto logon = system().answer("LogonUserW", FALSE, ERROR_PRIVILEGE_NOT_HELD);
        const auto use = system().answer("WNetUseConnectionW", NO_ERROR);
        anotherWayDecides({"LoadLibraryA", "GetProcAddress", "GetVersionExA", "LogonUserW"});
        tolerates({"LookupPrivilegeValueA", "AdjustTokenPrivileges", "OpenProcessToken"}, systemDecides);
        tolerates({"GetComputerNameExW"}, standsIn);
        tolerates({"WNetCancelConnectionW"}, nothingLeftToDo);
        validate();
    }
};
[[maybe_unused]] const bool validationsAdded =
    addRecipe<Recipe_validateUserNative_byAHandshake>("validateUserNative", "byAHandshake") &&
    addRecipe<Recipe_validateUserNative_byACompletedHandshake>("validateUserNative",
                                                               "byACompletedHandshake") &&
    addRecipe<Recipe_validateUserNative_byALogon>("validateUserNative", "byALogon") &&
    addRecipe<Recipe_validateUserNative_byAConnection>("validateUserNative", "byAConnection");

class NetworkLogonTest : public WinUtilTest {
protected:
    Replacement logon_ = REPLACE(LogonUserW, [](LPCWSTR, LPCWSTR, LPCWSTR, DWORD, DWORD, PHANDLE token) {
        *token = impersonationToken();
        return TRUE;
    });
};

RECIPE(NetworkLogonTest, networkAuthenticate, thatLogsOn) {
    examine([&] { return NATIVE(networkAuthenticate)(L"DOM", L"user", L"secret"); });
}

RECIPE(WinUtilTest, getUsername, ofTheProcess) {
    examine([&] { return NATIVE(getUsername)(); });
}

class DomainTest : public WinUtilTest {
protected:
    Replacement modals_ = REPLACE(NetUserModalsGet, [this](LPCWSTR, DWORD, LPBYTE* buffer) -> NET_API_STATUS {
        info_.usrmod2_domain_name = domain_;
        *buffer = reinterpret_cast<LPBYTE>(&info_);
        return NERR_Success;
    });
    Replacement free_ = system().answer("NetApiBufferFree", NERR_Success);

private:
    wchar_t domain_[8] = L"CORP";
    USER_MODALS_INFO_2 info_ = {};
};

RECIPE(DomainTest, getDomainName, ofADomain) {
    examine([&] { return NATIVE(getDomainName)(); });
}

RECIPE(WinUtilTest, getV6DomainName, ofTheUser) {
    tolerates({"OpenThreadToken"}, standsIn);
    examine([&] { return NATIVE(getV6DomainName)(); });
}

RECIPE(WinUtilTest, getNetBIOSComputerName, ofTheComputer) {
    examine([&] { return NATIVE(getNetBIOSComputerName)(); });
}

RECIPE(WinUtilTest, getSID, ofTheUser) {
    tolerates({"OpenThreadToken"}, standsIn);
    examine([&] { return NATIVE(getSID)(); });
}

RECIPE(WinUtilTest, getSIDForUser, ofAGroup) {
    examine([&] { return NATIVE(getSIDForUser)(nullptr, L"Administrators"); });
}

class GroupsTest : public WinUtilTest {
protected:
    Replacement global_ =
        REPLACE(NetUserGetGroups, [this](LPCWSTR server, LPCWSTR, DWORD, LPBYTE* buffer, DWORD, LPDWORD read,
                                         LPDWORD total) { return give(server, *buffer, *read, *total); });
    Replacement local_ =
        REPLACE(NetUserGetLocalGroups,
                [this](LPCWSTR server, LPCWSTR, DWORD, DWORD, LPBYTE* buffer, DWORD, LPDWORD read,
                       LPDWORD total) { return give(server, *buffer, *read, *total); });
    Replacement free_ = system().answer("NetApiBufferFree", NERR_Success);
    bool serverAnswers = true;

private:
    NET_API_STATUS give(LPCWSTR server, LPBYTE& buffer, DWORD& read, DWORD& total) {
        if (server != nullptr && !serverAnswers) {
            return RPC_S_SERVER_UNAVAILABLE;
        }
        given_.push_back({names_[0], names_[1]});
        buffer = reinterpret_cast<LPBYTE>(given_.back().data());
        read = total = 2;
        return NERR_Success;
    }

    wchar_t names_[2][8] = {L"Staff", L"Users"};
    std::vector<std::vector<wchar_t*>> given_ = [] {
        std::vector<std::vector<wchar_t*>> made;
        made.reserve(8);
        return made;
    }();
};

class GroupsRecipe : public RecipeOn<GroupsTest> {
protected:
    void list() {
        leavesOut({"NetUserGetGroups", "NetUserGetLocalGroups"}, leftOut);
        leavesOut({"GetMethodID"}, noMethod);
        const JavaObject groups = java.list();
        examine([&] { NATIVE(getDomainUserGroups)(L"server", L"alice", groups); });
        noteElements(groups);
    }
};

class Recipe_getDomainUserGroups_ofAUser final : public GroupsRecipe {
    void perform() override { list(); }
};
class Recipe_getDomainUserGroups_withoutTheServer final : public GroupsRecipe {
    void perform() override {
        serverAnswers = false;
        list();
    }
};
[[maybe_unused]] const bool groupListsAdded =
    addRecipe<Recipe_getDomainUserGroups_ofAUser>("getDomainUserGroups", "ofAUser") &&
    addRecipe<Recipe_getDomainUserGroups_withoutTheServer>("getDomainUserGroups", "withoutTheServer");

constexpr char notEstablished[] = "a group whose membership was not established is listed";

class GroupMembership : public RecipeOn<MembershipTest> {
protected:
    void ask(const std::vector<std::wstring>& groups) {
        tolerates({"ADsGetObject", "directory.ADsGetObject", "directory.ExecuteSearch", "directory.GetColumn",
                   "directory.GetNextRow", "directory.IsMember", "directory.QueryInterface",
                   "directory.SetSearchPreference", "malloc", "SysAllocString", "GetUserNameW",
                   "GetComputerNameExW", "GetStringChars"},
                  notEstablished, Tolerance::any);
        names.clear();
        for (const std::wstring& name : groups) {
            names.push_back(java.string(name));
        }
        examine([&] { return std::wstring(NATIVE(isMemberOf)(list) ? L"a list" : L"null"); });
        for (const JavaObject& name : added) {
            note(name.text());
        }
    }
};

class Recipe_isMemberOf_aGroup final : public GroupMembership {
    void perform() override {
        addGroup(L"Staff", {alice});
        ask({L"Staff"});
    }
};
class Recipe_isMemberOf_nestedGroups final : public GroupMembership {
    void perform() override {
        tolerates({"ADsEnumerateNext", "directory.GetObjectAttributes", "directory.Members", "directory.Next",
                   "directory.get_ADsPath", "directory.get__NewEnum"},
                  notEstablished, Tolerance::any);
        addGroup(L"Inner", {alice});
        addGroup(L"Outer", {L"LDAP://nothing", group(L"Inner")});
        addGroup(L"Other", {});
        ask({L"Outer", L"Other"});
    }
};
[[maybe_unused]] const bool membershipsAdded =
    addRecipe<Recipe_isMemberOf_aGroup>("isMemberOf", "aGroup") &&
    addRecipe<Recipe_isMemberOf_nestedGroups>("isMemberOf", "nestedGroups");

}  // namespace
