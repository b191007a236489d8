// A computer whose WMI says what a test wants, through small COM objects behind the shipped DLL.
#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "winutil_fixture.h"
#include "wmi_interfaces.h"

namespace testbed {

// WMI's codes as the results that its methods return.
constexpr auto noSuchProperty = static_cast<HRESULT>(WBEM_E_NOT_FOUND);
constexpr auto noSuchClass = static_cast<HRESULT>(WBEM_E_INVALID_CLASS);
constexpr auto invalidQuery = static_cast<HRESULT>(WBEM_E_INVALID_QUERY);

// What happened, in order.
using Events = std::vector<std::string>;

// How an object answers when it is asked for a property.
using Property = std::function<HRESULT(Ledger&, VARIANT&)>;
using Properties = std::map<std::wstring, Property>;

// A property without a value, of type VT_EMPTY or VT_NULL.
inline Property none(VARTYPE type) {
    return [type](Ledger&, VARIANT& value) {
        V_VT(&value) = type;
        return S_OK;
    };
}

inline Property text(const std::wstring& characters) {
    return [characters](Ledger& ledger, VARIANT& value) {
        V_VT(&value) = VT_BSTR;
        V_BSTR(&value) = SysAllocString(characters.c_str());
        ledger.take(Kind::text, reinterpret_cast<std::uint64_t>(V_BSTR(&value)), "Get", "a WMI object");
        return S_OK;
    };
}

inline Property number(LONG content, VARTYPE type = VT_I4) {
    return [content, type](Ledger&, VARIANT& value) {
        V_VT(&value) = type;
        V_I4(&value) = content;
        return S_OK;
    };
}

inline Property failing(HRESULT result) {
    return [result](Ledger&, VARIANT&) { return result; };
}

class WmiObject final : public WmiObjectBase {
public:
    WmiObject(Ledger& ledger, Events& events, Properties properties)
        : WmiObjectBase(ledger, IID_IWbemClassObject),
          ledger_(ledger),
          events_(events),
          properties_(std::move(properties)) {}

    HRESULT WINAPI Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor) override {
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(V_VT(value), VT_EMPTY) << "a variant that was not initialized";
        EXPECT_EQ(type, nullptr);
        EXPECT_EQ(flavor, nullptr);
        const auto found = properties_.find(name);
        return found == properties_.end() ? noSuchProperty : found->second(ledger_, *value);
    }
    ULONG WINAPI Release() override {
        events_.push_back("release object");
        return WmiObjectBase::Release();
    }

private:
    Ledger& ledger_;
    Events& events_;
    Properties properties_;
};

class WmiEnumeration final : public WmiEnumerationBase {
public:
    WmiEnumeration(Ledger& ledger, Events& events)
        : WmiEnumerationBase(ledger, IID_IEnumWbemClassObject), events_(events) {}

    std::deque<WmiObject> objects;
    HRESULT endResult = WBEM_S_FALSE;  // what follows the last object
    std::size_t asked = 0;

    HRESULT WINAPI Next(LONG timeout, ULONG count, IWbemClassObject** object, ULONG* returned) override {
        EXPECT_EQ(timeout, -1);
        EXPECT_EQ(count, 1u);
        *returned = asked < objects.size() ? 1 : 0;
        *object = *returned == 1 ? objects[asked].referenced() : nullptr;
        ++asked;
        return *returned == 1 ? HRESULT{WBEM_S_NO_ERROR} : endResult;
    }
    ULONG WINAPI Release() override {
        events_.push_back("release enumeration");
        return WmiEnumerationBase::Release();
    }

private:
    Events& events_;
};

class WmiServices final : public WmiServicesBase {
public:
    WmiServices(Ledger& ledger, Events& events, WmiEnumeration& enumeration)
        : WmiServicesBase(ledger, IID_IWbemServices), events_(events), enumeration_(enumeration) {}

    HRESULT queryResult = S_OK;
    bool givesNothing = false;  // whatever the result is
    std::wstring language;
    std::wstring query;
    LONG flags = 0;

    HRESULT WINAPI ExecQuery(BSTR queryLanguage, BSTR text, LONG queryFlags, IWbemContext* context,
                             IEnumWbemClassObject** result) override {
        // A BSTR knows its length; any other text here would be a mistake.
        language.assign(queryLanguage, SysStringLen(queryLanguage));
        query.assign(text, SysStringLen(text));
        flags = queryFlags;
        EXPECT_EQ(context, nullptr);
        *result = SUCCEEDED(queryResult) && !givesNothing ? enumeration_.referenced() : nullptr;
        return queryResult;
    }
    ULONG WINAPI Release() override {
        events_.push_back("release services");
        return WmiServicesBase::Release();
    }

private:
    Events& events_;
    WmiEnumeration& enumeration_;
};

class WmiLocator final : public FakeCom<IWbemLocator> {
public:
    WmiLocator(Ledger& ledger, Events& events, WmiServices& services)
        : FakeCom(ledger, IID_IWbemLocator), events_(events), services_(services) {}

