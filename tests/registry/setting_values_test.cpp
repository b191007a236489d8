// Writing single values, and making keys.
#include <optional>
#include <string>

#include "registry_fixture.h"

namespace testbed {

namespace {

using namespace std::string_literals;
using testing::IsEmpty;

using Writer = bool(const std::wstring& path);

class SettingRegistryValues : public RegistryTest {
protected:
    bool setDword(const std::wstring& path, jlong value = 1) { return NATIVE(setRegistryDWORD)(path, value); }
    bool setDwordW(const std::wstring& path, jlong value = 1) {
        return NATIVE(setRegistryDWORDW)(path, value);
    }
    bool setString(const std::wstring& path, std::wstring_view text = L"x") {
        return NATIVE(setRegistryString)(path, java.string(text));
    }
    bool setStringW(const std::wstring& path, std::wstring_view text = L"x") {
        return NATIVE(setRegistryStringW)(path, java.string(text));
    }
    bool setMultiString(const std::wstring& path, std::wstring_view text = L"x") {
        return NATIVE(setRegistryMultiString)(path, java.string(text));
    }
    bool setBinary(const std::wstring& path) {
        return NATIVE(setRegistryBinary)(path, java.byteArray({1}), 0, 1);
    }

    // The setters by name, each with some value of its type.
    const std::vector<std::pair<std::string, std::function<Writer>>> narrow = {
        {"setRegistryDWORD", [this](const std::wstring& path) { return setDword(path); }},
        {"setRegistryString", [this](const std::wstring& path) { return setString(path); }},
        {"setRegistryMultiString", [this](const std::wstring& path) { return setMultiString(path); }},
        {"setRegistryBinary", [this](const std::wstring& path) { return setBinary(path); }}};
    const std::vector<std::pair<std::string, std::function<Writer>>> wide = {
        {"setRegistryDWORDW", [this](const std::wstring& path) { return setDwordW(path); }},
        {"setRegistryStringW", [this](const std::wstring& path) { return setStringW(path); }}};
    const std::vector<std::pair<std::string, std::function<Writer>>> all = [this] {
        auto both = narrow;
        both.insert(both.end(), wide.begin(), wide.end());
        return both;
    }();

