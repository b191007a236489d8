#include "registry_fixture.h"

#include <winternl.h>

#include <ostream>
#include <stdexcept>

namespace testbed {

namespace {

void check(LSTATUS status, const char* what) {
    if (status != ERROR_SUCCESS) {
        throw std::runtime_error(std::string(what) + ": " + std::to_string(status));
    }
}

// Writes bytes as they are, which RegSetValueEx does not always do.
void setRawValue(HKEY key, const std::wstring& name, DWORD type, std::string_view data) {
    using Function = NTSTATUS NTAPI(HANDLE, PUNICODE_STRING, ULONG, ULONG, const void*, ULONG);
    static auto* const set = reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll"), "NtSetValueKey")));
    UNICODE_STRING text;
    text.Buffer = const_cast<wchar_t*>(name.c_str());
    text.Length = static_cast<USHORT>(name.size() * sizeof(wchar_t));
    text.MaximumLength = text.Length;
    const NTSTATUS status = set(key, &text, 0, type, data.data(), static_cast<ULONG>(data.size()));
    if (status < 0) {
        throw std::runtime_error("NtSetValueKey: " + hex(static_cast<std::uint32_t>(status)));
    }
}

class OpenKey {
public:
    OpenKey(HKEY parent, const std::wstring& path, REGSAM access = KEY_READ) {
        found_ = RegOpenKeyExW(parent, path.c_str(), 0, access, &key_) == ERROR_SUCCESS;
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    ~OpenKey() {
        if (found_) {
            RegCloseKey(key_);
        }
    }
    explicit operator bool() const { return found_; }
    HKEY get() const { return key_; }

private:
    HKEY key_ = nullptr;
    bool found_ = false;
};

std::wstring noValue(const Value&) {
    return {};
}

std::wstring asText(const Value& value) {
    return value.text();
}

std::wstring asNumber(const Value& value) {
    return std::to_wstring(value.number());
}

std::wstring asHexadecimal(const Value& value) {
    std::wstring text;
    for (const jbyte byte : value.object().bytes()) {
        constexpr wchar_t digits[] = L"0123456789abcdef";
        const auto number = static_cast<unsigned char>(byte);
        text += digits[number >> 4];
        text += digits[number & 15];
    }
    return text;
}

std::wstring asList(const Value& value) {
    std::wstring text;
    for (const std::wstring& element : value.object().texts()) {
        text += L'[' + element + L']';
    }
    return text;
}

}  // namespace

void PrintTo(const StoredValue& value, std::ostream* stream) {
    *stream << "type " << value.type << ", data";
    for (const char byte : value.data) {
        *stream << ' ' << hex(static_cast<unsigned char>(byte));
    }
}

std::string bytesOf(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

RegistryTest::RegistryTest()
    : keyPath_(L"Software\\WinUtilTests\\" + std::to_wstring(GetCurrentProcessId())) {
    RegDeleteTreeW(HKEY_CURRENT_USER, keyPath_.c_str());
    check(RegCreateKeyExW(HKEY_CURRENT_USER, keyPath_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key_,
                          nullptr),
          "RegCreateKeyExW");
}

RegistryTest::~RegistryTest() {
    RegCloseKey(key_);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, keyPath_.c_str()), ERROR_SUCCESS);
    // The key above goes with the last of the programs that run at the same time.
    RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\WinUtilTests");
}

std::wstring RegistryTest::pathOf(std::wstring_view valueName) const {
    return L"HKEY_CURRENT_USER\\" + keyPath_ + L"\\" + std::wstring(valueName);
}

void RegistryTest::put(const std::wstring& name, DWORD type, std::string_view data) {
    setRawValue(key_, name, type, data);
}

std::optional<StoredValue> RegistryTest::stored(const std::wstring& name) const {
    return storedBelow(L"", name);
}

std::optional<StoredValue> RegistryTest::storedBelow(const std::wstring& subkey,
                                                     const std::wstring& name) const {
    const OpenKey opened(key_, subkey);
    if (!opened) {
        return std::nullopt;
    }
    std::string data(0x20000, '\0');
    DWORD type = REG_NONE;
    auto size = static_cast<DWORD>(data.size());
    if (RegQueryValueExW(opened.get(), name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(data.data()),
                         &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    data.resize(size);
    return StoredValue{type, data};
}

void RegistryTest::makeSubkey(const std::wstring& name) const {
    HKEY made = nullptr;
    check(RegCreateKeyExW(key_, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &made, nullptr),
          "RegCreateKeyExW");
    RegCloseKey(made);
}

bool RegistryTest::hasSubkey(const std::wstring& name) const {
    return static_cast<bool>(OpenKey(key_, name));
}

std::wstring RegistryTest::classOf(const std::wstring& subkey) const {
    const OpenKey opened(key_, subkey);
    wchar_t text[64] = {};
    DWORD length = 64;
    check(RegQueryInfoKeyW(opened.get(), text, &length, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, nullptr, nullptr),
          "RegQueryInfoKeyW");
    return text;
}

std::vector<Replacement> RegistryTest::takeThePlaceOfTheRoot() {
    const auto expectRoot = [](HKEY root, const auto* path) {
        EXPECT_EQ(root, HKEY_CURRENT_USER);
        EXPECT_EQ(path[0], 0);
    };
    std::vector<Replacement> replacements;
    replacements.push_back(
        REPLACE(RegOpenKeyExA, [this, expectRoot](HKEY root, LPCSTR path, auto... rest) -> LSTATUS {
            expectRoot(root, path);
            return REAL(RegOpenKeyExA)(key_, path, rest...);
        }));
    replacements.push_back(
        REPLACE(RegOpenKeyExW, [this, expectRoot](HKEY root, LPCWSTR path, auto... rest) -> LSTATUS {
            expectRoot(root, path);
            return REAL(RegOpenKeyExW)(key_, path, rest...);
        }));
    replacements.push_back(
        REPLACE(RegCreateKeyExA, [this, expectRoot](HKEY root, LPCSTR path, auto... rest) -> LSTATUS {
            expectRoot(root, path);
            return REAL(RegCreateKeyExA)(key_, path, rest...);
        }));
    replacements.push_back(
        REPLACE(RegCreateKeyExW, [this, expectRoot](HKEY root, LPCWSTR path, auto... rest) -> LSTATUS {
            expectRoot(root, path);
            return REAL(RegCreateKeyExW)(key_, path, rest...);
        }));
    return replacements;
}

void PrintTo(const Item& item, std::ostream* stream) {
    *stream << item.method << ' ' << toUtf8(item.name) << " = " << toUtf8(item.value);
}

Item subkeyItem(std::wstring name) {
    return {"addNode", std::move(name), L""};
}

Item textItem(std::wstring name, std::wstring value) {
    return {"addStringNode", std::move(name), std::move(value)};
}

Item numberItem(std::wstring name, std::wstring value) {
    return {"addDwordNode", std::move(name), std::move(value)};
}

Item bytesItem(std::wstring name, std::wstring value) {
    return {"addByteNode", std::move(name), std::move(value)};
}

Item listItem(std::wstring name, std::wstring value) {
    return {"addMultiStringNode", std::move(name), std::move(value)};
}

Collector::Collector(FakeJava& java) : java_(java) {
    static int number = 0;
    className_ = "RegistryCollector" + std::to_string(++number);
    define("addNode", "", noValue);
    define("addStringNode", "Ljava/lang/String;", asText);
    define("addDwordNode", "J", asNumber);
    define("addByteNode", "[B", asHexadecimal);
    define("addMultiStringNode", "[Ljava/lang/String;", asList);
    object_ = java_.object(className_);
}

void Collector::define(const std::string& name, const std::string& lastParameter, Format* format) {
    const std::string text = "Ljava/lang/String;";
    java_.defineMethod(className_, name, "(" + text + text + text + lastParameter + ")V",
                       [this, name, format](const Arguments& arguments) {
                           ++places_[{arguments.at(0).text(), arguments.at(1).text()}];
                           items_.push_back({name, arguments.at(2).text(), format(arguments.back())});
                           if (items_.size() == throwAt_) {
                               throw JavaThrow{exception_};
                           }
                       });
}

Item Collector::find(std::wstring_view name) const {
    for (const Item& item : items_) {
        if (item.name == name) {
            return item;
        }
    }
    return {};
}

void Collector::throwAt(std::size_t k, Exception exception) {
    throwAt_ = k;
    exception_ = std::move(exception);
}

void Collector::removeMethod(const std::string& name) {
    const std::map<std::string, std::string> last = {{"addNode", ""},
                                                     {"addStringNode", "Ljava/lang/String;"},
                                                     {"addDwordNode", "J"},
                                                     {"addByteNode", "[B"},
                                                     {"addMultiStringNode", "[Ljava/lang/String;"}};
    const std::string text = "Ljava/lang/String;";
    java_.removeMethod(className_, name, "(" + text + text + text + last.at(name) + ")V");
}

}  // namespace testbed
