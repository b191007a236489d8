// What WMI knows of the computer.
#include "../inventory/wmi_fixture.h"
#include "reasons.h"
#include "recipe.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;

constexpr char cpuSignature[] =
    "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;JLjava/lang/String;II)V";
class WmiRecipe : public RecipeOn<WmiTest> {
protected:
    void toleratesWhatWmiMisses() {
        tolerates({"IWbemClassObject.Get"}, comesEmpty, Tolerance::any);
        tolerates({"IEnumWbemClassObject.Next"}, listEnds, Tolerance::any);
        tolerates({"CoInitializeEx with 0x80010106"}, anyModel);
    }
};

#define WMI_RECIPE(method, branch)                                        \
    class Recipe_##method##_##branch final : public WmiRecipe {           \
        void perform() override;                                          \
    };                                                                    \
    [[maybe_unused]] const bool method##_##branch##Added =                \
        testbed::addRecipe<Recipe_##method##_##branch>(#method, #branch); \
    void Recipe_##method##_##branch::perform()

WMI_RECIPE(getSystemModel, ofOneComputer) {
    found({{L"Manufacturer", text(L"Contoso")}, {L"Model", text(L"Workstation 7")}});
    toleratesWhatWmiMisses();
    examine([&] { return NATIVE(getSystemModel)(); });
}

WMI_RECIPE(getMotherboardUUID, ofOneBoard) {
    found({{L"UUID", text(L"4C4C4544-0031-3010-8048-B4C04F503832")}});
    toleratesWhatWmiMisses();
    examine([&] { return NATIVE(getMotherboardUUID)(); });
}

WMI_RECIPE(getProcessorInfo, ofOneProcessor) {
    found({{L"DeviceID", text(L"CPU0")},
           {L"Manufacturer", text(L"Contoso")},
           {L"Name", text(L"Fast")},
           {L"Architecture", number(9)},
           {L"NumberOfCores", number(4)},
           {L"NumberOfLogicalProcessors", number(8)},
           {L"CurrentClockSpeed", number(3000)},
           {L"Description", text(L"Family 6")}});
    toleratesWhatWmiMisses();
    leavesOut({"GetMethodID"}, noMethod);
    const JavaObject collector = noting("addCpuInfo", cpuSignature);
    examine([&] { NATIVE(getProcessorInfo)(collector); });
}

WMI_RECIPE(getMemoryInfo, ofOneModule) {
    found(
        {{L"DeviceLocator", text(L"DIMM 0")}, {L"Speed", number(3200)}, {L"Capacity", text(L"8589934592")}});
    toleratesWhatWmiMisses();
    leavesOut({"GetMethodID"}, noMethod);
    const JavaObject collector = noting("addMemoryInfo", "(Ljava/lang/String;IJ)V");
    examine([&] { NATIVE(getMemoryInfo)(collector); });
}

WMI_RECIPE(getMemoryInfo, withASpeedAsText) {
    found({{L"DeviceLocator", text(L"DIMM 0")}, {L"Speed", text(L"3200")}, {L"Capacity", text(L"1")}});
    toleratesWhatWmiMisses();
    tolerates({"VariantChangeType"}, comesEmpty, Tolerance::any);
    leavesOut({"GetMethodID"}, noMethod);
    const JavaObject collector = noting("addMemoryInfo", "(Ljava/lang/String;IJ)V");
    examine([&] { NATIVE(getMemoryInfo)(collector); });
}

WMI_RECIPE(getWindowsInstalledFeatures, ofAServer) {
    found({{L"ID", number(1)}, {L"ParentID", number(2)}, {L"Name", text(L"Backup")}});
    toleratesWhatWmiMisses();
    leavesOut({"GetMethodID", "FindClass"}, noMethod);
    const JavaObject features = java.list();
    examine([&] { NATIVE(getWindowsInstalledFeatures)(features); });
    noteElements(features);
}

}  // namespace
