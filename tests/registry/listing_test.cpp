// listRegistry on the registry itself.
#include <cstring>
#include <string>

#include "registry_fixture.h"

namespace testbed {

namespace {

using namespace std::string_literals;
using testing::Contains;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const std::wstring root = L"HKEY_CURRENT_USER";

class RegistryListing : public RegistryTest {
protected:
    void list() { list(root, keyPath()); }
    void list(const std::wstring& rootName, const std::wstring& path) {
        NATIVE(listRegistry)(collector.object(), rootName, path);
    }

    Collector collector{java};
};

// In which order a key has its values is the system's business.
TEST_F(RegistryListing, ReportsSubkeysFirstAndThenValuesByIndex) {
    put(L"one", REG_DWORD, "\x01\0\0\0"s);
    put(L"two", REG_DWORD, "\x01\0\0\0"s);
    put(L"three", REG_DWORD, "\x01\0\0\0"s);
    makeSubkey(L"second key");
    makeSubkey(L"a key");
    list();
    std::vector<Item> expected = {subkeyItem(L"a key"), subkeyItem(L"second key")};
    for (DWORD index = 0; index < 3; ++index) {
        wchar_t name[16];
        DWORD length = 16;
        ASSERT_EQ(RegEnumValueW(key(), index, name, &length, nullptr, nullptr, nullptr, nullptr),
                  ERROR_SUCCESS);
        expected.push_back(numberItem(name, L"1"));
    }
    EXPECT_EQ(collector.items(), expected);
}

TEST_F(RegistryListing, IsOneLevelDeep) {
    makeSubkey(L"above\\below");
    list();
    EXPECT_THAT(collector.items(), UnorderedElementsAre(subkeyItem(L"above")));
}

TEST_F(RegistryListing, HandsRootNameAndKeyPathOnAsTheyCame) {
    makeSubkey(L"subkey");
    put(L"text", REG_SZ, bytesOf(L"x"));
    put(L"number", REG_DWORD, "\0\0\0\0"s);
    put(L"bytes", REG_BINARY, "");
    put(L"list", REG_MULTI_SZ, "");
    std::wstring path = keyPath();
    path.replace(0, 8, L"sOFTWARE");
    list(root, path);
    EXPECT_EQ(collector.places(), (Places{{{root, path}, 5}}));
}

// No key of this system has a path of that length.
TEST_F(RegistryListing, HandsOnTheFirst16383CharactersOfAKeyPath) {
    makeSubkey(L"subkey");
    const Replacement opening = REPLACE(RegOpenKeyExA, [&](HKEY, LPCSTR path, auto... rest) -> LSTATUS {
        EXPECT_EQ(std::strlen(path), 20000U);
        return REAL(RegOpenKeyExA)(key(), "", rest...);
    });
    const std::wstring path(20000, L'k');
    list(root, path);
    EXPECT_EQ(collector.places(), (Places{{{root, path.substr(0, 16383)}, 1}}));
}

TEST_F(RegistryListing, ClosesTheKeyBeforeItGivesTheNamesBack) {
    const Replacement closing = REPLACE(RegCloseKey, [&](HKEY opened) -> LSTATUS {
        EXPECT_EQ(java.count("ReleaseStringUTFChars"), 0U);
        return REAL(RegCloseKey)(opened);
    });
    list();
    EXPECT_EQ(closing.count(), 1U);
    EXPECT_EQ(java.count("ReleaseStringUTFChars"), 2U);
}

TEST_F(RegistryListing, ListsTheRootItselfForAnEmptyPath) {
    list(root, L"");
    EXPECT_THAT(collector.items(), Contains(subkeyItem(L"Software")));
}

TEST_F(RegistryListing, KnowsFiveRoots) {
    const std::pair<std::wstring, std::uintptr_t> roots[] = {{L"HKEY_LOCAL_MACHINE", 0x80000002},
                                                             {L"HKEY_USERS", 0x80000003},
                                                             {L"HKEY_CURRENT_USER", 0x80000001},
                                                             {L"HKEY_CLASSES_ROOT", 0x80000000},
                                                             {L"HKEY_CURRENT_CONFIG", 0x80000005}};
    for (const auto& [name, predefined] : roots) {
        const Replacement opening = system().answer("RegOpenKeyExA", ERROR_ACCESS_DENIED);
        list(name, L"key");
        ASSERT_EQ(opening.count(), 1U);
        EXPECT_EQ(opening.calls()[0].argument<std::uint32_t>(0), predefined);
    }
    EXPECT_THAT(collector.items(), IsEmpty());
}

TEST_F(RegistryListing, OpensNothingForAnyOtherRoot) {
    for (const wchar_t* name : {L"hkey_current_user", L"HKEY_PERFORMANCE_DATA", L"HKCU", L"",
                                L"HKEY_CURRENT_USER ", L"HKEY_CURRENT_USERS", L"HKEY_CURRENT_USE"}) {
        list(name, keyPath());
        EXPECT_EQ(system().count("RegOpenKeyExA"), 0U) << toUtf8(name);
    }
    EXPECT_THAT(collector.items(), IsEmpty());
}

TEST_F(RegistryListing, GivesNothingForAKeyThatIsMissing) {
    list(root, keyPath() + L"\\missing");
    EXPECT_THAT(collector.items(), IsEmpty());
}

TEST_F(RegistryListing, LeavesVariablesInTextsUnexpanded) {
    put(L"folder", REG_EXPAND_SZ, bytesOf(L"%windir%\\x\0"s));
    list();
    EXPECT_THAT(collector.items(), UnorderedElementsAre(textItem(L"folder", L"%windir%\\x")));
}

TEST_F(RegistryListing, GivesNumbersWithoutASign) {
    put(L"largest", REG_DWORD, "\xff\xff\xff\xff");
    put(L"sign bit", REG_DWORD, "\0\0\0\x80"s);
    list();
    EXPECT_THAT(collector.items(), UnorderedElementsAre(numberItem(L"largest", L"4294967295"),
                                                        numberItem(L"sign bit", L"2147483648")));
}

TEST_F(RegistryListing, GivesResourceDescriptorsAsBytes) {
    put(L"descriptor", REG_FULL_RESOURCE_DESCRIPTOR, "\x01\x02\x03");
    put(L"empty", REG_BINARY, "");
    list();
    EXPECT_THAT(collector.items(),
                UnorderedElementsAre(bytesItem(L"descriptor", L"010203"), bytesItem(L"empty", L"")));
}

TEST_F(RegistryListing, HasNoCallForOtherTypes) {
    for (const DWORD type :
         {DWORD{REG_NONE}, DWORD{REG_DWORD_BIG_ENDIAN}, DWORD{REG_LINK}, DWORD{REG_RESOURCE_LIST},
          DWORD{REG_RESOURCE_REQUIREMENTS_LIST}, DWORD{REG_QWORD}, DWORD{12}, DWORD{77}, DWORD{0xFFFFFFFF}}) {
        put(L"type " + std::to_wstring(type), type, "12345678");
    }
    const Replacement reading = REPLACE(RegQueryValueExA, [](HKEY opened, LPCSTR name, LPDWORD reserved,
                                                             LPDWORD type, LPBYTE data, LPDWORD size) {
        EXPECT_EQ(*size, 8U);
        const LSTATUS status = REAL(RegQueryValueExA)(opened, name, reserved, type, data, size);
        EXPECT_EQ(status, ERROR_SUCCESS);
        return status;
    });
    list();
    EXPECT_THAT(collector.items(), IsEmpty());
    // Only the 64-bit number is read, into eight bytes, and dropped.
    EXPECT_EQ(reading.count(), 1U);
}

TEST_F(RegistryListing, EndsAListAtItsFirstEmptyString) {
    put(L"complete", REG_MULTI_SZ, bytesOf(L"a\0bc\0\0"s));
    put(L"inside", REG_MULTI_SZ, bytesOf(L"a\0\0b\0\0"s));
    put(L"ahead", REG_MULTI_SZ, bytesOf(L"\0a\0\0"s));
    list();
    EXPECT_THAT(collector.items(),
                UnorderedElementsAre(listItem(L"complete", L"[a][bc]"), listItem(L"inside", L"[a]"),
                                     listItem(L"ahead", L"")));
}

TEST_F(RegistryListing, DoesNotNeedTheZerosBehindTextsAndLists) {
    put(L"text", REG_SZ, bytesOf(L"unterminated"));
    put(L"empty text", REG_SZ, "");
    put(L"expand", REG_EXPAND_SZ, bytesOf(L"%x%"));
    put(L"one zero", REG_MULTI_SZ, bytesOf(L"a\0b\0"s));
    put(L"no zero", REG_MULTI_SZ, bytesOf(L"a\0b"s));
    put(L"empty list", REG_MULTI_SZ, "");
    list();
    EXPECT_THAT(collector.items(),
                UnorderedElementsAre(textItem(L"text", L"unterminated"), textItem(L"empty text", L""),
                                     textItem(L"expand", L"%x%"), listItem(L"one zero", L"[a][b]"),
                                     listItem(L"no zero", L"[a][b]"), listItem(L"empty list", L"")));
}

TEST_F(RegistryListing, EndsATextAtItsFirstZero) {
    put(L"text", REG_SZ, bytesOf(L"one\0two\0"s));
    list();
    EXPECT_THAT(collector.items(), UnorderedElementsAre(textItem(L"text", L"one")));
}

TEST_F(RegistryListing, GivesTheNamelessDefaultValueAnEmptyName) {
    put(L"", REG_SZ, bytesOf(L"default\0"s));
    list();
    EXPECT_THAT(collector.items(), UnorderedElementsAre(textItem(L"", L"default")));
}

TEST_F(RegistryListing, CutsNamesOfTextsAt255Characters) {
    const std::wstring name(300, L'n');
    put(name.substr(0, 254), REG_SZ, bytesOf(L"254"));
    put(name.substr(0, 256), REG_SZ, bytesOf(L"256"));
    list();
    EXPECT_THAT(collector.items(), UnorderedElementsAre(textItem(name.substr(0, 254), L"254"),
                                                        textItem(name.substr(0, 255), L"256")));
}

TEST_F(RegistryListing, LeavesTheNamesOfAllOtherTypesWhole) {
    const std::wstring name(16382, L'n');
    put(name.substr(0, 300), REG_EXPAND_SZ, bytesOf(L"x"));
    put(name.substr(0, 301), REG_DWORD, "\x07\0\0\0"s);
    put(name.substr(0, 302), REG_MULTI_SZ, bytesOf(L"x"));
    put(name, REG_BINARY, "\x08");
    list();
    EXPECT_THAT(
        collector.items(),
        UnorderedElementsAre(textItem(name.substr(0, 300), L"x"), numberItem(name.substr(0, 301), L"7"),
                             listItem(name.substr(0, 302), L"[x]"), bytesItem(name, L"08")));
}

TEST_F(RegistryListing, PassesOverAValueWhoseNameDoesNotFit) {
    put(std::wstring(16383, L'n'), REG_BINARY, "\x08");
    put(L"next", REG_BINARY, "\x09");
    list();
    EXPECT_THAT(collector.items(), UnorderedElementsAre(bytesItem(L"next", L"09")));
}

TEST_F(RegistryListing, PassesOverASubkeyWhoseNameDoesNotFit) {
    makeSubkey(std::wstring(254, L'k'));
    makeSubkey(std::wstring(255, L'l'));
    makeSubkey(L"m");
    list();
    EXPECT_THAT(collector.items(),
                UnorderedElementsAre(subkeyItem(std::wstring(254, L'k')), subkeyItem(L"m")));
}

TEST_F(RegistryListing, CutsTextsAt16383Characters) {
    const std::wstring text(20000, L't');
    put(L"fits", REG_SZ, bytesOf(text.substr(0, 16382)));
    put(L"long", REG_EXPAND_SZ, bytesOf(text));
    put(L"list", REG_MULTI_SZ, bytesOf(text + L'\0' + L"b" + L'\0'));
    list();
    const std::wstring cut = text.substr(0, 16383);
    EXPECT_THAT(collector.items(),
                UnorderedElementsAre(textItem(L"fits", text.substr(0, 16382)), textItem(L"long", cut),
                                     listItem(L"list", L"[" + cut + L"][b]")));
}

TEST_F(RegistryListing, GivesLargeDataWhole) {
    put(L"bytes", REG_BINARY, std::string(100000, '\x5a'));
    list();
    const std::wstring bytes = collector.find(L"bytes").value;
    EXPECT_EQ(bytes.size(), 200000U);
    EXPECT_EQ(bytes.find_first_not_of(L"5a"), std::wstring::npos);
}

TEST_F(RegistryListing, TakesTextsThroughTheAnsiCodePage) {
    put(L"\u00e9t\u00e9", REG_SZ, bytesOf(L"\u00fc \u4e2d"));
    list();
    EXPECT_THAT(collector.items(), UnorderedElementsAre(textItem(L"\u00e9t\u00e9", L"\u00fc ?")));
}

// The path's bytes are UTF-8 and go to calls that take them for the ANSI code page.
TEST_F(RegistryListing, FindsOnlyAsciiPathsFaithfully) {
    makeSubkey(L"\u00e9\\as it is");
    makeSubkey(L"\u00c3\u00a9\\as it is read");
    list(root, keyPath() + L"\\\u00e9");
    EXPECT_THAT(collector.items(), UnorderedElementsAre(subkeyItem(L"as it is read")));
    EXPECT_EQ(collector.places(), (Places{{{root, keyPath() + L"\\\u00c3\u00a9"}, 1}}));
}

TEST_F(RegistryListing, ReadsNumbersThatAreTooShortAsFarAsTheyGo) {
    put(L"one byte", REG_DWORD, "\x81");
    put(L"no byte", REG_DWORD, "");
    put(L"three bytes", REG_DWORD, "\x01\x02\x03");
    list();
    EXPECT_THAT(collector.items(),
                UnorderedElementsAre(numberItem(L"one byte", L"129"), numberItem(L"no byte", L"0"),
                                     numberItem(L"three bytes", L"197121")));
}

TEST_F(RegistryListing, PassesOverANumberThatIsTooLong) {
    put(L"five bytes", REG_DWORD, "12345");
    put(L"next", REG_DWORD, "\x01\0\0\0"s);
    list();
    EXPECT_THAT(collector.items(), UnorderedElementsAre(numberItem(L"next", L"1")));
}

TEST_F(RegistryListing, SurvivesTextsOfOddLength) {
    put(L"text", REG_SZ, bytesOf(L"ab") + "c");
    put(L"list", REG_MULTI_SZ, bytesOf(L"a\0b"s) + "c");
    put(L"byte", REG_SZ, "x");
    list();
    ASSERT_EQ(collector.items().size(), 3U);
    EXPECT_EQ(collector.find(L"text").value.substr(0, 2), L"ab");
    EXPECT_EQ(collector.find(L"list").value.substr(0, 5), L"[a][b");
}

TEST_F(RegistryListing, KeepsTheNumberOfReferencesFlat) {
    for (int i = 0; i < 300; ++i) {
        put(L"list " + std::to_wstring(i), REG_MULTI_SZ, bytesOf(L"a\0b\0c\0\0"s));
    }
    put(L"long list", REG_MULTI_SZ, bytesOf([] {
            std::wstring strings;
            for (int i = 0; i < 5000; ++i) {
                strings += L"s\0"s;
            }
            return strings;
        }()));
    list();
    EXPECT_EQ(collector.items().size(), 301U);
    EXPECT_LE(java.peakReferences(), 6U);
}

TEST_F(RegistryListing, OpensTheKeyForReading) {
    const Replacement opening = system().watch("RegOpenKeyExA");
    list();
    ASSERT_EQ(opening.count(), 1U);
    EXPECT_EQ(opening.calls()[0].argument<std::uint32_t>(2), 0U);
    EXPECT_EQ(opening.calls()[0].argument<std::uint32_t>(3), 0x20019U);
}

TEST_F(RegistryListing, OpensThe64BitViewFromA32BitProcess) {
    const Replacement wow64 = REPLACE(IsWow64Process, [](HANDLE process, PBOOL answer) {
        EXPECT_EQ(process, GetCurrentProcess());
        *answer = TRUE;
        return TRUE;
    });
    const Replacement opening = system().watch("RegOpenKeyExA");
    list();
    EXPECT_EQ(opening.calls().at(0).argument<std::uint32_t>(3), 0x20119U);
}

TEST_F(RegistryListing, OpensTheProcessViewWhenItCannotTell) {
    const Replacement wow64 = REPLACE(IsWow64Process, [](HANDLE, PBOOL answer) {
        *answer = TRUE;
        return FALSE;
    });
    const Replacement opening = system().watch("RegOpenKeyExA");
    list();
    EXPECT_EQ(opening.calls().at(0).argument<std::uint32_t>(3), 0x20019U);
}

}  // namespace

}  // namespace testbed