    HRESULT connectResult = S_OK;
    bool givesNothing = false;  // whatever the result is
    std::wstring path;

    HRESULT WINAPI ConnectServer(BSTR resource, BSTR user, BSTR password, BSTR locale, LONG flags,
                                 BSTR authority, IWbemContext* context, IWbemServices** result) override {
        path.assign(resource, SysStringLen(resource));
        EXPECT_EQ(user, nullptr);
        EXPECT_EQ(password, nullptr);
        EXPECT_EQ(locale, nullptr);
        EXPECT_EQ(flags, 0);
        EXPECT_EQ(authority, nullptr);
        EXPECT_EQ(context, nullptr);
        *result = SUCCEEDED(connectResult) && !givesNothing ? services_.referenced() : nullptr;
        return connectResult;
    }
    ULONG WINAPI Release() override {
        events_.push_back("release locator");
        return FakeCom::Release();
    }

private:
    Events& events_;
    WmiServices& services_;
};

class WmiTest : public WinUtilTest {
protected:
    Events events;
    HRESULT initializeResult = S_OK;
    HRESULT securityResult = S_OK;
    HRESULT createResult = S_OK;
    bool createsNothing = false;  // whatever the result is
    HRESULT blanketResult = S_OK;
    WmiEnumeration enumeration{ledger(), events};
    WmiServices services{ledger(), events, enumeration};
    WmiLocator locator{ledger(), events, services};

    WmiTest() {
        replacements_.push_back(REPLACE(CoInitializeEx, [this](LPVOID reserved, DWORD model) -> HRESULT {
            EXPECT_EQ(reserved, nullptr);
            EXPECT_EQ(model, 0u);
            events.push_back("initialize");
            return initializeResult;
        }));
        replacements_.push_back(REPLACE(CoUninitialize, [this] { events.push_back("uninitialize"); }));
        replacements_.push_back(
            REPLACE(CoInitializeSecurity,
                    [this](PSECURITY_DESCRIPTOR descriptor, LONG count,
                           SOLE_AUTHENTICATION_SERVICE* services1, void* reserved1, DWORD level,
                           DWORD impersonation, void* list, DWORD capabilities, void* reserved3) -> HRESULT {
                        EXPECT_EQ(descriptor, nullptr);
                        EXPECT_EQ(count, -1);
                        EXPECT_EQ(services1, nullptr);
                        EXPECT_EQ(reserved1, nullptr);
                        EXPECT_EQ(level, 0u);
                        EXPECT_EQ(impersonation, 3u);
                        EXPECT_EQ(list, nullptr);
                        EXPECT_EQ(capabilities, 0u);
                        EXPECT_EQ(reserved3, nullptr);
                        return securityResult;
                    }));
        replacements_.push_back(REPLACE(
            CoCreateInstance,
            [this](REFCLSID id, LPUNKNOWN outer, DWORD context, REFIID iid, LPVOID* object) -> HRESULT {
                EXPECT_TRUE(IsEqualCLSID(id, CLSID_WbemLocator));
                EXPECT_EQ(outer, nullptr);
                EXPECT_EQ(context, 1u);
                EXPECT_TRUE(IsEqualIID(iid, IID_IWbemLocator));
                *object = SUCCEEDED(createResult) && !createsNothing ? locator.referenced() : nullptr;
                return createResult;
            }));
        replacements_.push_back(
            REPLACE(CoSetProxyBlanket,
                    [this](IUnknown* proxy, DWORD authentication, DWORD authorization, OLECHAR* principal,
                           DWORD level, DWORD impersonation, void* identity, DWORD capabilities) -> HRESULT {
                        EXPECT_EQ(proxy, static_cast<IUnknown*>(&services));
                        EXPECT_EQ(authentication, 10u);
                        EXPECT_EQ(authorization, 0u);
                        EXPECT_EQ(principal, nullptr);
                        EXPECT_EQ(level, 3u);
                        EXPECT_EQ(impersonation, 3u);
                        EXPECT_EQ(identity, nullptr);
                        EXPECT_EQ(capabilities, 0u);
                        return blanketResult;
                    }));
        // What the objects hand out goes back this way.
        replacements_.push_back(REPLACE(VariantClear, [](VARIANTARG* value) -> HRESULT {
            if (V_VT(value) == VT_BSTR && V_BSTR(value) != nullptr) {
                ledger().give(Kind::text, reinterpret_cast<std::uint64_t>(V_BSTR(value)), "VariantClear",
                              "the library");
            }
            return REAL(VariantClear)(value);
        }));
    }

    // The next query finds nothing but this object.
    void foundOnly(Properties properties) {
        enumeration.objects.clear();
        enumeration.asked = 0;
        found(std::move(properties));
    }

    // The query finds one more object.
    void found(Properties properties) {
        enumeration.objects.emplace_back(ledger(), events, std::move(properties));
    }

    std::ptrdiff_t count(const std::string& event) const { return std::ranges::count(events, event); }

private:
    std::vector<Replacement> replacements_;
};

}  // namespace testbed
