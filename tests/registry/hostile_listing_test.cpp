// listRegistry with data that lies about itself, in blocks that end at a guard page: one byte too far faults.
#include <algorithm>
#include <cstring>
#include <string>

#include "registry_fixture.h"

namespace testbed {

namespace {

using testing::UnorderedElementsAre;

class HostileListing : public RegistryTest {
protected:
    // Lists the test's key, where one value pretends to be of that type and size and to consist of that byte.
    Item listValue(DWORD type, DWORD size, char content) {
        put(L"value", REG_BINARY, "x");
        const Replacement enumeration =
            REPLACE(RegEnumValueA, [&](HKEY, DWORD, LPSTR name, LPDWORD length, LPDWORD, LPDWORD valueType,
                                       LPBYTE, LPDWORD valueSize) {
                std::strcpy(name, "value");
                *length = 5;
                *valueType = type;
                *valueSize = size;
                return LSTATUS{ERROR_SUCCESS};
            });
        const Replacement reading =
            REPLACE(RegQueryValueExA, [&](HKEY, LPCSTR, LPDWORD, LPDWORD, LPBYTE data, LPDWORD room) {
                std::memset(data, content, *room);
                *room += claimedMore;
                return LSTATUS{ERROR_SUCCESS};
            });
        const GuardedHeap heap(system());
        Collector collector(java);
        NATIVE(listRegistry)(collector.object(), L"HKEY_CURRENT_USER", keyPath());
        EXPECT_EQ(collector.items().size(), 1U);
        return collector.find(L"value");
    }

    // By how much the read claims to have given more than there was room for.
    DWORD claimedMore = 0;
};

constexpr DWORD sizes[] = {0, 1, 2, 3, 4, 5, 255, 4095, 4096, 4097, 16382};

TEST_F(HostileListing, KeepsATextWithoutAZeroInItsBlock) {
    for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_EXPAND_SZ}}) {
        for (const DWORD size : sizes) {
            EXPECT_EQ(listValue(type, size, 'x'), textItem(L"value", std::wstring(size, L'x')));
        }
    }
}

TEST_F(HostileListing, KeepsAListWithoutAZeroInItsBlock) {
    for (const DWORD size : sizes) {
        const std::wstring strings = size == 0 ? L"" : L"[" + std::wstring(size, L'x') + L"]";
        EXPECT_EQ(listValue(REG_MULTI_SZ, size, 'x'), listItem(L"value", strings));
    }
}

TEST_F(HostileListing, KeepsAListOfZerosInItsBlock) {
    for (const DWORD size : sizes) {
        EXPECT_EQ(listValue(REG_MULTI_SZ, size, '\0'), listItem(L"value", L""));
    }
}

TEST_F(HostileListing, CopiesBytesNoFurtherThanTheirBlock) {
    for (const DWORD size : sizes) {
        EXPECT_EQ(listValue(REG_BINARY, size, '\x11'), bytesItem(L"value", std::wstring(2 * size, L'1')));
    }
}

TEST_F(HostileListing, DoesNotBelieveAReadThatClaimsMoreThanItsRoom) {
    claimedMore = 100000;
    EXPECT_EQ(listValue(REG_SZ, 3, 'x'), textItem(L"value", L"xxx"));
    EXPECT_EQ(listValue(REG_MULTI_SZ, 3, 'x'), listItem(L"value", L"[xxx]"));
    EXPECT_EQ(listValue(REG_BINARY, 3, '\x22'), bytesItem(L"value", L"222222"));
    EXPECT_EQ(listValue(REG_DWORD, 3, '\x01'), numberItem(L"value", L"16843009"));
}

TEST_F(HostileListing, ReadsANumberIntoFourBytesWhateverSizeItClaims) {
    for (const DWORD size : {0U, 1U, 8U, 0xFFFFFFFFU}) {
        EXPECT_EQ(listValue(REG_DWORD, size, '\x01'), numberItem(L"value", L"16843009"));
    }
}

TEST_F(HostileListing, PassesOverAValueThatIsLargerThanAJavaArray) {
    put(L"value", REG_BINARY, "x");
    const Replacement enumeration = REPLACE(
        RegEnumValueA, [](HKEY, DWORD, LPSTR name, LPDWORD, LPDWORD, LPDWORD type, LPBYTE, LPDWORD size) {
            std::strcpy(name, "value");
            *type = REG_BINARY;
            *size = 0x80000000;
            return LSTATUS{ERROR_SUCCESS};
        });
    const Replacement reading = system().watch("RegQueryValueExA");
    Collector collector(java);
    NATIVE(listRegistry)(collector.object(), L"HKEY_CURRENT_USER", keyPath());
    EXPECT_TRUE(collector.items().empty());
    EXPECT_EQ(reading.count(), 0U);
}

// The name of a value that could not be enumerated may come without an end, and the class behind it, too.
TEST_F(HostileListing, KeepsANameWithoutAZeroInItsBuffer) {
    put(L"value", REG_BINARY, "x");
    const Replacement counts =
        REPLACE(RegQueryInfoKeyA, [&](HKEY key, LPSTR text, LPDWORD length, auto... rest) {
            const DWORD room = *length;
            const LSTATUS status = REAL(RegQueryInfoKeyA)(key, text, length, rest...);
            std::memset(text, 'c', room);
            return status;
        });
    const Replacement enumeration = REPLACE(RegEnumValueA, [](HKEY, DWORD, LPSTR name, LPDWORD length,
                                                              LPDWORD, LPDWORD type, LPBYTE, LPDWORD size) {
        std::memset(name, 'n', *length);
        *type = REG_BINARY;
        *size = 1;
        return LSTATUS{ERROR_MORE_DATA};
    });
    std::size_t nameLength = 0;
    const Replacement reading =
        REPLACE(RegQueryValueExA, [&](HKEY, LPCSTR name, LPDWORD, LPDWORD, LPBYTE, LPDWORD) {
            nameLength = std::strlen(name);
            return LSTATUS{ERROR_FILE_NOT_FOUND};
        });
    const GuardedHeap heap(system());
    Collector collector(java);
    NATIVE(listRegistry)(collector.object(), L"HKEY_CURRENT_USER", keyPath());
    EXPECT_EQ(nameLength, 16382U);
    EXPECT_TRUE(collector.items().empty());
}

// The real thing, once with every type that has a call, and data that ends too early.
TEST_F(HostileListing, ReadsTheRegistryItselfWithinItsBlocks) {
    put(L"number", REG_DWORD, "\x05");
    put(L"text", REG_SZ, bytesOf(L"abc"));
    put(L"list", REG_MULTI_SZ, bytesOf(L"abc"));
    put(L"bytes", REG_BINARY, "");
    makeSubkey(L"subkey");
    const GuardedHeap heap(system());
    Collector collector(java);
    NATIVE(listRegistry)(collector.object(), L"HKEY_CURRENT_USER", keyPath());
    EXPECT_THAT(
        collector.items(),
        UnorderedElementsAre(subkeyItem(L"subkey"), numberItem(L"number", L"5"), textItem(L"text", L"abc"),
                             listItem(L"list", L"[abc]"), bytesItem(L"bytes", L"")));
}

}  // namespace

}  // namespace testbed
