// Objects of the directory service, and what they are known by.
#pragma once

#include <windows.h>

// activeds.h needs COM's automation types.
#include <oleauto.h>

#include <activeds.h>

#include "bridge/com.h"

namespace winutil::account {

// Memory that a directory object allocated for its caller.
template <class T>
using AdsMemory = Resource<T*, FreeADsMem>;

// Binds a path of the directory. Returns the failing call's value.
template <class Interface>
HRESULT bindObject(const wchar_t* path, REFIID identifier, ComPtr<Interface>& object) noexcept {
    const HRESULT result = ADsGetObject(path, identifier, reinterpret_cast<void**>(object.receive()));
    return SUCCEEDED(result) && !object ? E_NOINTERFACE : result;
}

// Asks an object for another of its interfaces; none when it lacks it.
template <class Interface>
ComPtr<Interface> queryInterface(IUnknown* object, REFIID identifier) noexcept {
    ComPtr<Interface> found;
    if (FAILED(object->QueryInterface(identifier, reinterpret_cast<void**>(found.receive())))) {
        return {};
    }
    return found;
}

// What tells an object of the directory from every other: its objectGUID as text, braces included.
struct ObjectGuid {
    static constexpr int capacity = 39;  // characters, the terminator included

    wchar_t text[capacity];
};

bool isSame(const ObjectGuid& left, const ObjectGuid& right) noexcept;

// Reads an object's identity. Returns false when it has none that can be read.
bool readObjectGuid(IDirectoryObject* object, ObjectGuid& guid) noexcept;

}  // namespace winutil::account
