// Properties whose values are not of the expected type.
#include "wmi_fixture.h"

namespace {

using namespace testbed;

class WmiProperty : public WmiTest {
protected:
    std::wstring slot;
    jlong megahertz = -1;
    JavaObject collector =
        java.collector("addMemoryInfo", "(Ljava/lang/String;IJ)V", [this](const Arguments& a) {
            slot = a[0].text();
            megahertz = a[1].number();
        });

    void report(Properties properties) {
        foundOnly(std::move(properties));
        NATIVE(getMemoryInfo)(collector);
    }
    jlong asNumber(const Property& property) {
        report({{L"Speed", property}});
        return megahertz;
    }
    std::wstring asText(const Property& property) {
        report({{L"DeviceLocator", property}});
        return slot;
    }
};

// A value that a function writes into the variant.
template <class Write>
Property value(VARTYPE type, Write write) {
    return [type, write](Ledger&, VARIANT& variant) {
        V_VT(&variant) = type;
        write(variant);
        return S_OK;
    };
}

Property arrayOf(VARTYPE type) {
    return value(static_cast<VARTYPE>(VT_ARRAY | type),
                 [type](VARIANT& variant) { V_ARRAY(&variant) = SafeArrayCreateVector(type, 0, 4); });
}

TEST_F(WmiProperty, IsANumberOf32BitsAsItIs) {
    EXPECT_EQ(asNumber(number(3200)), 3200);
    EXPECT_EQ(asNumber(number(-5)), -5);
    EXPECT_EQ(asNumber(number(3200, VT_UI4)), 3200);
    EXPECT_EQ(asNumber(number(-1, VT_UI4)), -1) << "the bits of an unsigned number";
    EXPECT_EQ(system().count("VariantChangeType"), 0u);
}

TEST_F(WmiProperty, OfAnotherNumberIsConverted) {
    // Behind a short number the union may hold anything.
    const auto small = [](VARIANT& variant) { V_I4(&variant) = 0x7A7A0010; };
    EXPECT_EQ(asNumber(value(VT_I2, small)), 16);
    EXPECT_EQ(asNumber(value(VT_UI2, small)), 16);
    EXPECT_EQ(asNumber(value(VT_I1, small)), 16);
    EXPECT_EQ(asNumber(value(VT_UI1, small)), 16);
    EXPECT_EQ(asNumber(value(VT_R8, [](VARIANT& variant) { V_R8(&variant) = 2666.0; })), 2666);
    EXPECT_EQ(asNumber(value(VT_I8, [](VARIANT& variant) { V_I8(&variant) = 2666; })), 2666);
    EXPECT_EQ(asNumber(value(VT_BOOL, [](VARIANT& variant) { V_BOOL(&variant) = VARIANT_TRUE; })), -1);
}

TEST_F(WmiProperty, OfATextIsConverted) {
    EXPECT_EQ(asNumber(text(L"3200")), 3200);
    EXPECT_EQ(asNumber(text(L"-1")), -1);
}

TEST_F(WmiProperty, IsZeroWhereNoConversionGoes) {
    EXPECT_EQ(asNumber(text(L"fast")), 0);
    EXPECT_EQ(asNumber(text(L"99999999999")), 0);
    EXPECT_EQ(asNumber(value(VT_I8, [](VARIANT& variant) { V_I8(&variant) = INT64_MAX; })), 0);
    EXPECT_EQ(asNumber(arrayOf(VT_I4)), 0);
    EXPECT_EQ(asNumber(value(VT_UNKNOWN, [](VARIANT& variant) { V_UNKNOWN(&variant) = nullptr; })), 0);
}

TEST_F(WmiProperty, IsZeroWithoutAValue) {
    EXPECT_EQ(asNumber(none(VT_EMPTY)), 0);
    EXPECT_EQ(asNumber(none(VT_NULL)), 0);
    EXPECT_EQ(asNumber(failing(noSuchProperty)), 0);
    report({});
    EXPECT_EQ(megahertz, 0);
    EXPECT_EQ(system().count("VariantChangeType"), 0u);
}

TEST_F(WmiProperty, IsNotTakenFromACallThatFailed) {
    const Property half = [](Ledger&, VARIANT& variant) {
        V_VT(&variant) = VT_I4;
        V_I4(&variant) = 77;
        return E_FAIL;
    };
    EXPECT_EQ(asNumber(half), 0);
}

TEST_F(WmiProperty, IsAnEmptyTextWhenItIsNone) {
    EXPECT_EQ(asText(text(L"DIMM 0")), L"DIMM 0");
    EXPECT_EQ(asText(number(4)), L"");
    EXPECT_EQ(asText(none(VT_NULL)), L"");
    EXPECT_EQ(asText(arrayOf(VT_BSTR)), L"");
    EXPECT_EQ(asText(failing(E_OUTOFMEMORY)), L"");
    EXPECT_EQ(asText(value(VT_BSTR, [](VARIANT& variant) { V_BSTR(&variant) = nullptr; })), L"");
}

TEST_F(WmiProperty, IsClearedWhateverItWas) {
    const auto initialized = system().watch("VariantInit");
    const auto destroyed = system().watch("VariantClear");
    for (const Property& property :
         {text(L"a"), number(1), none(VT_NULL), failing(E_FAIL), arrayOf(VT_BSTR)}) {
        report({{L"DeviceLocator", property}});
    }

    EXPECT_GE(initialized.count(), 15u);
    EXPECT_EQ(destroyed.count(), 15u) << "three properties of five objects";
    EXPECT_TRUE(ledger().isEmpty());
}

}  // namespace
