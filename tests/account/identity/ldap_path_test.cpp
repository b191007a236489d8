// The directory path of a DNS domain.
#include "account/ldap_path.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using winutil::account::domainLdapPath;
using winutil::account::LdapPath;
using winutil::account::ldapPathCapacity;

std::wstring pathOf(const std::wstring& domain) {
    LdapPath path;
    domainLdapPath(domain.c_str(), path);
    return path;
}

TEST(DirectoryPath, NamesEachLabelOfTheDomain) {
    EXPECT_EQ(pathOf(L"corp.example.com"), L"LDAP://corp.example.com/dc=corp,dc=example,dc=com");
    EXPECT_EQ(pathOf(L"a.b"), L"LDAP://a.b/dc=a,dc=b");
}

TEST(DirectoryPath, HasOneLabelForANameWithoutADot) {
    EXPECT_EQ(pathOf(L"lonely"), L"LDAP://lonely/dc=lonely");
}

TEST(DirectoryPath, KeepsLabelsThatAreEmpty) {
    EXPECT_EQ(pathOf(L""), L"LDAP:///dc=");
    EXPECT_EQ(pathOf(L"a..b."), L"LDAP://a..b./dc=a,dc=,dc=b,dc=");
}

TEST(DirectoryPath, TakesPercentSignsAsTheyAre) {
    EXPECT_EQ(pathOf(L"%s.%n"), L"LDAP://%s.%n/dc=%s,dc=%n");
}

TEST(DirectoryPath, FillsItsBuffer) {
    // "LDAP://" + domain + "/dc=" + domain
    const std::wstring domain((ldapPathCapacity - 1 - 11) / 2, L'x');

    EXPECT_EQ(pathOf(domain), L"LDAP://" + domain + L"/dc=" + domain);
    EXPECT_EQ(pathOf(domain).size(), ldapPathCapacity - 1 - (ldapPathCapacity - 12) % 2);
}

TEST(DirectoryPath, IsEmptyWhenItDoesNotFit) {
    EXPECT_EQ(pathOf(std::wstring((ldapPathCapacity - 1 - 11) / 2 + 1, L'x')), L"");
    EXPECT_EQ(pathOf(std::wstring(ldapPathCapacity, L'x')), L"");
    EXPECT_EQ(pathOf(std::wstring(1023, L'.')), L"");
}

}  // namespace
