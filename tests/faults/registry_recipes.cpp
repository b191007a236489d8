// Keys, values and hives of the registry.
#include "../registry/registry_fixture.h"
#include "reasons.h"
#include "recipe.h"

namespace {

using namespace std::string_literals;
using namespace testbed;
using namespace testbed::reasons;

const std::wstring user = L"HKEY_CURRENT_USER";

class ValueTest : public RegistryTest {
protected:
    ValueTest() {
        put(L"number", REG_DWORD, "\x07\0\0\0"s);
        put(L"text", REG_SZ, bytesOf(L"some text\0"s));
        put(L"narrow", REG_SZ, bytesOf(L"some text\0"s));
        put(L"bytes", REG_BINARY, "abc");
    }
};

#define SETTING(method, ...)                                                  \
    RECIPE(ValueTest, method, inAKey) {                                       \
        examine([&] { return NATIVE(method)(pathOf(L"new"), __VA_ARGS__); }); \
    }

SETTING(setRegistryDWORD, 5)
SETTING(setRegistryDWORDW, 5)
SETTING(setRegistryString, L"text")
SETTING(setRegistryStringW, L"text")
SETTING(setRegistryMultiString, L"one;two")
SETTING(setRegistryBinary, java.byteArray({1, 2, 3}), 0, 3)

RECIPE(ValueTest, getRegistryDWORD, ofANumber) {
    tolerates({"IsWow64Process"}, standsIn);
    examine([&] { return NATIVE(getRegistryDWORD)(pathOf(L"number")); });
}

RECIPE(ValueTest, getRegistryString, ofAText) {
    tolerates({"IsWow64Process"}, standsIn);
    examine([&] { return NATIVE(getRegistryString)(pathOf(L"text")); });
}

RECIPE(ValueTest, getRegistryBinary, ofBytes) {
    tolerates({"IsWow64Process"}, standsIn);
    examine([&] { return NATIVE(getRegistryBinary)(pathOf(L"bytes")); });
}

RECIPE(ValueTest, getRegistryValueString, ofAText) {
    tolerates({"IsWow64Process"}, standsIn);
    examine([&] { return NATIVE(getRegistryValueString)(user + L"\\" + keyPath(), L"text"); });
}

RECIPE(ValueTest, getRegistryValue, ofAText) {
    examine([&] { return NATIVE(getRegistryValue)(pathOf(L"text"), 0, REG_SZ); });
}

RECIPE(ValueTest, getRegistryValue, ofALongText) {
    put(L"long", REG_SZ, bytesOf(std::wstring(3000, L'x') + L'\0'));
    examine([&] { return NATIVE(getRegistryValue)(pathOf(L"long"), 0, REG_SZ); });
}

RECIPE(ValueTest, makeNewRegistryKey, belowAKey) {
    examine([&] { return NATIVE(makeNewRegistryKey)(user, keyPath() + L"\\new"); });
}

class HiveTest : public ValueTest {
protected:
    Replacement load_ = system().answer("RegLoadKeyW", ERROR_SUCCESS);
    Replacement unload_ = system().answer("RegUnLoadKeyW", ERROR_SUCCESS);
};

RECIPE(HiveTest, loadRegistry, ofAFile) {
    examine([&] { return NATIVE(loadRegistry)(L"HKEY_USERS", L"WinUtilFaults", L"C:\\hive"); });
}

RECIPE(HiveTest, unloadRegistry, ofAKey) {
    examine([&] { return NATIVE(unloadRegistry)(L"HKEY_USERS", L"WinUtilFaults"); });
}

RECIPE(ValueTest, listRegistry, ofAKey) {
    tolerates({"IsWow64Process"}, standsIn);
    tolerates({"MultiByteToWideChar"}, comesEmpty, Tolerance::any);
    leavesOut({"RegOpenKeyExA", "RegQueryInfoKeyA", "RegEnumKeyExA", "RegEnumValueA", "RegQueryValueExA"},
              leftOut);
    leavesOut({"GetMethodID"}, noMethod);
    makeSubkey(L"a key");
    put(L"list", REG_MULTI_SZ, bytesOf(L"one\0two\0\0"s));
    put(L"long number", REG_QWORD, "\x07\0\0\0\0\0\0\0"s);
    Collector collector(java);
    examine([&] { NATIVE(listRegistry)(collector.object(), user, keyPath()); });
    for (const Item& item : collector.items()) {
        note(toWide(item.method) + L" " + item.name + L" " + item.value);
    }
}

}  // namespace
