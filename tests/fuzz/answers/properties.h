// A WMI provider whose properties may be anything.
#pragma once

#include <windows.h>

// wbemcli.h needs COM's automation types.
#include <oleauto.h>

#include <wbemcli.h>

#include <cstring>

#include "answers/input.h"

namespace hostile {

class Properties {
public:
    explicit Properties(Input& input) : input_(input) {}

    // IWbemClassObject::Get
    HRESULT give(VARIANT& value) {
        constexpr HRESULT results[] = {WBEM_S_NO_ERROR, static_cast<HRESULT>(WBEM_E_NOT_FOUND), WBEM_S_FALSE};
        constexpr VARTYPE types[] = {VT_EMPTY, VT_NULL, VT_I2,   VT_I4,   VT_R8, VT_BSTR, VT_BOOL,
                                     VT_UI1,   VT_UI4,  VT_BSTR, VT_DATE, VT_CY, VT_I8,   VT_UI8};
        const HRESULT result = chooseCode(input_, results);
        V_VT(&value) = chooseCode(input_, types);
        const auto number = input_.value<LONGLONG>();
        std::memcpy(&V_I8(&value), &number, sizeof(number));
        if (V_VT(&value) == VT_BSTR) {
            const UINT length = input_.value<BYTE>();
            V_BSTR(&value) = length == 0 ? nullptr : SysAllocStringLen(nullptr, length);
            if (length != 0) {
                std::memset(V_BSTR(&value), 'x', length * sizeof(wchar_t));
                input_.copyTo(V_BSTR(&value), length * sizeof(wchar_t));
            }
        }
        return result;
    }

private:
    Input& input_;
};

}  // namespace hostile
