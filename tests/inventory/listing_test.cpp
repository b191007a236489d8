// Processors, memory modules and server features on their way to Java.
#include "wmi_fixture.h"

namespace {

using namespace testbed;

constexpr char cpuSignature[] =
    "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;JLjava/lang/String;II)V";
constexpr char memorySignature[] = "(Ljava/lang/String;IJ)V";

struct Cpu {
    std::wstring deviceId;
    std::wstring manufacturer;
    std::wstring name;
    std::wstring architecture;
    jlong megahertz;
    std::wstring description;
    jlong cores;
    jlong logicalProcessors;
    bool operator==(const Cpu&) const = default;
};

struct Module {
    std::wstring slot;
    jlong megahertz;
    jlong bytes;
    bool operator==(const Module&) const = default;
};

struct Feature {
    jlong id;
    jlong parentId;
    std::wstring name;
    bool operator==(const Feature&) const = default;
};

class Processors : public WmiTest {
protected:
    std::vector<Cpu> cpus;
    JavaObject collector = java.collector("addCpuInfo", cpuSignature, [this](const Arguments& a) {
        cpus.push_back({a[0].text(), a[1].text(), a[2].text(), a[3].text(), a[4].number(), a[5].text(),
                        a[6].number(), a[7].number()});
    });

    // The text for a code of the architecture.
    std::wstring architecture(const Property& code) {
        cpus.clear();
        foundOnly({{L"Architecture", code}});
        NATIVE(getProcessorInfo)(collector);
        return cpus.at(0).architecture;
    }
};

class MemoryModules : public WmiTest {
protected:
    std::vector<Module> modules;
    JavaObject collector = java.collector("addMemoryInfo", memorySignature, [this](const Arguments& a) {
        modules.push_back({a[0].text(), a[1].number(), a[2].number()});
    });

