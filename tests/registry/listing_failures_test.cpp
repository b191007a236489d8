// listRegistry where Java or the system does not play along.
#include <string>

#include "registry_fixture.h"

namespace testbed {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

// The values are named so that every system enumerates them in this order.
class RegistryListingFailures : public RegistryTest {
protected:
    void SetUp() override {
        makeSubkey(L"subkey");
        put(L"a text", REG_SZ, bytesOf(L"x\0"s));
        put(L"b number", REG_DWORD, "\x01\0\0\0"s);
        put(L"c bytes", REG_BINARY, "\x02");
        put(L"d list", REG_MULTI_SZ, bytesOf(L"a\0b\0\0"s));
    }
    void list() { list(collector.object()); }
    void list(const JavaObject& object) { NATIVE(listRegistry)(object, L"HKEY_CURRENT_USER", keyPath()); }

    const std::vector<Item> everything = {subkeyItem(L"subkey"), textItem(L"a text", L"x"),
                                          numberItem(L"b number", L"1"), bytesItem(L"c bytes", L"02"),
                                          listItem(L"d list", L"[a][b]")};
    Collector collector{java};
};

TEST_F(RegistryListingFailures, AreNotThereToBeginWith) {
    list();
    EXPECT_EQ(collector.items(), everything);
}

TEST_F(RegistryListingFailures, AMethodThatTheCollectorLacksIsPassedOver) {
    for (std::size_t i = 0; i < everything.size(); ++i) {
        Collector other(java);
        other.removeMethod(everything[i].method);
        list(other.object());
        std::vector<Item> rest = everything;
        rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
        EXPECT_EQ(other.items(), rest) << everything[i].method;
        EXPECT_FALSE(java.isPending());
    }
}

TEST_F(RegistryListingFailures, ACollectorWithoutAnyMethodGetsNothing) {
    list(java.object("java/lang/Object"));
    EXPECT_FALSE(java.isPending());
}

TEST_F(RegistryListingFailures, NoCollectorAtAllIsNoError) {
    list(nullptr);
    EXPECT_FALSE(java.isPending());
}

TEST_F(RegistryListingFailures, WhatTheCollectorThrowsEndsTheListing) {
    for (std::size_t k = 1; k <= everything.size(); ++k) {
        Collector thrower(java);
        const Exception thrown = java.exception("java/lang/IllegalStateException", L"enough");
        thrower.throwAt(k, thrown);
        list(thrower.object());
        EXPECT_EQ(thrower.items().size(), k);
        EXPECT_EQ(java.takeExceptionObject(), thrown);
    }
}

// Each reference that the JVM has no memory for ends the listing with the JVM's error.
TEST_F(RegistryListingFailures, AJvmWithoutMemoryEndsTheListing) {
    for (const char* function : {"NewString", "NewByteArray", "NewObjectArray", "FindClass"}) {
        const std::size_t before = java.count(function);
        list();
        const std::size_t calls = java.count(function) - before;
        ASSERT_GE(calls, 1U) << function;
        for (std::size_t k = 1; k <= calls; ++k) {
            Collector other(java);
            java.failCall(function, k);
            list(other.object());
            EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << function << ' ' << k;
            EXPECT_LT(other.items().size(), everything.size()) << function << ' ' << k;
        }
    }
}

TEST_F(RegistryListingFailures, ArgumentsThatTheJvmHasNoMemoryForListNothing) {
    for (const std::size_t k : {1, 2}) {
        java.failCall("GetStringUTFChars", k);
        list();
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    }
    EXPECT_THAT(collector.items(), IsEmpty());
    EXPECT_EQ(system().count("RegOpenKeyExA"), 0U);
}

TEST_F(RegistryListingFailures, NullForANameListsNothing) {
    NATIVE(listRegistry)(collector.object(), nullptr, keyPath());
    NATIVE(listRegistry)(collector.object(), L"HKEY_CURRENT_USER", nullptr);
    EXPECT_THAT(collector.items(), IsEmpty());
    EXPECT_EQ(system().count("RegOpenKeyExA"), 0U);
    EXPECT_FALSE(java.isPending());
}

TEST_F(RegistryListingFailures, WithoutMemoryForTheTextsNothingIsListed) {
    const Replacement failing = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);
    list();
    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_THAT(collector.items(), IsEmpty());
}

