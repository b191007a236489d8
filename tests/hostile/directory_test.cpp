// Domains and groups of any name.
#include <cstring>

#include "hostile_test.h"
#include "membership_fixture.h"

namespace testbed {

namespace {

using HostileDirectory = HostileTest<MembershipTest>;

TEST_F(HostileDirectory, HasDomainsAndGroupsOfAnyName) {
    forEachInput("directory_text", [&](hostile::Input& input) {
        const std::span<const std::byte> bytes = input.rest();
        std::wstring name(bytes.size() / sizeof(wchar_t), L'\0');
        std::memcpy(name.data(), bytes.data(), name.size() * sizeof(wchar_t));
        const auto binding = system().watch("ADsGetObject");
        note(isMemberOf({name}).empty());
        const auto domain = REPLACE(GetComputerNameExW, [&](COMPUTER_NAME_FORMAT, LPWSTR text, LPDWORD room) {
            const std::size_t length = std::min<std::size_t>(name.size(), *room - 4);
            std::wmemcpy(text, L"pc.", 3);
            std::wmemcpy(text + 3, name.data(), length);
            text[3 + length] = L'\0';
            return TRUE;
        });
        note(isMemberOf({name}).empty());
        EXPECT_GE(binding.count(), 2U);
    });
}

}  // namespace

}  // namespace testbed
