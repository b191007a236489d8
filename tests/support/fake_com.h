// COM objects of a test's own, whose references are in the ledger.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <atomic>

#include "ledger.h"

namespace testbed {

// Implements what every interface has. A class derives from it with its interface, and overrides the methods
// that the library calls:
//
//     struct Locator : FakeCom<IWbemLocator> { ... };
//     Locator locator(ledger(), IID_IWbemLocator);
//     *result = locator.referenced();   // what a replaced CoCreateInstance hands out
//
// The object lives as long as the test's variable; a reference that is not released is left in the ledger,
// and one too many released is complained about.
template <class Interface>
class FakeCom : public Interface {
public:
    FakeCom(Ledger& ledger, const IID& identifier) : ledger_(ledger), identifier_(identifier) {}
    virtual ~FakeCom() = default;
    FakeCom(const FakeCom&) = delete;
    FakeCom& operator=(const FakeCom&) = delete;

    // A reference for the library to release.
    Interface* referenced() {
        AddRef();
        return this;
    }
    ULONG references() const { return references_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(const IID& wanted, void** object) override {
        if (IsEqualIID(wanted, identifier_) || IsEqualIID(wanted, IID_IUnknown)) {
            *object = referenced();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        ledger_.take(Kind::comReference, address(), "AddRef", "a COM object of the test");
        return ++references_;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        ledger_.give(Kind::comReference, address(), "Release", "a COM object of the test");
        return --references_;
    }

private:
    std::uint64_t address() const { return reinterpret_cast<std::uint64_t>(this); }

    Ledger& ledger_;
    IID identifier_;
    std::atomic<ULONG> references_ = 0;
};

}  // namespace testbed
