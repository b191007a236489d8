// getRegistryValue, whose block grows with the value.
#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "registry_fixture.h"

namespace testbed {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;

class GrowingRegistryText : public RegistryTest {
protected:
    std::wstring get(const std::wstring& path, jint extraAccess = 0, jint type = REG_SZ) {
        return NATIVE(getRegistryValue)(path, extraAccess, type).text();
    }
    std::wstring getAs(DWORD type) { return get(pathOf(L"value"), 0, static_cast<jint>(type)); }

    // Answers ERROR_MORE_DATA to the first reads, with the size that the value has then, records the room
    // that each was given, and then gives this text.
    Replacement growFor(
        std::size_t reads, const std::wstring& text,
        std::function<DWORD(DWORD room)> sizeNow = [](DWORD) { return 1U << 30; }) {
        return REPLACE(RegQueryValueExW, [this, reads, text, sizeNow](HKEY, LPCWSTR, LPDWORD, LPDWORD type,
                                                                      LPBYTE data, LPDWORD room) {
            rooms.push_back(*room);
            *type = REG_SZ;
            if (rooms.size() <= reads) {
                std::memset(data, 'x', std::min<DWORD>(*room, 20480));
                *room = sizeNow(*room);
                return LSTATUS{ERROR_MORE_DATA};
            }
            std::memcpy(data, text.data(), text.size() * sizeof(wchar_t));
            *room = static_cast<DWORD>(text.size() * sizeof(wchar_t));
            return LSTATUS{ERROR_SUCCESS};
        });
    }
    std::vector<DWORD> rooms;
};

TEST_F(GrowingRegistryText, GivesTextsUnexpanded) {
    put(L"text", REG_SZ, bytesOf(L"\u20ac \u4e2d\0"s));
    put(L"expand", REG_EXPAND_SZ, bytesOf(L"%windir%\0"s));
    EXPECT_EQ(get(pathOf(L"text")), L"\u20ac \u4e2d");
    EXPECT_EQ(get(pathOf(L"expand")), L"%windir%");
}

TEST_F(GrowingRegistryText, TakesSpellingsOfTheRootInAnyCase) {
    put(L"text", REG_SZ, bytesOf(L"found"));
    EXPECT_EQ(get(L"hkey_current_user\\" + keyPath() + L"\\text"), L"found");
    EXPECT_EQ(get(L"Hkey_Current_User\\" + keyPath() + L"\\text"), L"found");
}

TEST_F(GrowingRegistryText, TakesAnUnknownRootForTheLocalMachine) {
    for (const wchar_t* root : {L"HKLM", L"no root at all", L"", L"HKEY_PERFORMANCE_DATA"}) {
        const Replacement opening = system().watch("RegOpenKeyExW");
        EXPECT_NE(get(root + L"\\Software\\Microsoft\\Windows NT\\CurrentVersion\\SystemRoot"s), L"")
            << toUtf8(root);
        ASSERT_EQ(opening.count(), 1U);
        EXPECT_EQ(opening.calls()[0].argument<std::uint32_t>(0), 0x80000002U);
    }
}

// The view of the registry is the caller's to choose, in a 32-bit process too.
TEST_F(GrowingRegistryText, JoinsTheExtraAccessToReading) {
    const Replacement wow64 = REPLACE(IsWow64Process, [](HANDLE, PBOOL answer) {
        *answer = TRUE;
        return TRUE;
    });
    const Replacement opening = system().watch("RegOpenKeyExW");
    for (const jint extra : {0, 0x100, 0x200}) {
        get(pathOf(L"x"), extra);
    }
    ASSERT_EQ(opening.count(), 3U);
    EXPECT_EQ(opening.calls()[0].argument<std::uint32_t>(3), 0x20019U);
    EXPECT_EQ(opening.calls()[1].argument<std::uint32_t>(3), 0x20119U);
    EXPECT_EQ(opening.calls()[2].argument<std::uint32_t>(3), 0x20219U);
}

TEST_F(GrowingRegistryText, WantsAnyOtherTypeExactly) {
    put(L"value", REG_EXPAND_SZ, bytesOf(L"text"));
    EXPECT_EQ(getAs(REG_EXPAND_SZ), L"text");
    EXPECT_EQ(getAs(REG_SZ), L"text");
    EXPECT_EQ(getAs(REG_MULTI_SZ), L"");
    put(L"value", REG_SZ, bytesOf(L"text"));
    EXPECT_EQ(getAs(REG_EXPAND_SZ), L"");
    EXPECT_EQ(getAs(REG_NONE), L"");
    put(L"value", REG_MULTI_SZ, bytesOf(L"one\0two\0\0"s));
    EXPECT_EQ(getAs(REG_MULTI_SZ), L"one");
    EXPECT_EQ(getAs(REG_SZ), L"");
    put(L"value", REG_DWORD, "A\0B\0"s);
    EXPECT_EQ(getAs(REG_DWORD), L"AB");
    EXPECT_EQ(getAs(REG_SZ), L"");
}

TEST_F(GrowingRegistryText, EndsATextAtItsFirstZeroOrWithItsData) {
    put(L"zero", REG_SZ, bytesOf(L"one\0two\0"s));
    put(L"no zero", REG_SZ, bytesOf(L"text"));
    put(L"empty", REG_SZ, "");
    put(L"odd", REG_SZ, bytesOf(L"ab") + "c");
    const GuardedHeap heap(system());
    EXPECT_EQ(get(pathOf(L"zero")), L"one");
    EXPECT_EQ(get(pathOf(L"no zero")), L"text");
    EXPECT_EQ(get(pathOf(L"empty")), L"");
    EXPECT_EQ(get(pathOf(L"odd")), L"abc");
}

// Sizes around those of the block: 8192 bytes, then 4096 more at a time.
TEST_F(GrowingRegistryText, GivesTextsOfAnySizeWhole) {
    for (const std::size_t length : {511, 512, 513, 2047, 2048, 4095, 4096, 4097, 6143, 6144, 6145, 100000}) {
        const std::wstring text = L"<" + std::wstring(length - 2, L't') + L">";
        put(L"no zero", REG_SZ, bytesOf(text));
        put(L"zero", REG_SZ, bytesOf(text + L'\0'));
        const GuardedHeap heap(system());
        EXPECT_EQ(get(pathOf(L"no zero")), text) << length;
        EXPECT_EQ(get(pathOf(L"zero")), text) << length;
    }
}

TEST_F(GrowingRegistryText, StartsWith8192BytesAndGrowsBy4096) {
    const GuardedHeap heap(system());
    const Replacement reading = growFor(3, L"the last");
    EXPECT_EQ(get(pathOf(L"value")), L"the last");
    EXPECT_THAT(rooms, ElementsAre(8192, 12288, 16384, 20480));
}

TEST_F(GrowingRegistryText, GivesTheTextThatWasReadLast) {
    put(L"value", REG_SZ, bytesOf(std::wstring(5000, L'o')));
    int reads = 0;
    const Replacement reading = REPLACE(RegQueryValueExW, [&](auto... arguments) -> LSTATUS {
        const LSTATUS status = REAL(RegQueryValueExW)(arguments...);
        if (++reads == 1) {
            put(L"value", REG_SZ, bytesOf(L"new"));
        }
        return status;
    });
    EXPECT_EQ(get(pathOf(L"value")), L"new");
    EXPECT_EQ(reads, 2);
}

TEST_F(GrowingRegistryText, FollowsAValueThatGrowsBetweenReads) {
    std::wstring text(4097, L'g');
    put(L"value", REG_SZ, bytesOf(text));
    int reads = 0;
    const Replacement reading = REPLACE(RegQueryValueExW, [&](auto... arguments) -> LSTATUS {
        if (++reads == 2) {
            text += std::wstring(4096, L'h');
            put(L"value", REG_SZ, bytesOf(text));
        }
        return REAL(RegQueryValueExW)(arguments...);
    });
    EXPECT_EQ(get(pathOf(L"value")), text);
}

TEST_F(GrowingRegistryText, FailsForAValueThatTurnsIntoAnotherTypeOrVanishes) {
    for (const bool vanishes : {false, true}) {
        put(L"value", REG_SZ, bytesOf(std::wstring(5000, L'o')));
        int reads = 0;
        const Replacement reading = REPLACE(RegQueryValueExW, [&](auto... arguments) -> LSTATUS {
            if (++reads == 2) {
                if (vanishes) {
                    RegDeleteValueW(key(), L"value");
                } else {
                    put(L"value", REG_BINARY, "1234");
                }
            }
            return REAL(RegQueryValueExW)(arguments...);
        });
        EXPECT_EQ(get(pathOf(L"value")), L"");
        EXPECT_EQ(reads, 2);
    }
}

// At 4096 bytes more a look, in blocks that are few enough not to cost their size each time.
TEST_F(GrowingRegistryText, GivesATextOf16MiBWhole) {
    constexpr std::size_t size = 16U << 20;
    const std::wstring text = L"<" + std::wstring(size / sizeof(wchar_t) - 2, L't') + L">";
    put(L"value", REG_SZ, bytesOf(text));
    EXPECT_TRUE(get(pathOf(L"value")) == text);
    EXPECT_EQ(system().count("RegQueryValueExW"), (size - 8192) / 4096 + 1);
    EXPECT_LE(system().count("malloc"), 13U);
}

TEST_F(GrowingRegistryText, FollowsAValueThatHoldsStillHoweverManyLooksItTakes) {
    const Replacement reading = growFor(20000, L"the last");
    EXPECT_EQ(get(pathOf(L"value")), L"the last");
    EXPECT_EQ(rooms.size(), 20001U);
    EXPECT_EQ(rooms.back(), 8192U + 20000 * 4096);
}

TEST_F(GrowingRegistryText, CountsOnlyTheLooksThatFindAnotherSize) {
    const auto holdStillUpTo = [this](DWORD size) {
        rooms.clear();
        return growFor(3000, L"the last", [size](DWORD room) { return std::max(room + 1, size); });
    };
    {
        const Replacement reading = holdStillUpTo(2500 * 4096);
        EXPECT_EQ(get(pathOf(L"value")), L"the last");
    }
    const Replacement reading = holdStillUpTo(1500 * 4096);
    EXPECT_EQ(get(pathOf(L"value")), L"");
    EXPECT_LT(rooms.size(), 3000U);
}

TEST_F(GrowingRegistryText, GivesUpAValueThatIsLargerAtEachLook) {
    for (const DWORD more : {1U, 5000U}) {
        rooms.clear();
        const Replacement reading = growFor(SIZE_MAX, L"", [more](DWORD room) { return room + more; });
        EXPECT_EQ(get(pathOf(L"value")), L"");
        EXPECT_EQ(rooms.size(), 1025U);
        EXPECT_EQ(rooms.back(), 8192U + 1024 * 4096);
    }
}

TEST_F(GrowingRegistryText, GivesUpAValueThatSaysItWouldHaveFitted) {
    const Replacement reading = growFor(SIZE_MAX, L"", [](DWORD) { return 100U; });
    EXPECT_EQ(get(pathOf(L"value")), L"");
    EXPECT_EQ(rooms.size(), 1025U);
}

TEST_F(GrowingRegistryText, FailsWithoutMemoryToGrow) {
    put(L"value", REG_SZ, bytesOf(std::wstring(5000, L't')));
    for (const std::size_t k : {1, 2, 3}) {
        const Replacement failing = system().failCall("malloc", k, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(get(pathOf(L"value")), L"") << k;
    }
}

TEST_F(GrowingRegistryText, FailsForWhatIsNotThere) {
    EXPECT_EQ(get(pathOf(L"missing")), L"");
    EXPECT_EQ(get(pathOf(L"missing\\missing")), L"");
    EXPECT_EQ(get(L"HKEY_CURRENT_USER"), L"");
    EXPECT_EQ(get(L""), L"");
    EXPECT_EQ(get(pathOf(L"") + std::wstring(1024 - pathOf(L"").size(), L'v')), L"");
}

}  // namespace

}  // namespace testbed
