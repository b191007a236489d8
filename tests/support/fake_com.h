// COM objects of a test's own, whose references are in the ledger, and a COM that hands them out.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "com_slots.h"
#include "winutil_fixture.h"

namespace testbed {

// What happened, in order.
using Events = std::vector<std::string>;

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
    // Its last release is noted in `events`, as "release NAME".
    FakeCom(Ledger& ledger, const IID& identifier, Events& events, const std::string& name)
        : ledger_(ledger), identifier_(identifier), events_(&events), lastRelease_("release " + name) {}
    virtual ~FakeCom() = default;
    FakeCom(const FakeCom&) = delete;
    FakeCom& operator=(const FakeCom&) = delete;

    // A reference for the library to release.
    Interface* referenced() {
        AddRef();
        return this;
    }
    // The same for a method that gives the object out, unless its result is a failure.
    template <class Out>
    HRESULT give(HRESULT result, Out** object) {
        *object = SUCCEEDED(result) ? static_cast<Out*>(referenced()) : nullptr;
        return result;
    }
    ULONG references() const { return references_; }

    // The object that stands for another interface of this one.
    void offer(const IID& identifier, IUnknown& object) { others_.emplace_back(identifier, &object); }
    void withdraw(const IID& identifier) {
        std::erase_if(others_, [&](const auto& other) { return IsEqualIID(other.first, identifier); });
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(const IID& wanted, void** object) override {
        if (IsEqualIID(wanted, identifier_) || IsEqualIID(wanted, IID_IUnknown)) {
            return give(S_OK, object);
        }
        *object = nullptr;
        for (const auto& [identifier, other] : others_) {
            if (IsEqualIID(wanted, identifier)) {
                return other->QueryInterface(wanted, object);
            }
        }
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        ComSlots::lead(*this, identifier_);
        ledger_.take(Kind::comReference, address(), "AddRef", "a COM object of the test");
        return ++references_;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        ledger_.give(Kind::comReference, address(), "Release", "a COM object of the test");
        const ULONG left = --references_;
        if (left == 0 && events_ != nullptr) {
            events_->push_back(lastRelease_);
        }
        return left;
    }

private:
    std::uint64_t address() const { return reinterpret_cast<std::uint64_t>(this); }

    Ledger& ledger_;
    IID identifier_;
    Events* events_ = nullptr;
    std::string lastRelease_;
    std::vector<std::pair<IID, IUnknown*>> others_;
    std::atomic<ULONG> references_ = 0;
};

// A thread on which COM begins, creates objects and ends as a test wants it to. What it does is in `events`:
// "initialize", "uninitialize" and the releases of objects.
class ComTest : public WinUtilTest {
protected:
    Events events;
    HRESULT initializeResult = S_OK;
    HRESULT createResult = S_OK;

    // COM creates this object for the class.
    void offerClass(const CLSID& identifier, IUnknown& object) { classes_.emplace_back(identifier, &object); }

    std::ptrdiff_t count(const std::string& event) const { return std::ranges::count(events, event); }

private:
    HRESULT create(const CLSID& wanted, const IID& interfaceWanted, void** object) {
        *object = nullptr;
        for (const auto& [identifier, offered] : classes_) {
            if (IsEqualCLSID(wanted, identifier)) {
                return FAILED(createResult) ? createResult : offered->QueryInterface(interfaceWanted, object);
            }
        }
        ADD_FAILURE() << "a class that the test does not offer";
        return REGDB_E_CLASSNOTREG;
    }

    std::vector<std::pair<CLSID, IUnknown*>> classes_;
    const Replacement initialize_ = REPLACE(CoInitializeEx, [this](LPVOID reserved, DWORD model) -> HRESULT {
        EXPECT_EQ(reserved, nullptr);
        EXPECT_EQ(model, static_cast<DWORD>(COINIT_MULTITHREADED));
        events.push_back("initialize");
        return initializeResult;
    });
    const Replacement uninitialize_ = REPLACE(CoUninitialize, [this] { events.push_back("uninitialize"); });
    const Replacement create_ = REPLACE(
        CoCreateInstance,
        [this](REFCLSID wanted, LPUNKNOWN outer, DWORD context, REFIID interfaceWanted, LPVOID* object) {
            EXPECT_EQ(outer, nullptr);
            EXPECT_EQ(context, static_cast<DWORD>(CLSCTX_INPROC_SERVER));
            return create(wanted, interfaceWanted, object);
        });
};

}  // namespace testbed