    jlong capacity(const Property& bytes) {
        modules.clear();
        foundOnly({{L"Capacity", bytes}});
        NATIVE(getMemoryInfo)(collector);
        return modules.at(0).bytes;
    }
};

class ServerFeatures : public WmiTest {
protected:
    std::vector<Feature> list() {
        const JavaObject collection = java.list();
        NATIVE(getWindowsInstalledFeatures)(collection);
        std::vector<Feature> features;
        for (const JavaObject& element : FakeJava::listElements(collection)) {
            EXPECT_EQ(element.className(), "com/qarvo/kel/util/WinServerFeature");
            EXPECT_EQ(element.constructor(), "(IILjava/lang/String;)V");
            const auto& a = element.arguments();
            features.push_back({a[0].number(), a[1].number(), a[2].text()});
        }
        return features;
    }
};

Properties processor(const std::wstring& deviceId) {
    return {{L"DeviceID", text(deviceId)},        {L"Manufacturer", text(L"Maker")},
            {L"Name", text(L"Fast One")},         {L"Architecture", number(9)},
            {L"CurrentClockSpeed", number(3600)}, {L"Description", text(L"Family 6")},
            {L"NumberOfCores", number(8)},        {L"NumberOfLogicalProcessors", number(16)}};
}

Properties module(const std::wstring& slot, LONG megahertz, const std::wstring& bytes) {
    return {{L"DeviceLocator", text(slot)}, {L"Speed", number(megahertz)}, {L"Capacity", text(bytes)}};
}

Properties feature(LONG id, LONG parent, const std::wstring& name) {
    return {{L"ID", number(id)}, {L"ParentID", number(parent)}, {L"Name", text(name)}};
}

const Thrown full{"java/lang/IllegalStateException", L"full"};

TEST_F(Processors, AreReportedInOrderWithAllThatIsKnown) {
    found(processor(L"CPU0"));
    found(processor(L"CPU1"));

    NATIVE(getProcessorInfo)(collector);

    const Cpu first{L"CPU0", L"Maker", L"Fast One", L"x64", 3600, L"Family 6", 8, 16};
    Cpu second = first;
    second.deviceId = L"CPU1";
    EXPECT_EQ(cpus, (std::vector{first, second}));
}

TEST_F(Processors, HaveEmptyTextsAndZerosForWhatIsUnknown) {
    found({});
    Properties nulls = processor(L"");
    for (auto& [name, value] : nulls) {
        value = none(VT_NULL);
    }
    found(nulls);

    NATIVE(getProcessorInfo)(collector);

    EXPECT_EQ(cpus, (std::vector<Cpu>(2, {L"", L"", L"", L"", 0, L"", 0, 0})));
}

TEST_F(Processors, NameTheirArchitecture) {
    const std::map<LONG, std::wstring> names{{0, L"x86"},
                                             {1, L"MIPS"},
                                             {2, L"Alpha"},
                                             {3, L"PowerPC"},
                                             {4, L"Unknown"},
                                             {5, L"Unknown"},
                                             {6, L"Itanium-based systems"},
                                             {7, L"Unknown"},
                                             {8, L"Unknown"},
                                             {9, L"x64"},
                                             {10, L"Unknown"},
                                             {12, L"Unknown"},
                                             {-1, L"Unknown"}};
    for (const auto& [code, name] : names) {
        EXPECT_EQ(architecture(number(code)), name) << code;
    }
    EXPECT_EQ(architecture(text(L"9")), L"x64");
    EXPECT_EQ(architecture(none(VT_NULL)), L"");
    EXPECT_EQ(architecture(none(VT_EMPTY)), L"");
    EXPECT_EQ(architecture(failing(noSuchProperty)), L"");
}

TEST_F(Processors, ReachNoCollectorWithoutTheMethod) {
    found(processor(L"CPU0"));
    found(processor(L"CPU1"));

    NATIVE(getProcessorInfo)(java.object("java/lang/Object"));

    EXPECT_FALSE(java.isPending());
    EXPECT_EQ(enumeration.asked, 3u);
    EXPECT_EQ(java.count("NewString"), 0u);
}

TEST_F(Processors, EndWithTheExceptionOfTheCollector) {
    found(processor(L"CPU0"));
    found(processor(L"CPU1"));
    const JavaObject thrower = java.collector("addCpuInfo", cpuSignature, [&](const Arguments&) {
        throw JavaThrow{java.exception(full.className, full.message)};
    });

    NATIVE(getProcessorInfo)(thrower);

    EXPECT_EQ(java.takeException(), full);
    EXPECT_EQ(enumeration.asked, 1u);
    EXPECT_EQ(count("uninitialize"), 1);
}

TEST_F(Processors, EndWhenTheJvmHasNoMemory) {
    for (std::size_t k = 1; k <= 5; ++k) {
        foundOnly(processor(L"CPU0"));
        found(processor(L"CPU1"));
        java.failCall("NewString", k);

        NATIVE(getProcessorInfo)(collector);

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << k;
        EXPECT_EQ(enumeration.asked, 1u) << k;
    }
    EXPECT_TRUE(cpus.empty());
}

TEST_F(Processors, KeepTheReferencesFlat) {
    for (int i = 0; i < 500; ++i) {
        found(processor(L"CPU"));
    }

    NATIVE(getProcessorInfo)(collector);

    EXPECT_EQ(cpus.size(), 500u);
    EXPECT_LE(java.peakReferences(), 6u);
}

TEST_F(MemoryModules, AreReportedInOrder) {
    found(module(L"DIMM 0", 3200, L"8589934592"));
    found(module(L"DIMM 1", 2666, L"17179869184"));

    NATIVE(getMemoryInfo)(collector);

    EXPECT_EQ(modules, (std::vector<Module>{{L"DIMM 0", 3200, 8589934592}, {L"DIMM 1", 2666, 17179869184}}));
}

TEST_F(MemoryModules, HaveAnEmptySlotAndZerosForWhatIsUnknown) {
    found({});
    found({{L"DeviceLocator", none(VT_NULL)}, {L"Speed", none(VT_NULL)}, {L"Capacity", none(VT_NULL)}});
    found({{L"DeviceLocator", number(3)}, {L"Speed", text(L"3200")}, {L"Capacity", number(1024)}});

    NATIVE(getMemoryInfo)(collector);

    EXPECT_EQ(modules, (std::vector<Module>{{L"", 0, 0}, {L"", 0, 0}, {L"", 3200, 0}}));
}

TEST_F(MemoryModules, HaveACapacityOf64Bits) {
    EXPECT_EQ(capacity(text(L"0")), 0);
    EXPECT_EQ(capacity(text(L"4294967296")), 4294967296);
    EXPECT_EQ(capacity(text(L"9223372036854775807")), INT64_MAX);
    EXPECT_EQ(capacity(text(L"18446744073709551615")), INT64_MAX) << "the most that a long holds";
    EXPECT_EQ(capacity(text(L"")), 0);
    EXPECT_EQ(capacity(text(L"unknown")), 0);
}

TEST_F(MemoryModules, ReachNoCollectorWithoutTheMethod) {
    found(module(L"DIMM 0", 3200, L"1"));

    NATIVE(getMemoryInfo)(java.object("java/lang/Object"));

    EXPECT_FALSE(java.isPending());
    EXPECT_EQ(java.count("NewString"), 0u);
}

TEST_F(MemoryModules, EndWithTheExceptionOfTheCollector) {
    found(module(L"DIMM 0", 3200, L"1"));
    found(module(L"DIMM 1", 3200, L"1"));
    const JavaObject thrower = java.collector("addMemoryInfo", memorySignature, [&](const Arguments&) {
        throw JavaThrow{java.exception(full.className, full.message)};
    });

    NATIVE(getMemoryInfo)(thrower);

    EXPECT_EQ(java.takeException(), full);
    EXPECT_EQ(enumeration.asked, 1u);
}

TEST_F(MemoryModules, EndWhenTheJvmHasNoMemory) {
    found(module(L"DIMM 0", 3200, L"1"));
    found(module(L"DIMM 1", 3200, L"1"));
    java.failCall("NewString");

    NATIVE(getMemoryInfo)(collector);

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_TRUE(modules.empty());
    EXPECT_EQ(enumeration.asked, 1u);
}

TEST_F(MemoryModules, KeepTheReferencesFlat) {
    for (int i = 0; i < 500; ++i) {
        found(module(L"DIMM", 3200, L"1"));
    }

    NATIVE(getMemoryInfo)(collector);

    EXPECT_EQ(modules.size(), 500u);
    EXPECT_LE(java.peakReferences(), 2u);
}

TEST_F(ServerFeatures, AreAddedInOrder) {
    found(feature(2, 0, L"Web Server"));
    found(feature(140, 2, L"Web Tools"));

    EXPECT_EQ(list(), (std::vector<Feature>{{2, 0, L"Web Server"}, {140, 2, L"Web Tools"}}));
}

TEST_F(ServerFeatures, HaveAnEmptyNameAndZerosForWhatIsUnknown) {
    found({});
    found({{L"ID", text(L"7")}, {L"ParentID", none(VT_NULL)}, {L"Name", number(7)}});

    EXPECT_EQ(list(), (std::vector<Feature>{{0, 0, L""}, {7, 0, L""}}));
}

TEST_F(ServerFeatures, NeedTheirClass) {
    java.removeClass("com/qarvo/kel/util/WinServerFeature");
    found(feature(2, 0, L"Web Server"));

    EXPECT_EQ(list(), std::vector<Feature>{});

    EXPECT_FALSE(java.isPending());
    EXPECT_EQ(events, Events{}) << "no session";
}

TEST_F(ServerFeatures, NeedTheirConstructor) {
    java.removeMethod("com/qarvo/kel/util/WinServerFeature", "<init>", "(IILjava/lang/String;)V");

    EXPECT_EQ(list(), std::vector<Feature>{});

    EXPECT_FALSE(java.isPending());
    EXPECT_EQ(events, Events{}) << "no session";
}

TEST_F(ServerFeatures, NeedAListThatCanBeAddedTo) {
    NATIVE(getWindowsInstalledFeatures)(java.object("java/lang/Object"));

    EXPECT_FALSE(java.isPending());
    EXPECT_EQ(events, Events{}) << "no session";
}

TEST_F(ServerFeatures, EndWithTheExceptionOfTheList) {
    found(feature(2, 0, L"Web Server"));
    found(feature(3, 0, L"File Server"));
    const JavaObject thrower = java.collector("add", "(Ljava/lang/Object;)Z", [&](const Arguments&) -> Value {
        throw JavaThrow{java.exception(full.className, full.message)};
    });

    NATIVE(getWindowsInstalledFeatures)(thrower);

    EXPECT_EQ(java.takeException(), full);
    EXPECT_EQ(enumeration.asked, 1u);
    EXPECT_EQ(count("uninitialize"), 1);
}

TEST_F(ServerFeatures, EndWhenTheJvmHasNoMemory) {
    for (const char* function : {"NewString", "NewObject"}) {
        foundOnly(feature(2, 0, L"Web Server"));
        found(feature(3, 0, L"File Server"));
        java.failCall(function);

        EXPECT_EQ(list(), std::vector<Feature>{}) << function;

        EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError") << function;
        EXPECT_EQ(enumeration.asked, 1u) << function;
    }
}

TEST_F(ServerFeatures, KeepTheReferencesFlat) {
    for (int i = 0; i < 500; ++i) {
        found(feature(i, 0, L"Feature"));
    }

    EXPECT_EQ(list().size(), 500u);
    EXPECT_LE(java.peakReferences(), 4u);
}

}  // namespace
