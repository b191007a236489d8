// What the tests of group memberships share: a user, a directory, and a list of group names with a class of
// its own.
#pragma once

#include "fake_directory.h"

namespace testbed {

class MembershipTest : public WinUtilTest {
protected:
    static constexpr const wchar_t* root = L"LDAP://corp.example.com/dc=corp,dc=example,dc=com";
    static constexpr const wchar_t* alice = L"LDAP://corp.example.com/CN=Alice";
    static constexpr DWORD aliceNumber = 1;
    static constexpr const char* listClass = "test/Groups";

    MembershipTest();

    // Puts a group with that common name into the directory; its path is that of `group`.
    DirectoryEntry& addGroup(const std::wstring& name, std::vector<std::wstring> members);
    static std::wstring group(const std::wstring& name) { return L"LDAP://corp.example.com/CN=" + name; }

    // Calls the library with these names; the result has the names that it put into the new list.
    std::vector<std::wstring> isMemberOf(const std::vector<std::wstring>& names);

    // The list that isMemberOf hands over and the one it gets back.
    std::vector<JavaObject> names;
    std::vector<JavaObject> added;
    JavaObject list;
    JavaObject result;

    FakeDirectory directory{system(), ledger(), root};

private:
    std::vector<Replacement> replacements_;
    DWORD nextNumber_ = 100;
};

}  // namespace testbed
