// WMI's interfaces with every method refused, so that the objects of the tests write only those that are
// called.
#pragma once

#include <windows.h>

#include <oleauto.h>
#include <wbemcli.h>

#include "fake_com.h"

namespace testbed {

class WmiObjectBase : public FakeCom<IWbemClassObject> {
public:
    using FakeCom::FakeCom;

    HRESULT WINAPI GetQualifierSet(IWbemQualifierSet**) override { return E_NOTIMPL; }
    HRESULT WINAPI Put(LPCWSTR, LONG, VARIANT*, CIMTYPE) override { return E_NOTIMPL; }
    HRESULT WINAPI Delete(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI GetNames(LPCWSTR, LONG, VARIANT*, SAFEARRAY**) override { return E_NOTIMPL; }
    HRESULT WINAPI BeginEnumeration(LONG) override { return E_NOTIMPL; }
    HRESULT WINAPI Next(LONG, BSTR*, VARIANT*, CIMTYPE*, LONG*) override { return E_NOTIMPL; }
    HRESULT WINAPI EndEnumeration() override { return E_NOTIMPL; }
    HRESULT WINAPI GetPropertyQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return E_NOTIMPL; }
    HRESULT WINAPI Clone(IWbemClassObject**) override { return E_NOTIMPL; }
    HRESULT WINAPI GetObjectText(LONG, BSTR*) override { return E_NOTIMPL; }
    HRESULT WINAPI SpawnDerivedClass(LONG, IWbemClassObject**) override { return E_NOTIMPL; }
    HRESULT WINAPI SpawnInstance(LONG, IWbemClassObject**) override { return E_NOTIMPL; }
    HRESULT WINAPI CompareTo(LONG, IWbemClassObject*) override { return E_NOTIMPL; }
    HRESULT WINAPI GetPropertyOrigin(LPCWSTR, BSTR*) override { return E_NOTIMPL; }
    HRESULT WINAPI InheritsFrom(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI GetMethod(LPCWSTR, LONG, IWbemClassObject**, IWbemClassObject**) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI PutMethod(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI DeleteMethod(LPCWSTR) override { return E_NOTIMPL; }
    HRESULT WINAPI BeginMethodEnumeration(LONG) override { return E_NOTIMPL; }
    HRESULT WINAPI NextMethod(LONG, BSTR*, IWbemClassObject**, IWbemClassObject**) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI EndMethodEnumeration() override { return E_NOTIMPL; }
    HRESULT WINAPI GetMethodQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return E_NOTIMPL; }
    HRESULT WINAPI GetMethodOrigin(LPCWSTR, BSTR*) override { return E_NOTIMPL; }
};

class WmiEnumerationBase : public FakeCom<IEnumWbemClassObject> {
public:
    using FakeCom::FakeCom;

    HRESULT WINAPI Reset() override { return E_NOTIMPL; }
    HRESULT WINAPI NextAsync(ULONG, IWbemObjectSink*) override { return E_NOTIMPL; }
    HRESULT WINAPI Clone(IEnumWbemClassObject**) override { return E_NOTIMPL; }
    HRESULT WINAPI Skip(LONG, ULONG) override { return E_NOTIMPL; }
};

class WmiServicesBase : public FakeCom<IWbemServices> {
public:
    using FakeCom::FakeCom;

    HRESULT WINAPI OpenNamespace(BSTR, LONG, IWbemContext*, IWbemServices**, IWbemCallResult**) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI CancelAsyncCall(IWbemObjectSink*) override { return E_NOTIMPL; }
    HRESULT WINAPI QueryObjectSink(LONG, IWbemObjectSink**) override { return E_NOTIMPL; }
    HRESULT WINAPI GetObject(BSTR, LONG, IWbemContext*, IWbemClassObject**, IWbemCallResult**) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI GetObjectAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    HRESULT WINAPI PutClass(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI PutClassAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI DeleteClass(BSTR, LONG, IWbemContext*, IWbemCallResult**) override { return E_NOTIMPL; }
    HRESULT WINAPI DeleteClassAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI CreateClassEnum(BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI CreateClassEnumAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI PutInstance(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI PutInstanceAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI DeleteInstance(BSTR, LONG, IWbemContext*, IWbemCallResult**) override { return E_NOTIMPL; }
    HRESULT WINAPI DeleteInstanceAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI CreateInstanceEnum(BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI CreateInstanceEnumAsync(BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ExecQueryAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ExecNotificationQuery(BSTR, BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ExecNotificationQueryAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemObjectSink*) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ExecMethod(BSTR, BSTR, LONG, IWbemContext*, IWbemClassObject*, IWbemClassObject**,
                              IWbemCallResult**) override {
        return E_NOTIMPL;
    }
    HRESULT WINAPI ExecMethodAsync(BSTR, BSTR, LONG, IWbemContext*, IWbemClassObject*,
                                   IWbemObjectSink*) override {
        return E_NOTIMPL;
    }
};

}  // namespace testbed
