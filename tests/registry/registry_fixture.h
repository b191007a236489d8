// What the tests of the registry share: a key of their own below HKEY_CURRENT_USER, and a collector.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "guarded_heap.h"
#include "winutil_fixture.h"

namespace testbed {

struct StoredValue {
    DWORD type;
    std::string data;
    bool operator==(const StoredValue&) const = default;
};
void PrintTo(const StoredValue& value, std::ostream* stream);

// The bytes of a text, as the registry holds them.
std::string bytesOf(std::wstring_view text);

class RegistryTest : public WinUtilTest {
protected:
    RegistryTest();
    // Removes the key with everything in it.
    ~RegistryTest() override;

    // The test's key, open: its path below the root, and the full path of a value in it.
    HKEY key() const { return key_; }
    const std::wstring& keyPath() const { return keyPath_; }
    std::wstring pathOf(std::wstring_view valueName) const;

    // Stores these bytes and no others: the system's own calls complete texts that have no zero.
    void put(const std::wstring& name, DWORD type, std::string_view data);
    std::optional<StoredValue> stored(const std::wstring& name) const;
    // The same for a key below that of the test; an empty path is the test's key.
    std::optional<StoredValue> storedBelow(const std::wstring& subkey, const std::wstring& name) const;

    void makeSubkey(const std::wstring& name) const;
    bool hasSubkey(const std::wstring& name) const;
    std::wstring classOf(const std::wstring& subkey) const;

    // Has the library find the test's key where it opens or makes the root itself; any other path fails the
    // test.
    std::vector<Replacement> takeThePlaceOfTheRoot();

private:
    std::wstring keyPath_;
    HKEY key_ = nullptr;
};

// One call that a listing made: bytes come in hexadecimal digits, the strings of a list each in brackets.
struct Item {
    std::string method;
    std::wstring name;
    std::wstring value;
    bool operator==(const Item&) const = default;
};
void PrintTo(const Item& item, std::ostream* stream);

Item subkeyItem(std::wstring name);
Item textItem(std::wstring name, std::wstring value);
Item numberItem(std::wstring name, std::wstring value);
Item bytesItem(std::wstring name, std::wstring value);
Item listItem(std::wstring name, std::wstring value);

// How often each pair of root name and key path came.
using Places = std::map<std::pair<std::wstring, std::wstring>, int>;

// A collector with all five methods, and what it was given.
class Collector {
public:
    explicit Collector(FakeJava& java);

    const JavaObject& object() const { return object_; }
    const std::vector<Item>& items() const { return items_; }
    // The item of this name.
    Item find(std::wstring_view name) const;
    const Places& places() const { return places_; }

    // Has the collector throw at its k-th call.
    void throwAt(std::size_t k, Exception exception);
    void removeMethod(const std::string& name);

private:
    using Format = std::wstring(const Value& value);
    void define(const std::string& name, const std::string& lastParameter, Format* format);

    FakeJava& java_;
    std::string className_;
    JavaObject object_;
    std::vector<Item> items_;
    Places places_;
    std::size_t throwAt_ = 0;
    Exception exception_;
};

}  // namespace testbed