TEST_F(RegistryListingFailures, AValueWithoutMemoryForItsDataEndsTheListing) {
    // How many items stand before the values that are read into a block.
    const std::size_t before[] = {1, 3, 4};
    for (std::size_t i = 0; i < std::size(before); ++i) {
        Collector other(java);
        const Replacement failing = system().failCall("malloc", 2 + i, ERROR_NOT_ENOUGH_MEMORY);
        list(other.object());
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << i;
        EXPECT_THAT(other.items(),
                    testing::ElementsAreArray(everything.begin(), everything.begin() + before[i]));
    }
}

TEST_F(RegistryListingFailures, AKeyWithoutCountsIsEmpty) {
    const Replacement counts = system().answer("RegQueryInfoKeyA", ERROR_ACCESS_DENIED);
    list();
    EXPECT_THAT(collector.items(), IsEmpty());
    ASSERT_EQ(counts.count(), 1U);
}

// As for a key whose class has no room in the buffer.
TEST_F(RegistryListingFailures, CountsThatComeWithAFailureCount) {
    const Replacement counts = REPLACE(RegQueryInfoKeyA, [&](auto... arguments) -> LSTATUS {
        REAL(RegQueryInfoKeyA)(arguments...);
        return ERROR_MORE_DATA;
    });
    list();
    EXPECT_EQ(collector.items(), everything);
}

TEST_F(RegistryListingFailures, TheClassOfTheKeyIsAskedForWithRoomFor260Characters) {
    const Replacement counts =
        REPLACE(RegQueryInfoKeyA, [&](HKEY key, LPSTR text, LPDWORD length, auto... rest) {
            EXPECT_EQ(*length, 260U);
            return REAL(RegQueryInfoKeyA)(key, text, length, rest...);
        });
    list();
    EXPECT_EQ(collector.items(), everything);
}

TEST_F(RegistryListingFailures, ASubkeyThatCannotBeReadIsPassedOver) {
    makeSubkey(L"another");
    const Replacement names = system().failCall("RegEnumKeyExA", 1, 0, ERROR_ACCESS_DENIED);
    list();
    EXPECT_EQ(collector.items(), everything);
    EXPECT_EQ(system().count("RegEnumKeyExA"), 2U);
}

TEST_F(RegistryListingFailures, SubkeysAreAskedForWithRoomFor255Characters) {
    const Replacement names =
        REPLACE(RegEnumKeyExA, [&](HKEY key, DWORD index, LPSTR name, LPDWORD length, auto... rest) {
            EXPECT_EQ(*length, 255U);
            return REAL(RegEnumKeyExA)(key, index, name, length, rest...);
        });
    list();
    EXPECT_EQ(collector.items(), everything);
}

TEST_F(RegistryListingFailures, AValueThatCannotBeEnumeratedIsPassedOver) {
    const Replacement failing = system().failCall("RegEnumValueA", 2, 0, ERROR_ACCESS_DENIED);
    list();
    EXPECT_THAT(collector.items(), ElementsAre(everything[0], everything[1], everything[3], everything[4]));
}

TEST_F(RegistryListingFailures, AValueThatCannotBeEnumeratedIsNotTakenForTheDefaultValue) {
    put(L"", REG_SZ, bytesOf(L"default\0"s));
    const Replacement failing = system().failCall("RegEnumValueA", 2, 0, ERROR_ACCESS_DENIED);
    list();
    EXPECT_THAT(collector.items(), ElementsAre(everything[0], textItem(L"", L"default"), everything[2],
                                               everything[3], everything[4]));
}

