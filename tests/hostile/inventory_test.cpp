// WMI objects whose properties are anything.
#include "answers/properties.h"
#include "hostile_test.h"
#include "wmi_fixture.h"

namespace testbed {

namespace {

using HostileInventory = HostileTest<WmiTest>;

TEST_F(HostileInventory, HasPropertiesOfAnyType) {
    forEachInput("wmi_property", [&](hostile::Input& input) {
        hostile::Properties properties(input);
        Properties processor;
        for (const wchar_t* name :
             {L"DeviceID", L"Manufacturer", L"Name", L"Description", L"CurrentClockSpeed", L"NumberOfCores",
              L"NumberOfLogicalProcessors", L"Architecture"}) {
            processor[name] = [&](Ledger& ledger, VARIANT& value) {
                const HRESULT result = properties.give(value);
                if (V_VT(&value) == VT_BSTR && V_BSTR(&value) != nullptr) {
                    ledger.take(Kind::text, reinterpret_cast<std::uint64_t>(V_BSTR(&value)), "Get",
                                "a WMI object");
                }
                return result;
            };
        }
        foundOnly(std::move(processor));
        NATIVE(getProcessorInfo)(collector());
    });
}

}  // namespace

}  // namespace testbed
