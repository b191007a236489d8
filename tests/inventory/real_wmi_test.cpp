// The queries against the system's own WMI.
#include "wmi_fixture.h"

namespace {

using namespace testbed;

using RealWmi = WinUtilTest;

TEST_F(RealWmi, KnowsTheComputer) {
    const std::wstring model = NATIVE(getSystemModel)().text();
    const std::wstring uuid = NATIVE(getMotherboardUUID)().text();

    EXPECT_GT(model.size(), 2u) << toUtf8(model);
    EXPECT_NE(model.find(L' '), std::wstring::npos) << toUtf8(model);
    EXPECT_EQ(uuid.size(), 36u) << toUtf8(uuid);
    EXPECT_EQ(std::ranges::count(uuid, L'-'), 4) << toUtf8(uuid);
}

TEST_F(RealWmi, KnowsTheProcessors) {
    SYSTEM_INFO machine;
    GetNativeSystemInfo(&machine);
    jlong logicalProcessors = 0;
    const JavaObject collector = java.collector(
        "addCpuInfo",
        "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;JLjava/lang/String;II)V",
        [&](const Arguments& a) {
            EXPECT_EQ(a[0].text().substr(0, 3), L"CPU");
            EXPECT_NE(a[2].text(), L"");
            EXPECT_EQ(a[3].text(), L"x64");
            EXPECT_GT(a[4].number(), 0);
            EXPECT_GT(a[6].number(), 0);
            logicalProcessors += a[7].number();
        });

    NATIVE(getProcessorInfo)(collector);

    EXPECT_EQ(logicalProcessors, machine.dwNumberOfProcessors);
}

TEST_F(RealWmi, KnowsTheMemory) {
    jlong bytes = 0;
    const JavaObject collector =
        java.collector("addMemoryInfo", "(Ljava/lang/String;IJ)V", [&](const Arguments& a) {
            EXPECT_NE(a[0].text(), L"");
            bytes += a[2].number();
        });

    NATIVE(getMemoryInfo)(collector);

    EXPECT_GT(bytes, 1LL << 26);
}

TEST_F(RealWmi, KnowsNoFeaturesOfAServerThatThisIsNot) {
    const JavaObject features = java.list();

    NATIVE(getWindowsInstalledFeatures)(features);

    EXPECT_TRUE(FakeJava::listElements(features).empty());
}

TEST_F(RealWmi, AnswersAThreadOfTheOtherModeAndLeavesItsComAlone) {
    ASSERT_HRESULT_SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));

    EXPECT_EQ(NATIVE(getMotherboardUUID)().text().size(), 36u);

    EXPECT_EQ(system().count("CoUninitialize"), 0u);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE) << "COM is still there";
    CoUninitialize();
    CoUninitialize();
}

TEST_F(RealWmi, AnswersTheSameAgain) {
    const std::wstring first = NATIVE(getSystemModel)().text();

    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(NATIVE(getSystemModel)().text(), first);
    }
    EXPECT_EQ(system().count("CoInitializeEx"), system().count("CoUninitialize"));
}

}  // namespace
