#include "membership_fixture.h"

namespace testbed {

MembershipTest::MembershipTest() {
    replacements_.push_back(REPLACE(GetUserNameW, [](LPWSTR name, LPDWORD size) -> BOOL {
        EXPECT_EQ(*size, 1024u);
        wcscpy(name, L"alice");
        return TRUE;
    }));
    replacements_.push_back(
        REPLACE(GetComputerNameExW, [](COMPUTER_NAME_FORMAT format, LPWSTR name, LPDWORD size) -> BOOL {
            EXPECT_EQ(format, ComputerNameDnsFullyQualified);
            EXPECT_EQ(*size, 1024u);
            wcscpy(name, L"pc.corp.example.com");
            return TRUE;
        }));
    directory.entries[alice] = {.number = aliceNumber};
    directory.rows[L"(&(objectClass=user)(samAccountName=alice))"] = {{alice}};

    java.defineConstructor(listClass, "()V");
    java.defineMethod(listClass, "size", "()I",
                      [this](const Arguments&) { return static_cast<jint>(names.size()); });
    java.defineMethod(listClass, "get", "(I)Ljava/lang/Object;", [this](const Arguments& arguments) {
        return names.at(static_cast<std::size_t>(arguments[0].number()));
    });
    java.defineMethod(listClass, "add", "(Ljava/lang/Object;)Z", [this](const Arguments& arguments) {
        added.push_back(arguments[0].object());
        return true;
    });
    list = java.object(listClass);
}

DirectoryEntry& MembershipTest::addGroup(const std::wstring& name, std::vector<std::wstring> members) {
    directory.rows[L"(&(objectClass=group)(cn=" + name + L"))"] = {{group(name)}};
    DirectoryEntry& entry = directory.entries[group(name)];
    entry = {.isGroup = true, .number = nextNumber_++, .members = std::move(members)};
    return entry;
}

std::vector<std::wstring> MembershipTest::isMemberOf(const std::vector<std::wstring>& groupNames) {
    names.clear();
    added.clear();
    for (const std::wstring& name : groupNames) {
        names.push_back(java.string(name));
    }
    result = NATIVE(isMemberOf)(list);
    std::vector<std::wstring> texts;
    for (const JavaObject& name : added) {
        texts.push_back(name.text());
    }
    return texts;
}

}  // namespace testbed
