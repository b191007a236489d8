// Properties of WMI objects, of any type.
#include "inventory/wmi_property.h"
#include "answers/properties.h"
#include "target.h"

namespace {

// An object that is asked for properties alone.
struct ObjectFunctions {
    void* unused[4];  // QueryInterface, AddRef, Release, GetQualifierSet
    HRESULT(WINAPI* get)(void* object, LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor);
};
struct Object {
    const ObjectFunctions* functions;
    hostile::Properties* properties;
};

HRESULT WINAPI get(void* object, LPCWSTR, LONG, VARIANT* value, CIMTYPE*, LONG*) {
    return static_cast<Object*>(object)->properties->give(*value);
}

}  // namespace

void fuzz::examine(hostile::Input& input) {
    hostile::Properties answers(input);
    const ObjectFunctions functions = {.unused = {}, .get = get};
    Object object = {.functions = &functions, .properties = &answers};
    while (!input.empty()) {
        winutil::inventory::WmiProperty property(reinterpret_cast<IWbemClassObject*>(&object), L"Name");
        require(std::wcslen(property.text()) <= 0xFF, "a text is longer than any that was given");
        require(property.isText() || *property.text() == L'\0', "what is no text has characters");
        require(property.hasValue() || property.number() == 0, "what is missing has a number");
        property.number();
    }
}
