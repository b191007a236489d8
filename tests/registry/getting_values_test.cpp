// Reading single values.
#include <algorithm>
#include <cstring>
#include <string>

#include "registry_fixture.h"

namespace testbed {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class GettingRegistryValues : public RegistryTest {
protected:
    jlong dword(const std::wstring& path) { return NATIVE(getRegistryDWORD)(path); }
    std::wstring text(const std::wstring& path) { return NATIVE(getRegistryString)(path).text(); }
    std::vector<jbyte> bytes(const std::wstring& path) { return NATIVE(getRegistryBinary)(path).bytes(); }
    std::wstring textOf(const std::wstring& keyName, const std::wstring& valueName) {
        return NATIVE(getRegistryValueString)(keyName, valueName).text();
    }
    std::wstring keyName() const { return L"HKEY_CURRENT_USER\\" + keyPath(); }
};

TEST_F(GettingRegistryValues, GivesNumbersWithoutASign) {
    put(L"largest", REG_DWORD, "\xff\xff\xff\xff");
    put(L"zero", REG_DWORD, "\0\0\0\0"s);
    EXPECT_EQ(dword(pathOf(L"largest")), 4294967295);
    EXPECT_EQ(dword(pathOf(L"zero")), 0);
}

TEST_F(GettingRegistryValues, GivesMinus1ForWhatIsNoNumber) {
    put(L"text", REG_SZ, bytesOf(L"1\0"s));
    put(L"bytes", REG_BINARY, "1234");
    put(L"big endian", REG_DWORD_BIG_ENDIAN, "1234");
    put(L"64 bits", REG_QWORD, "12345678");
    put(L"too long", REG_DWORD, "12345");
    for (const wchar_t* name : {L"text", L"bytes", L"big endian", L"64 bits", L"too long", L"missing"}) {
        EXPECT_EQ(dword(pathOf(name)), -1) << toUtf8(name);
    }
}

TEST_F(GettingRegistryValues, ReadsANumberThatIsTooShortAsFarAsItGoes) {
    put(L"one byte", REG_DWORD, "\x81");
    put(L"no byte", REG_DWORD, "");
    // What an earlier call leaves behind on the stack is no part of it.
    put(L"all bits", REG_DWORD, "\xff\xff\xff\xff");
    EXPECT_EQ(dword(pathOf(L"all bits")), 4294967295);
    EXPECT_EQ(dword(pathOf(L"one byte")), 129);
    EXPECT_EQ(dword(pathOf(L"no byte")), 0);
}

TEST_F(GettingRegistryValues, GivesTextsUnexpanded) {
    put(L"text", REG_SZ, bytesOf(L"\u20ac \u4e2d\0"s));
    put(L"expand", REG_EXPAND_SZ, bytesOf(L"%windir%\0"s));
    EXPECT_EQ(text(pathOf(L"text")), L"\u20ac \u4e2d");
    EXPECT_EQ(text(pathOf(L"expand")), L"%windir%");
    EXPECT_EQ(textOf(keyName(), L"text"), L"\u20ac \u4e2d");
    EXPECT_EQ(textOf(keyName(), L"expand"), L"%windir%");
}

TEST_F(GettingRegistryValues, EndsATextAtItsFirstZeroOrWithItsData) {
    put(L"zero", REG_SZ, bytesOf(L"one\0two\0"s));
    put(L"no zero", REG_SZ, bytesOf(L"text"));
    put(L"empty", REG_SZ, "");
    put(L"odd", REG_SZ, bytesOf(L"ab") + "c");
    EXPECT_EQ(text(pathOf(L"zero")), L"one");
    EXPECT_EQ(text(pathOf(L"no zero")), L"text");
    EXPECT_EQ(text(pathOf(L"empty")), L"");
    EXPECT_EQ(text(pathOf(L"odd")), L"abc");
}

TEST_F(GettingRegistryValues, GivesTextsOfUpTo1024Bytes) {
    const std::wstring long512(512, L't');
    put(L"complete", REG_SZ, bytesOf(long512.substr(1) + L'\0'));
    put(L"no zero", REG_SZ, bytesOf(long512));
    put(L"too long", REG_SZ, bytesOf(long512 + L'\0'));
    EXPECT_EQ(text(pathOf(L"complete")), long512.substr(1));
    EXPECT_EQ(text(pathOf(L"no zero")), long512);
    EXPECT_EQ(text(pathOf(L"too long")), L"");
    EXPECT_EQ(textOf(keyName(), L"no zero"), long512);
    EXPECT_EQ(textOf(keyName(), L"too long"), L"");
}

TEST_F(GettingRegistryValues, GivesNoTextForOtherTypes) {
    for (const DWORD type : {DWORD{REG_NONE}, DWORD{REG_BINARY}, DWORD{REG_DWORD}, DWORD{REG_LINK},
                             DWORD{REG_MULTI_SZ}, DWORD{77}}) {
        put(L"value", type, "a\0b\0"s);
        EXPECT_EQ(text(pathOf(L"value")), L"") << type;
        EXPECT_EQ(textOf(keyName(), L"value"), L"") << type;
    }
}

TEST_F(GettingRegistryValues, GivesTheBytesOfAnyType) {
    put(L"bytes", REG_BINARY, "\x01\x00\xff"s);
    put(L"number", REG_DWORD, "\x04\x03\x02\x01");
    put(L"empty", REG_BINARY, "");
    EXPECT_THAT(bytes(pathOf(L"bytes")), ElementsAre(1, 0, -1));
    EXPECT_THAT(bytes(pathOf(L"number")), ElementsAre(4, 3, 2, 1));
    EXPECT_THAT(bytes(pathOf(L"empty")), IsEmpty());
}

TEST_F(GettingRegistryValues, GivesUpTo1024Bytes) {
    put(L"fits", REG_BINARY, std::string(1024, 'x'));
    put(L"too long", REG_BINARY, std::string(1025, 'x'));
    EXPECT_EQ(bytes(pathOf(L"fits")), std::vector<jbyte>(1024, 'x'));
    EXPECT_THAT(bytes(pathOf(L"too long")), IsEmpty());
}

TEST_F(GettingRegistryValues, ReadsTheNamelessDefaultValue) {
    put(L"", REG_SZ, bytesOf(L"default\0"s));
    EXPECT_EQ(text(pathOf(L"")), L"default");
    EXPECT_EQ(textOf(keyName(), L""), L"default");
}

TEST_F(GettingRegistryValues, ReadsWhatIsInTheRootItself) {
    put(L"number", REG_DWORD, "\x07\0\0\0"s);
    put(L"text", REG_SZ, bytesOf(L"found\0"s));
    const std::vector<Replacement> standing = takeThePlaceOfTheRoot();
    EXPECT_EQ(dword(L"HKEY_CURRENT_USER\\number"), 7);
    EXPECT_THAT(bytes(L"HKEY_CURRENT_USER\\number"), ElementsAre(7, 0, 0, 0));
    EXPECT_EQ(text(L"HKEY_CURRENT_USER\\text"), L"found");
    EXPECT_EQ(textOf(L"HKEY_CURRENT_USER\\", L"text"), L"found");
    EXPECT_EQ(NATIVE(getRegistryValue)(L"HKEY_CURRENT_USER\\text", 0, REG_SZ).text(), L"found");
}

TEST_F(GettingRegistryValues, SplitsAKeyNameAtItsFirstBackslashOnly) {
    put(L"with\\backslash", REG_SZ, bytesOf(L"found\0"s));
    EXPECT_EQ(textOf(keyName(), L"with\\backslash"), L"found");
}

TEST_F(GettingRegistryValues, TakesValueNamesOfAnyLength) {
    const std::wstring name(5000, L'n');
    put(name, REG_SZ, bytesOf(L"found\0"s));
    const GuardedHeap heap(system());
    EXPECT_EQ(textOf(keyName(), name), L"found");
    EXPECT_EQ(textOf(keyName(), std::wstring(20000, L'n')), L"");
}

TEST_F(GettingRegistryValues, TakesValueNamesThroughTheAnsiCodePage) {
    // The UTF-8 of one character is two characters there.
    put(L"\u00c3\u00a9", REG_SZ, bytesOf(L"found\0"s));
    EXPECT_EQ(textOf(keyName(), L"\u00e9"), L"found");
}

TEST_F(GettingRegistryValues, FailsForPathsThatAreNone) {
    put(L"value", REG_DWORD, "1234");
    const std::wstring tooLong = pathOf(L"") + std::wstring(1024 - pathOf(L"").size(), L'v');
    for (const std::wstring& path :
         {L"HKEY_CURRENT_USER"s, L""s, L"hkey_current_user\\" + keyPath() + L"\\value",
          L"HKCU\\" + keyPath() + L"\\value", L"HKEY_PERFORMANCE_DATA\\value"s, tooLong,
          pathOf(L"missing\\value")}) {
        EXPECT_EQ(dword(path), -1) << toUtf8(path);
        EXPECT_EQ(text(path), L"") << toUtf8(path);
        EXPECT_THAT(bytes(path), IsEmpty()) << toUtf8(path);
    }
}

TEST_F(GettingRegistryValues, FailsForKeyNamesThatAreNone) {
    put(L"value", REG_SZ, bytesOf(L"text"));
    for (const std::wstring& name : {L"HKEY_CURRENT_USER"s, L""s, L"hkey_current_user\\" + keyPath(),
                                     L"HKCU\\" + keyPath(), L"\\"s, keyName() + L"\\missing"}) {
        EXPECT_EQ(textOf(name, L"value"), L"") << toUtf8(name);
    }
}

TEST_F(GettingRegistryValues, FailsForNullAsForAnyOtherPath) {
    EXPECT_EQ(NATIVE(getRegistryDWORD)(nullptr), -1);
    for (const JavaObject& none :
         {NATIVE(getRegistryString)(nullptr), NATIVE(getRegistryValueString)(nullptr, L"value"),
          NATIVE(getRegistryValueString)(keyName(), nullptr)}) {
        EXPECT_EQ(none.text(), L"");
    }
    EXPECT_THAT(NATIVE(getRegistryBinary)(nullptr).bytes(), IsEmpty());
    EXPECT_FALSE(java.isPending());
}

TEST_F(GettingRegistryValues, OpensThe64BitViewFromA32BitProcess) {
    put(L"value", REG_DWORD, "1234");
    for (const bool wow64 : {false, true}) {
        const Replacement telling = REPLACE(IsWow64Process, [wow64](HANDLE, PBOOL answer) {
            *answer = wow64;
            return TRUE;
        });
        const Replacement opening = system().watch("RegOpenKeyExA");
        dword(pathOf(L"value"));
        text(pathOf(L"value"));
        bytes(pathOf(L"value"));
        textOf(keyName(), L"value");
        ASSERT_EQ(opening.count(), 4U);
        for (const RecordedCall& call : opening.calls()) {
            EXPECT_EQ(call.argument<std::uint32_t>(3), wow64 ? 0x20119U : 0x20019U);
        }
    }
}

TEST_F(GettingRegistryValues, FailsWhereTheSystemRefuses) {
    put(L"value", REG_DWORD, "1234");
    put(L"text", REG_SZ, bytesOf(L"text"));
    const Replacement narrow = system().answer("RegQueryValueExA", ERROR_ACCESS_DENIED);
    const Replacement wide = system().answer("RegQueryValueExW", ERROR_ACCESS_DENIED);
    EXPECT_EQ(dword(pathOf(L"value")), -1);
    EXPECT_THAT(bytes(pathOf(L"value")), IsEmpty());
    EXPECT_EQ(text(pathOf(L"text")), L"");
    EXPECT_EQ(textOf(keyName(), L"text"), L"");
    EXPECT_EQ(narrow.count(), 2U);
    EXPECT_EQ(wide.count(), 2U);
}

TEST_F(GettingRegistryValues, GivesAnEmptyTextWithoutMemory) {
    put(L"text", REG_SZ, bytesOf(L"text"));
    for (const std::size_t k : {1, 2}) {
        const Replacement failing = system().failCall("calloc", k, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(text(pathOf(L"text")), L"");
    }
}

TEST_F(GettingRegistryValues, FailsForArgumentsThatTheJvmHasNoMemoryFor) {
    put(L"value", REG_DWORD, "1234");
    put(L"text", REG_SZ, bytesOf(L"text"));
    java.failCall("GetStringUTFChars");
    EXPECT_EQ(dword(pathOf(L"value")), -1);
    java.failCall("GetStringUTFChars");
    EXPECT_EQ(text(pathOf(L"text")), L"");
    java.failCall("GetStringUTFChars");
    EXPECT_THAT(bytes(pathOf(L"value")), IsEmpty());
    for (const std::size_t k : {1, 2}) {
        java.failCall("GetStringUTFChars", k);
        EXPECT_EQ(textOf(keyName(), L"text"), L"") << k;
    }
    java.failCall("GetStringChars");
    EXPECT_EQ(NATIVE(getRegistryValue)(pathOf(L"text"), 0, REG_SZ).text(), L"");
    EXPECT_FALSE(java.isPending());
    EXPECT_EQ(system().count("RegOpenKeyExA") + system().count("RegOpenKeyExW"), 0U);
}

TEST_F(GettingRegistryValues, LeavesTheErrorOfAJvmWithoutMemoryForTheAnswer) {
    const auto expectFailure = [&](const char* function, auto call) {
        java.failCall(function);
        EXPECT_FALSE(call()) << function;
        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    };
    expectFailure("NewString", [&] { return NATIVE(getRegistryString)(pathOf(L"x")); });
    expectFailure("NewString", [&] { return NATIVE(getRegistryValueString)(keyName(), L"x"); });
    expectFailure("NewString", [&] { return NATIVE(getRegistryValue)(pathOf(L"x"), 0, REG_SZ); });
    expectFailure("NewByteArray", [&] { return NATIVE(getRegistryBinary)(pathOf(L"x")); });
}

// A read that fills all the room it is told of, and says that it gave still more.
class HostileRegistryValues : public GettingRegistryValues {
protected:
    void SetUp() override { put(L"value", REG_SZ, bytesOf(L"text")); }

    template <class Name>
    static LSTATUS fill(HKEY, Name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD room) {
        std::memset(data, 'x', *room);
        *room += 1000;
        if (type != nullptr) {
            *type = REG_SZ;
        }
        return ERROR_SUCCESS;
    }
    Replacement narrow = REPLACE(RegQueryValueExA, fill<LPCSTR>);
    Replacement wide = REPLACE(RegQueryValueExW, fill<LPCWSTR>);
    GuardedHeap heap{system()};
};

TEST_F(HostileRegistryValues, KeepTextsInTheirBlock) {
    EXPECT_EQ(text(pathOf(L"value")), std::wstring(512, L'\x7878'));
    EXPECT_EQ(textOf(keyName(), L"value"), std::wstring(512, L'\x7878'));
}

TEST_F(HostileRegistryValues, KeepBytesInTheirBlock) {
    EXPECT_EQ(bytes(pathOf(L"value")), std::vector<jbyte>(1024, 'x'));
}

TEST_F(HostileRegistryValues, KeepTextsOfAnySizeInTheirBlock) {
    EXPECT_EQ(NATIVE(getRegistryValue)(pathOf(L"value"), 0, REG_SZ).text(), std::wstring(4096, L'\x7878'));
}

}  // namespace

}  // namespace testbed
