#pragma once

#include "bridge/com.h"

// wbemcli.h needs the types of com.h.
#include <wbemcli.h>

namespace winutil::inventory {

// One property of an object that a query found. One that cannot be read counts as missing: it never ends a
// listing.
class WmiProperty {
public:
    WmiProperty(IWbemClassObject* object, const wchar_t* name) noexcept;
    WmiProperty(const WmiProperty&) = delete;
    WmiProperty& operator=(const WmiProperty&) = delete;
    ~WmiProperty() { VariantClear(&value_); }

    // Neither missing nor null.
    bool hasValue() const noexcept { return type() >= VT_I2; }
    bool isText() const noexcept { return type() == VT_BSTR; }

    // Returns the text until the end of the scope; the empty one when it is none.
    const wchar_t* text() const noexcept;

    // Returns the number, converted from what else the property may be; 0 when that does not go.
    LONG number() noexcept;

private:
    VARTYPE type() const noexcept { return found_ ? V_VT(&value_) : VARTYPE{VT_EMPTY}; }

    VARIANT value_;
    bool found_;
};

}  // namespace winutil::inventory
