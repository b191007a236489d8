// The computer's model and the UUID of its motherboard.
#include "wmi_fixture.h"

namespace {

using namespace testbed;

using SystemModel = WmiTest;
using MotherboardUuid = WmiTest;

Properties computer(const std::wstring& manufacturer, const std::wstring& model) {
    return {{L"Manufacturer", text(manufacturer)}, {L"Model", text(model)}};
}

TEST_F(SystemModel, IsManufacturerAndModel) {
    found(computer(L"Contoso", L"Workstation 7"));

    EXPECT_EQ(NATIVE(getSystemModel)().text(), L"Contoso Workstation 7");
}

TEST_F(SystemModel, IsEmptyWithoutAComputer) {
    EXPECT_EQ(NATIVE(getSystemModel)().text(), L"");
}

TEST_F(SystemModel, IsThatOfTheLastComputer) {
    found(computer(L"Contoso", L"Workstation 7"));
    found(computer(L"Fabrikam", L"Server 1"));

    EXPECT_EQ(NATIVE(getSystemModel)().text(), L"Fabrikam Server 1");
}

TEST_F(SystemModel, EndsWithTheManufacturerWhenTheModelIsNoText) {
    for (const Property& model : {none(VT_NULL), none(VT_EMPTY), number(7), failing(E_FAIL)}) {
        foundOnly({{L"Manufacturer", text(L"Contoso")}, {L"Model", model}});

        EXPECT_EQ(NATIVE(getSystemModel)().text(), L"Contoso");
    }
}

TEST_F(SystemModel, BeginsWithABlankWithoutAManufacturer) {
    found({{L"Manufacturer", none(VT_NULL)}, {L"Model", text(L"Workstation 7")}});
    EXPECT_EQ(NATIVE(getSystemModel)().text(), L" Workstation 7");
}

TEST_F(SystemModel, DropsAnEarlierManufacturerForNone) {
    found(computer(L"Contoso", L"Workstation 7"));
    found({});

    EXPECT_EQ(NATIVE(getSystemModel)().text(), L"");
}

TEST_F(SystemModel, KeepsTheBlankBeforeAnEmptyModel) {
    found(computer(L"Contoso", L""));

    EXPECT_EQ(NATIVE(getSystemModel)().text(), L"Contoso ");
}

TEST_F(SystemModel, IsCutAt1023Characters) {
    found(computer(std::wstring(1020, L'm'), L"abcdef"));
    EXPECT_EQ(NATIVE(getSystemModel)().text(), std::wstring(1020, L'm') + L" ab");

    foundOnly(computer(std::wstring(3000, L'm'), L"abcdef"));
    EXPECT_EQ(NATIVE(getSystemModel)().text(), std::wstring(1023, L'm'));
}

TEST_F(SystemModel, KeepsCharactersOfEveryScript) {
    found(computer(L"\u0416\u6F22", L"\xD83D\xDCBE"));

    EXPECT_EQ(NATIVE(getSystemModel)().text(), L"\u0416\u6F22 \xD83D\xDCBE");
}

TEST_F(SystemModel, LeavesTheJvmsErrorWhenItHasNoMemory) {
    java.failCall("NewString");

    EXPECT_FALSE(NATIVE(getSystemModel)());

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_EQ(count("uninitialize"), 1);
}

TEST_F(MotherboardUuid, IsTheTextThatWmiGives) {
    found({{L"UUID", text(L"4C4C4544-0031-3010-8048-B4C04F503832")}});

    EXPECT_EQ(NATIVE(getMotherboardUUID)().text(), L"4C4C4544-0031-3010-8048-B4C04F503832");
}

TEST_F(MotherboardUuid, IsEmptyWhenThereIsNone) {
    EXPECT_EQ(NATIVE(getMotherboardUUID)().text(), L"");

    for (const Property& uuid : {none(VT_NULL), number(1), failing(noSuchProperty)}) {
        foundOnly({{L"UUID", uuid}});
        EXPECT_EQ(NATIVE(getMotherboardUUID)().text(), L"");
    }
}

TEST_F(MotherboardUuid, IsThatOfTheLastComputer) {
    found({{L"UUID", text(L"one, and longer")}});
    found({{L"UUID", text(L"two")}});

    EXPECT_EQ(NATIVE(getMotherboardUUID)().text(), L"two");
}

}  // namespace