TEST_F(RegistryListingFailures, ValuesAreEnumeratedWithoutTheirData) {
    const Replacement values =
        REPLACE(RegEnumValueA, [&](HKEY key, DWORD index, LPSTR name, LPDWORD length, LPDWORD reserved,
                                   LPDWORD type, LPBYTE data, LPDWORD size) {
            EXPECT_EQ(*length, 16383U);
            EXPECT_EQ(data, nullptr);
            return REAL(RegEnumValueA)(key, index, name, length, reserved, type, data, size);
        });
    list();
    EXPECT_EQ(collector.items(), everything);
}

TEST_F(RegistryListingFailures, AValueThatCannotBeReadIsPassedOver) {
    for (std::size_t k = 1; k <= 4; ++k) {
        Collector other(java);
        const Replacement failing = system().failCall("RegQueryValueExA", k, 0, ERROR_ACCESS_DENIED);
        list(other.object());
        std::vector<Item> rest = everything;
        rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(k));
        EXPECT_EQ(other.items(), rest);
    }
}

// A value that changes between its enumeration and its read.
class RegistryListingChanges : public RegistryTest {
protected:
    // Changes the value right before each of the first reads.
    template <class Change>
    std::vector<Item> listWhile(int changes, Change change) {
        int reads = 0;
        const Replacement reading =
            REPLACE(RegQueryValueExA, [&](HKEY opened, LPCSTR name, auto... rest) -> LSTATUS {
                if (reads++ < changes) {
                    change();
                }
                return REAL(RegQueryValueExA)(opened, name, rest...);
            });
        Collector collector(java);
        NATIVE(listRegistry)(collector.object(), L"HKEY_CURRENT_USER", keyPath());
        return collector.items();
    }
};

TEST_F(RegistryListingChanges, AValueThatHasGrownIsReadAsItIsNow) {
    put(L"bytes", REG_BINARY, "\x01");
    EXPECT_THAT(listWhile(1, [&] { put(L"bytes", REG_BINARY, "\x01\x02\x03"); }),
                ElementsAre(bytesItem(L"bytes", L"010203")));
}

TEST_F(RegistryListingChanges, AValueThatHasShrunkIsReadAsItIsNow) {
    put(L"bytes", REG_BINARY, "\x01\x02\x03");
    EXPECT_THAT(listWhile(1, [&] { put(L"bytes", REG_BINARY, "\x01"); }),
                ElementsAre(bytesItem(L"bytes", L"01")));
}

TEST_F(RegistryListingChanges, ATextThatHasShrunkHasNothingOfItsOldEnd) {
    put(L"text", REG_SZ, bytesOf(L"a long text"));
    EXPECT_THAT(listWhile(1, [&] { put(L"text", REG_SZ, bytesOf(L"a")); }),
                ElementsAre(textItem(L"text", L"a")));
}

TEST_F(RegistryListingChanges, AValueThatGrowsAllTheTimeIsPassedOver) {
    std::string data = "1";
    put(L"bytes", REG_BINARY, data);
    EXPECT_THAT(listWhile(100, [&] { put(L"bytes", REG_BINARY, data += "2"); }), IsEmpty());
    EXPECT_EQ(system().count("RegQueryValueExA"), 2U);
}

TEST_F(RegistryListingChanges, AValueThatIsGoneIsPassedOver) {
    put(L"bytes", REG_BINARY, "\x01");
    put(L"text", REG_SZ, bytesOf(L"a"));
    EXPECT_THAT(listWhile(1, [&] { RegDeleteValueW(key(), L"bytes"); }), IsEmpty());
}

TEST_F(RegistryListingChanges, AValueOfAnotherTypeByNowStaysWithinItsBlock) {
    put(L"text", REG_SZ, bytesOf(L"text\0"s));
    EXPECT_THAT(listWhile(1, [&] { put(L"text", REG_BINARY, "\x41\x42\x43"); }),
                ElementsAre(textItem(L"text", L"ABC")));
}

}  // namespace

}  // namespace testbed
