#include "com_slots.h"

#include <oleauto.h>
#include <shobjidl.h>
#include <wbemcli.h>

#include <cstring>
#include <iterator>
#include <map>
#include <set>
#include <vector>

namespace testbed {

namespace {

ComSlots* current = nullptr;

// A method that the library calls, by its place in the interface.
struct Method {
    std::size_t place;
    const char* name;
};

struct Interface {
    const IID* identifier;
    std::size_t size;  // all methods of it
    std::vector<Method> methods;
};

const std::vector<Interface>& interfaces() {
    static const std::vector<Interface> known = {
        {&IID_IWbemLocator, 4, {{0, "IWbemLocator.QueryInterface"}, {3, "IWbemLocator.ConnectServer"}}},
        {&IID_IWbemServices, 26, {{0, "IWbemServices.QueryInterface"}, {20, "IWbemServices.ExecQuery"}}},
        {&IID_IEnumWbemClassObject, 8, {{4, "IEnumWbemClassObject.Next"}}},
        {&IID_IWbemClassObject, 27, {{4, "IWbemClassObject.Get"}}},
        {&IID_IPersistFile, 9, {{5, "IPersistFile.Load"}}},
        {&IID_IShellLinkW,
         21,
         {{0, "IShellLinkW.QueryInterface"}, {3, "IShellLinkW.GetPath"}, {19, "IShellLinkW.Resolve"}}},
        {&IID_IShellItem, 8, {{5, "IShellItem.GetDisplayName"}}},
        {&IID_IEnumShellItems, 7, {{3, "IEnumShellItems.Next"}}},
        {&IID_IShellItemArray, 10, {{9, "IShellItemArray.EnumItems"}}},
        {&IID_IShellLibrary,
         20,
         {{3, "IShellLibrary.LoadLibraryFromItem"},
          {7, "IShellLibrary.GetFolders"},
          {15, "IShellLibrary.GetIcon"}}},
    };
    return known;
}

// What lies around the methods of an interface in the table of a class: its type ahead of them, its
// destructors behind.
constexpr std::size_t wordsAhead = 2;
constexpr std::size_t wordsBehind = 4;

using Word = const void*;

// The table that an object's class has, and the copy of it that leads through slots. Copies stay: an object
// may outlive what made it use one.
std::map<Word, std::vector<Word>>& copies() {
    static std::map<Word, std::vector<Word>> made;
    return made;
}

}  // namespace

ComSlots::ComSlots(SystemCalls& calls) : calls_(calls) {
    current = this;
}

ComSlots::~ComSlots() {
    current = nullptr;
}

void ComSlots::lead(IUnknown& object, const IID& identifier) {
    if (current != nullptr) {
        current->leadMethods(object, identifier);
    }
}

void ComSlots::leadMethods(IUnknown& object, const IID& identifier) {
    static std::set<Word> ours;
    const Word* table = nullptr;
    std::memcpy(&table, static_cast<void*>(&object), sizeof table);
    if (ours.contains(table)) {
        return;
    }
    for (const Interface& known : interfaces()) {
        if (!IsEqualIID(*known.identifier, identifier)) {
            continue;
        }
        std::vector<Word>& copy = copies()[table];
        if (copy.empty()) {
            copy.assign(table - wordsAhead, table + known.size + wordsBehind);
        }
        for (const Method& method : known.methods) {
            copy[wordsAhead + method.place] = calls_.lead(method.name, table[method.place]);
        }
        const Word* leading = copy.data() + wordsAhead;
        ours.insert(leading);
        std::memcpy(static_cast<void*>(&object), &leading, sizeof leading);
    }
}

}  // namespace testbed
