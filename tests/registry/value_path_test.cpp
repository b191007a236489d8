#include "registry/value_path.h"

#include <string>

#include "gtest/gtest.h"
#include "guard_pages.h"

namespace {

using winutil::registry::ValuePath;

TEST(ValuePath, IsRootKeyPathAndValueName) {
    const ValuePath<char> path("HKEY_LOCAL_MACHINE\\Software\\Example\\Setting");
    ASSERT_TRUE(path);
    EXPECT_STREQ(path.root(), "HKEY_LOCAL_MACHINE");
    EXPECT_STREQ(path.keyPath(), "Software\\Example");
    EXPECT_STREQ(path.valueName(), "Setting");
}

TEST(ValuePath, TakesWideCharactersToo) {
    const ValuePath<wchar_t> path(L"HKEY_USERS\\\u00e9t\u00e9\\\u20ac");
    ASSERT_TRUE(path);
    EXPECT_STREQ(path.root(), L"HKEY_USERS");
    EXPECT_STREQ(path.keyPath(), L"\u00e9t\u00e9");
    EXPECT_STREQ(path.valueName(), L"\u20ac");
}

TEST(ValuePath, HasAnEmptyKeyPathWithASingleBackslash) {
    const ValuePath<char> path("HKEY_USERS\\value");
    ASSERT_TRUE(path);
    EXPECT_STREQ(path.root(), "HKEY_USERS");
    EXPECT_STREQ(path.keyPath(), "");
    EXPECT_STREQ(path.valueName(), "value");
}

TEST(ValuePath, MayHaveEmptyParts) {
    const ValuePath<char> backslash("\\");
    ASSERT_TRUE(backslash);
    EXPECT_STREQ(backslash.root(), "");
    EXPECT_STREQ(backslash.valueName(), "");

    const ValuePath<char> two("root\\\\");
    ASSERT_TRUE(two);
    EXPECT_STREQ(two.root(), "root");
    EXPECT_STREQ(two.keyPath(), "");
    EXPECT_STREQ(two.valueName(), "");

    const ValuePath<char> defaultValue("root\\key\\");
    ASSERT_TRUE(defaultValue);
    EXPECT_STREQ(defaultValue.keyPath(), "key");
    EXPECT_STREQ(defaultValue.valueName(), "");
}

TEST(ValuePath, IsNoneWithoutABackslash) {
    EXPECT_FALSE(ValuePath<char>("HKEY_USERS"));
    EXPECT_FALSE(ValuePath<char>(""));
    EXPECT_FALSE(ValuePath<wchar_t>(L"HKEY_USERS/value"));
}

TEST(ValuePath, MayHave1023Characters) {
    const std::string text = "root\\key\\" + std::string(1023 - 9, 'v');
    const ValuePath<char> path(text.c_str());
    ASSERT_TRUE(path);
    EXPECT_EQ(path.valueName(), text.substr(9));
}

TEST(ValuePath, IsNoneWith1024CharactersAndMore) {
    for (const std::size_t length : {1024, 1025, 2048, 100000}) {
        EXPECT_FALSE(ValuePath<char>(("root\\key\\" + std::string(length - 9, 'v')).c_str())) << length;
        EXPECT_FALSE(ValuePath<wchar_t>((L"root\\key\\" + std::wstring(length - 9, L'v')).c_str())) << length;
    }
}

TEST(ValuePath, IsReadNoFurtherThanItsTerminator) {
    const std::string text = "root\\key\\value";
    const testbed::GuardedBuffer block(std::as_bytes(std::span(text.c_str(), text.size() + 1)));
    EXPECT_TRUE(ValuePath<char>(block.as<const char>()));
}

}  // namespace