    // What a replaced RegSetValueEx was given.
    std::optional<StoredValue> seen;
    Replacement recordNarrow() {
        return REPLACE(RegSetValueExA, [&](HKEY, LPCSTR, DWORD, DWORD type, const BYTE* data, DWORD size) {
            seen = StoredValue{type, {reinterpret_cast<const char*>(data), size}};
            return LSTATUS{ERROR_SUCCESS};
        });
    }
    Replacement recordWide() {
        return REPLACE(RegSetValueExW, [&](HKEY, LPCWSTR, DWORD, DWORD type, const BYTE* data, DWORD size) {
            seen = StoredValue{type, {reinterpret_cast<const char*>(data), size}};
            return LSTATUS{ERROR_SUCCESS};
        });
    }
};

TEST_F(SettingRegistryValues, StoresTheLow32BitsOfANumber) {
    EXPECT_TRUE(setDword(pathOf(L"narrow"), 0x1'2345'6789));
    EXPECT_TRUE(setDwordW(pathOf(L"wide"), -1));
    EXPECT_EQ(stored(L"narrow"), (StoredValue{REG_DWORD, "\x89\x67\x45\x23"}));
    EXPECT_EQ(stored(L"wide"), (StoredValue{REG_DWORD, "\xff\xff\xff\xff"}));
}

TEST_F(SettingRegistryValues, StoresTexts) {
    EXPECT_TRUE(setString(pathOf(L"narrow"), L"some text"));
    EXPECT_TRUE(setStringW(pathOf(L"wide"), L"\u20ac \u4e2d \U0001F600"));
    // This system completes a text that has no zero.
    EXPECT_EQ(stored(L"narrow"), (StoredValue{REG_SZ, bytesOf(L"some text\0"s)}));
    EXPECT_EQ(stored(L"wide"), (StoredValue{REG_SZ, bytesOf(L"\u20ac \u4e2d \U0001F600\0"s)}));
}

TEST_F(SettingRegistryValues, CountsATextWithoutItsZero) {
    const Replacement recording = recordNarrow();
    EXPECT_TRUE(setString(pathOf(L"value"), L"abc"));
    EXPECT_EQ(seen, (StoredValue{REG_SZ, "abc"}));
    EXPECT_TRUE(setString(pathOf(L"value"), L""));
    EXPECT_EQ(seen, (StoredValue{REG_SZ, ""}));
}

TEST_F(SettingRegistryValues, CountsAWideTextWithoutItsZero) {
    const Replacement recording = recordWide();
    EXPECT_TRUE(setStringW(pathOf(L"value"), L"abc"));
    EXPECT_EQ(seen, (StoredValue{REG_SZ, bytesOf(L"abc")}));
    EXPECT_TRUE(setStringW(pathOf(L"value"), L""));
    EXPECT_EQ(seen, (StoredValue{REG_SZ, ""}));
    EXPECT_TRUE(setStringW(pathOf(L"value"), L"a\0b"s));
    EXPECT_EQ(seen, (StoredValue{REG_SZ, bytesOf(L"a\0b"s)}));
}

TEST_F(SettingRegistryValues, PassesNarrowTextsOnAsModifiedUtf8) {
    const Replacement recording = recordNarrow();
    EXPECT_TRUE(setString(pathOf(L"value"), L"\u00e9"));
    EXPECT_EQ(seen, (StoredValue{REG_SZ, "\xc3\xa9"}));
    EXPECT_TRUE(setMultiString(pathOf(L"value"), L"a\0b\0"s));
    EXPECT_EQ(seen, (StoredValue{REG_MULTI_SZ,
                                 "a\xc0\x80"
                                 "b\xc0\x80"}));
}

TEST_F(SettingRegistryValues, StoresAListAsOneString) {
    EXPECT_TRUE(setMultiString(pathOf(L"list"), L"one string"));
    const std::optional<StoredValue> list = stored(L"list");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->type, DWORD{REG_MULTI_SZ});
    EXPECT_EQ(list->data.substr(0, 20), bytesOf(L"one string"));
}

TEST_F(SettingRegistryValues, StoresAPartOfAByteArray) {
    const JavaObject data = java.byteArray({1, 2, 3, 0, -1, 6});
    EXPECT_TRUE(NATIVE(setRegistryBinary)(pathOf(L"whole"), data, 0, 6));
    EXPECT_TRUE(NATIVE(setRegistryBinary)(pathOf(L"part"), data, 2, 3));
    EXPECT_TRUE(NATIVE(setRegistryBinary)(pathOf(L"nothing"), data, 6, 0));
    EXPECT_EQ(stored(L"whole"), (StoredValue{REG_BINARY, "\x01\x02\x03\x00\xff\x06"s}));
    EXPECT_EQ(stored(L"part"), (StoredValue{REG_BINARY, "\x03\x00\xff"s}));
    EXPECT_EQ(stored(L"nothing"), (StoredValue{REG_BINARY, ""}));
}

TEST_F(SettingRegistryValues, ReleasesAByteArrayWithMode0) {
    EXPECT_TRUE(setBinary(pathOf(L"value")));
    EXPECT_FALSE(setBinary(L"no such root\\value"));
    ASSERT_EQ(java.arrayReleases().size(), 2U);
    EXPECT_EQ(java.arrayReleases()[0].mode, 0);
    EXPECT_EQ(java.arrayReleases()[1].mode, 0);
}

TEST_F(SettingRegistryValues, FailsForANegativeLength) {
    EXPECT_FALSE(NATIVE(setRegistryBinary)(pathOf(L"value"), java.byteArray({1}), 0, -1));
    EXPECT_EQ(system().count("RegSetValueExA"), 0U);
    EXPECT_EQ(stored(L"value"), std::nullopt);
}

TEST_F(SettingRegistryValues, ReplacesAValueOfAnotherType) {
    put(L"value", REG_BINARY, "12345678");
    EXPECT_TRUE(setDword(pathOf(L"value"), 7));
    EXPECT_EQ(stored(L"value"), (StoredValue{REG_DWORD, "\x07\0\0\0"s}));
}

TEST_F(SettingRegistryValues, WritesTheNamelessDefaultValue) {
    EXPECT_TRUE(setDword(pathOf(L""), 7));
    EXPECT_EQ(stored(L""), (StoredValue{REG_DWORD, "\x07\0\0\0"s}));
}

TEST_F(SettingRegistryValues, StoresValuesOfAnySize) {
    const std::wstring text(100000, L't');
    EXPECT_TRUE(setStringW(pathOf(L"wide"), text));
    EXPECT_TRUE(setString(pathOf(L"narrow"), text.substr(0, 5000)));
    EXPECT_TRUE(
        NATIVE(setRegistryBinary)(pathOf(L"bytes"), java.byteArray(std::vector<jbyte>(3000, 4)), 0, 3000));
    EXPECT_EQ(stored(L"narrow")->data.size(), 5001U * 2);
    EXPECT_EQ(stored(L"bytes")->data, std::string(3000, '\x04'));
}

TEST_F(SettingRegistryValues, MakesKeysOfTheClassLocalSystem) {
    for (const auto& [name, write] : all) {
        const std::wstring subkey = toWide(name) + L"\\below";
        EXPECT_TRUE(write(pathOf(subkey + L"\\value"))) << name;
        EXPECT_TRUE(storedBelow(subkey, L"value")) << name;
        EXPECT_EQ(classOf(subkey), L"LocalSystem") << name;
    }
}

TEST_F(SettingRegistryValues, MakesTheKeyThenOpensItForWriting) {
    const Replacement making = system().watch("RegCreateKeyExA");
    const Replacement opening = system().watch("RegOpenKeyExA");
    EXPECT_TRUE(setDword(pathOf(L"value")));
    ASSERT_EQ(making.count(), 1U);
    const RecordedCall made = making.calls()[0];
    EXPECT_EQ(made.argument<std::uint32_t>(0), 0x80000001U);
    EXPECT_EQ(made.argument<std::uint32_t>(2), 0U);
    EXPECT_EQ(made.argument<std::uint32_t>(4), 0U);        // not volatile
    EXPECT_EQ(made.argument<std::uint32_t>(5), 0xF003FU);  // all access
    EXPECT_EQ(made.argument<void*>(6), nullptr);
    ASSERT_EQ(opening.count(), 1U);
    EXPECT_EQ(opening.calls()[0].argument<std::uint32_t>(3), 0x20006U);
}

TEST_F(SettingRegistryValues, ClosesTheKeyBeforeItOpensItAgain) {
    const Replacement closing = system().watch("RegCloseKey");
    const Replacement narrowOpening = REPLACE(RegOpenKeyExA, [&](auto... arguments) -> LSTATUS {
        EXPECT_EQ(closing.count(), 1U);
        return REAL(RegOpenKeyExA)(arguments...);
    });
    EXPECT_TRUE(setDword(pathOf(L"narrow")));
    EXPECT_EQ(closing.count(), 2U);
    const Replacement wideOpening = REPLACE(RegOpenKeyExW, [&](auto... arguments) -> LSTATUS {
        EXPECT_EQ(closing.count(), 3U);
        return REAL(RegOpenKeyExW)(arguments...);
    });
    EXPECT_TRUE(setDwordW(pathOf(L"wide")));
    EXPECT_EQ(closing.count(), 4U);
}

TEST_F(SettingRegistryValues, MakesAndOpensWideKeysAlike) {
    const Replacement making = system().watch("RegCreateKeyExW");
    const Replacement opening = system().watch("RegOpenKeyExW");
    EXPECT_TRUE(setStringW(pathOf(L"value")));
    ASSERT_EQ(making.count(), 1U);
    EXPECT_EQ(making.calls()[0].argument<std::uint32_t>(4), 0U);
    EXPECT_EQ(making.calls()[0].argument<std::uint32_t>(5), 0xF003FU);
    EXPECT_EQ(making.calls()[0].argument<void*>(6), nullptr);
    ASSERT_EQ(opening.count(), 1U);
    EXPECT_EQ(opening.calls()[0].argument<std::uint32_t>(3), 0x20006U);
}

TEST_F(SettingRegistryValues, WritesWithoutTheOtherViewFromA32BitProcess) {
    const Replacement wow64 = REPLACE(IsWow64Process, [](HANDLE, PBOOL answer) {
        *answer = TRUE;
        return TRUE;
    });
    const Replacement narrowOpening = system().watch("RegOpenKeyExA");
    const Replacement wideOpening = system().watch("RegOpenKeyExW");
    EXPECT_TRUE(setDword(pathOf(L"value")));
    EXPECT_TRUE(setDwordW(pathOf(L"value")));
    EXPECT_EQ(narrowOpening.calls().at(0).argument<std::uint32_t>(3), 0x20006U);
    EXPECT_EQ(wideOpening.calls().at(0).argument<std::uint32_t>(3), 0x20006U);
}

TEST_F(SettingRegistryValues, NarrowFamilyComparesRootsExactly) {
    for (const auto& [name, write] : narrow) {
        EXPECT_FALSE(write(L"hkey_current_user\\" + keyPath() + L"\\value")) << name;
    }
    EXPECT_EQ(stored(L"value"), std::nullopt);
}

TEST_F(SettingRegistryValues, WideFamilyComparesRootsWithoutCase) {
    for (const auto& [name, write] : wide) {
        EXPECT_TRUE(write(L"hkey_Current_USER\\" + keyPath() + L"\\" + toWide(name))) << name;
        EXPECT_TRUE(stored(toWide(name))) << name;
    }
}

TEST_F(SettingRegistryValues, WideFamilyTakesAnyCharacters) {
    EXPECT_TRUE(setDwordW(pathOf(L"\u4e2d\\\U0001F600")));
    EXPECT_TRUE(storedBelow(L"\u4e2d", L"\U0001F600"));
}

TEST_F(SettingRegistryValues, FailsForPathsThatAreNone) {
    const std::wstring tooLong = pathOf(L"") + std::wstring(1024 - pathOf(L"").size(), L'v');
    for (const auto& [name, write] : all) {
        EXPECT_FALSE(write(L"HKEY_CURRENT_USER")) << name;
        EXPECT_FALSE(write(L"")) << name;
        EXPECT_FALSE(write(L"HKCU\\" + keyPath() + L"\\value")) << name;
        EXPECT_FALSE(write(L"HKEY_PERFORMANCE_DATA\\value")) << name;
        EXPECT_FALSE(write(L"\\HKEY_CURRENT_USER\\" + keyPath() + L"\\value")) << name;
        EXPECT_FALSE(write(tooLong)) << name;
    }
    EXPECT_EQ(system().count("RegCreateKeyExA") + system().count("RegCreateKeyExW"), 0U);
}

TEST_F(SettingRegistryValues, FailsForNull) {
    EXPECT_FALSE(NATIVE(setRegistryDWORD)(nullptr, 1));
    EXPECT_FALSE(NATIVE(setRegistryString)(nullptr, L"x"));
    EXPECT_FALSE(NATIVE(setRegistryString)(pathOf(L"value"), nullptr));
    EXPECT_FALSE(NATIVE(setRegistryMultiString)(nullptr, L"x"));
    EXPECT_FALSE(NATIVE(setRegistryMultiString)(pathOf(L"value"), nullptr));
    EXPECT_FALSE(NATIVE(setRegistryBinary)(nullptr, java.byteArray({1}), 0, 1));
    EXPECT_EQ(system().count("RegCreateKeyExA"), 0U);
    EXPECT_FALSE(java.isPending());
}

TEST_F(SettingRegistryValues, WritesIntoTheRootItself) {
    const std::vector<Replacement> standing = takeThePlaceOfTheRoot();
    for (const auto& [name, write] : all) {
        EXPECT_TRUE(write(L"HKEY_CURRENT_USER\\" + toWide(name))) << name;
        EXPECT_TRUE(stored(toWide(name))) << name;
    }
}

TEST_F(SettingRegistryValues, TakesPathsOf1023Characters) {
    const std::wstring name(1023 - pathOf(L"").size(), L'v');
    for (const auto& [setter, write] : all) {
        EXPECT_TRUE(write(pathOf(name))) << setter;
        EXPECT_TRUE(stored(name)) << setter;
        RegDeleteValueW(key(), name.c_str());
    }
}

TEST_F(SettingRegistryValues, FailsWhereAStepFails) {
    for (const auto& [name, write] : all) {
        for (const char* step : {"RegCreateKeyEx", "RegOpenKeyEx", "RegSetValueEx"}) {
            const std::string function = step + (name.back() == 'W' ? "W"s : "A"s);
            const Replacement failing = system().answer(function, ERROR_ACCESS_DENIED);
            EXPECT_FALSE(write(pathOf(L"value"))) << name << ' ' << step;
            EXPECT_EQ(failing.count(), 1U) << name << ' ' << step;
        }
    }
    EXPECT_EQ(stored(L"value"), std::nullopt);
}

TEST_F(SettingRegistryValues, FailsWhereTheJvmHasNoMemory) {
    for (const auto& [name, write] : all) {
        for (const char* function : {"GetStringUTFChars", "GetStringChars", "GetByteArrayElements"}) {
            const std::size_t before = java.count(function);
            EXPECT_TRUE(write(pathOf(L"value")));
            const std::size_t calls = java.count(function) - before;
            for (std::size_t k = 1; k <= calls; ++k) {
                java.failCall(function, k);
                EXPECT_FALSE(write(pathOf(L"value"))) << name << ' ' << function;
                EXPECT_FALSE(java.isPending()) << name << ' ' << function;
            }
        }
    }
}

class MakingRegistryKeys : public RegistryTest {};

TEST_F(MakingRegistryKeys, MakesAKeyOfTheClassLocalSystemAndThoseAbove) {
    EXPECT_TRUE(NATIVE(makeNewRegistryKey)(L"HKEY_CURRENT_USER", keyPath() + L"\\one\\two"));
    EXPECT_EQ(classOf(L"one\\two"), L"LocalSystem");
}

TEST_F(MakingRegistryKeys, TakesAKeyThatIsThere) {
    makeSubkey(L"one");
    EXPECT_TRUE(NATIVE(makeNewRegistryKey)(L"HKEY_CURRENT_USER", keyPath() + L"\\one"));
}

TEST_F(MakingRegistryKeys, ComparesRootsWithoutCase) {
    EXPECT_TRUE(NATIVE(makeNewRegistryKey)(L"Hkey_Current_User", keyPath() + L"\\one"));
    EXPECT_TRUE(hasSubkey(L"one"));
}

TEST_F(MakingRegistryKeys, TakesPathsOfAnyLengthAndCharacters) {
    std::wstring path = L"\u4e2d";
    for (int i = 0; i < 10; ++i) {
        path += L"\\" + std::wstring(200, L'k');
    }
    EXPECT_TRUE(NATIVE(makeNewRegistryKey)(L"HKEY_CURRENT_USER", keyPath() + L"\\" + path));
    EXPECT_TRUE(hasSubkey(path));
}

TEST_F(MakingRegistryKeys, FailsForAnUnknownRoot) {
    EXPECT_FALSE(NATIVE(makeNewRegistryKey)(L"HKCU", keyPath() + L"\\one"));
    EXPECT_FALSE(NATIVE(makeNewRegistryKey)(L"", keyPath() + L"\\one"));
    EXPECT_EQ(system().count("RegCreateKeyExW"), 0U);
}

TEST_F(MakingRegistryKeys, FailsWhereTheSystemRefuses) {
    const Replacement failing = system().answer("RegCreateKeyExW", ERROR_ACCESS_DENIED);
    EXPECT_FALSE(NATIVE(makeNewRegistryKey)(L"HKEY_CURRENT_USER", keyPath() + L"\\one"));
}

}  // namespace

}  // namespace testbed
