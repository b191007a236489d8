// Registries that hold anything.
#include <cstring>

#include "answers/registry.h"
#include "hostile_test.h"

namespace testbed {

namespace {

class HostileRegistry : public HostileTest<WinUtilTest> {
protected:
    HostileRegistry() {
        replace(REPLACE(RegOpenKeyExA, [](HKEY, LPCSTR, DWORD, REGSAM, PHKEY key) { return open(key); }));
        replace(REPLACE(RegOpenKeyExW, [](HKEY, LPCWSTR, DWORD, REGSAM, PHKEY key) { return open(key); }));
        replace(REPLACE(RegQueryInfoKeyA,
                        [this](HKEY, LPSTR, LPDWORD, LPDWORD, LPDWORD subkeys, LPDWORD, LPDWORD,
                               LPDWORD values, auto...) { return registry_->giveCounts(subkeys, values); }));
        replace(REPLACE(RegEnumKeyExA, [this](HKEY, DWORD, LPSTR name, LPDWORD size, auto...) {
            return registry_->giveName(name, size);
        }));
        replace(REPLACE(RegEnumValueA,
                        [this](HKEY, DWORD, LPSTR name, LPDWORD nameSize, LPDWORD, LPDWORD type, LPBYTE,
                               LPDWORD size) { return registry_->giveValue(name, nameSize, type, size); }));
        replace(
            REPLACE(RegQueryValueExA, [this](HKEY, LPCSTR, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size) {
                return registry_->giveData(type, data, size);
            }));
        replace(REPLACE(RegQueryValueExW,
                        [this](HKEY, LPCWSTR, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size) {
                            return registry_->giveData(type, data, size);
                        }));
    }

    void answerWith(hostile::Input& input) { registry_.emplace(input); }

private:
    void replace(Replacement replacement) { replacements_.push_back(std::move(replacement)); }
    static LSTATUS open(PHKEY key) {
        *key = static_cast<HKEY>(Ledger::fakeHandle());
        return ERROR_SUCCESS;
    }

    std::optional<hostile::Registry> registry_;
    std::vector<Replacement> replacements_;
};

TEST_F(HostileRegistry, HasKeysAndValuesOfAnyKind) {
    forEachInput("registry_listing", [&](hostile::Input& input) {
        answerWith(input);
        NATIVE(listRegistry)(collector(), L"HKEY_USERS", L"key");
    });
}

TEST_F(HostileRegistry, HasValuesOfAnySize) {
    constexpr wchar_t path[] = L"HKEY_USERS\\key\\value";
    forEachInput("registry_value", [&](hostile::Input& input) {
        answerWith(input);
        switch (input.value<BYTE>() % 4) {
            case 0:
                note(NATIVE(getRegistryString)(path));
                break;
            case 1:
                note(NATIVE(getRegistryValue)(path, 0, REG_SZ));
                break;
            case 2:
                note(NATIVE(getRegistryDWORD)(path));
                break;
            default:
                note(NATIVE(getRegistryBinary)(path));
        }
    });
}

TEST_F(HostileRegistry, HasListsOfStringsOfAnyForm) {
    const auto counts = REPLACE(RegQueryInfoKeyA, [](HKEY, LPSTR, LPDWORD, LPDWORD, LPDWORD subkeys, LPDWORD,
                                                     LPDWORD, LPDWORD values, auto...) {
        *subkeys = 0;
        *values = 1;
        return LSTATUS{ERROR_SUCCESS};
    });
    forEachInput("multi_string", [&](hostile::Input& input) {
        const std::span<const std::byte> list = input.rest();
        const auto value = REPLACE(RegEnumValueA, [&](HKEY, DWORD, LPSTR name, LPDWORD, LPDWORD, LPDWORD type,
                                                      LPBYTE, LPDWORD size) {
            std::strcpy(name, "list");
            *type = REG_MULTI_SZ;
            *size = static_cast<DWORD>(list.size());
            return LSTATUS{ERROR_SUCCESS};
        });
        const auto data =
            REPLACE(RegQueryValueExA, [&](HKEY, LPCSTR, LPDWORD, LPDWORD, LPBYTE room, LPDWORD) {
                std::ranges::copy(list, reinterpret_cast<std::byte*>(room));
                return LSTATUS{ERROR_SUCCESS};
            });
        NATIVE(listRegistry)(collector(), L"HKEY_USERS", L"key");
    });
}

}  // namespace

}  // namespace testbed
