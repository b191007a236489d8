#include "inventory/wmi_property.h"

namespace winutil::inventory {

WmiProperty::WmiProperty(IWbemClassObject* object, const wchar_t* name) noexcept {
    VariantInit(&value_);
    found_ = SUCCEEDED(object->Get(name, 0, &value_, nullptr, nullptr));
}

const wchar_t* WmiProperty::text() const noexcept {
    // A null pointer is the empty text, too.
    return isText() && V_BSTR(&value_) != nullptr ? V_BSTR(&value_) : L"";
}

LONG WmiProperty::number() noexcept {
    if (!hasValue()) {
        return 0;
    }
    if (type() == VT_I4 || type() == VT_UI4) {
        return V_I4(&value_);
    }
    VARIANT converted;
    VariantInit(&converted);
    return SUCCEEDED(VariantChangeType(&converted, &value_, 0, VT_I4)) ? V_I4(&converted) : 0;
}

}  // namespace winutil::inventory
