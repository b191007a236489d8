// What the library does while it is loaded and unloaded.
#include <algorithm>
#include <set>

#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

const std::vector<std::string> loadingSteps = {
    "module kernel32",
    "function GetVolumeInformationW",
    "module kernel32",
    "function GetVolumePathNameW",
    "privilege SeRestorePrivilege",
    "privilege SeTakeOwnershipPrivilege",
    "privilege SeSecurityPrivilege",
    "load advapi32.dll",
    "function SetSecurityInfo",
    "function ConvertStringSecurityDescriptorToSecurityDescriptorW",
    "function ConvertSecurityDescriptorToStringSecurityDescriptorW",
    "load shell32.dll",
    "function SHCreateItemFromParsingName",
    "load ntdll.dll",
    "function NtQueryInformationProcess",
    "function NtSetInformationFile",
    "module Kernel32",
    "function CreateSymbolicLinkW",
    "function Wow64EnableWow64FsRedirection",
    "function IsWow64Process",
    "function SearchPathW",
    "section 1024",
};

// A copy of the library that logs what it does while it is loaded.
class LibraryTest : public WinUtilTest {
protected:
    LibraryTest() {
        // The reference that is given back without having been taken.
        fresh.ledger().allowUnknown("FreeLibrary");
    }

    FreshLibrary fresh{folder(), L"fresh.dll"};
    std::vector<std::string> steps;
    // A module or a function that the system does not have.
    std::string missing;
    std::vector<HMODULE> modules;
    LPCRITICAL_SECTION ownSection = nullptr;

private:
    template <class Function, class Body>
    Replacement replace(const char* name, Body body) {
        return fresh.system().replace<Function>(name, std::move(body));
    }

    HMODULE log(const char* step, const char* name, HMODULE module) {
        steps.push_back(std::string(step) + name);
        if (missing == name) {
            SetLastError(ERROR_MOD_NOT_FOUND);
            return nullptr;
        }
        return module;
    }

    const Replacement load_ = replace<decltype(::LoadLibraryA)>("LoadLibraryA", [this](LPCSTR name) {
        const HMODULE module = log("load ", name, missing == name ? nullptr : ::LoadLibraryA(name));
        modules.push_back(module);
        return module;
    });
    const Replacement find_ = replace<decltype(::GetModuleHandleA)>("GetModuleHandleA", [this](LPCSTR name) {
        const HMODULE module = log("module ", name == nullptr ? "(program)" : name, ::GetModuleHandleA(name));
        if (name != nullptr && std::string_view(name) == "Kernel32") {
            modules.push_back(module);
        }
        return module;
    });
    const Replacement resolve_ =
        replace<decltype(::GetProcAddress)>("GetProcAddress", [this](HMODULE module, LPCSTR name) -> FARPROC {
            steps.push_back(std::string("function ") + name);
            return missing == name ? nullptr : ::GetProcAddress(module, name);
        });
    const Replacement privilege_ = replace<decltype(::LookupPrivilegeValueA)>(
        "LookupPrivilegeValueA", [this](LPCSTR machine, LPCSTR name, PLUID value) {
            steps.push_back(std::string("privilege ") + name);
            return ::LookupPrivilegeValueA(machine, name, value);
        });
    const Replacement section_ = replace<decltype(::InitializeCriticalSectionAndSpinCount)>(
        "InitializeCriticalSectionAndSpinCount", [this](LPCRITICAL_SECTION given, DWORD spins) {
            steps.push_back("section " + std::to_string(spins));
            ownSection = given;
            return ::InitializeCriticalSectionAndSpinCount(given, spins);
        });
};

TEST_F(LibraryTest, TakesEveryStepOfLoadingInItsOrder) {
    EXPECT_TRUE(fresh.load());

    EXPECT_THAT(steps, ElementsAreArray(loadingSteps));
}

TEST_F(LibraryTest, SwitchesItsPrivilegesOn) {
    const auto adjust = fresh.system().replace<decltype(::AdjustTokenPrivileges)>(
        "AdjustTokenPrivileges",
        [](HANDLE, BOOL, PTOKEN_PRIVILEGES request, DWORD, PTOKEN_PRIVILEGES, PDWORD) {
            EXPECT_EQ(request->Privileges[0].Attributes, 2u);
            return TRUE;
        });

    EXPECT_TRUE(fresh.load());

    EXPECT_EQ(adjust.count(), 3u);
}

TEST_F(LibraryTest, LoadsWithoutTheRightToAnyPrivilege) {
    for (const char* function : {"OpenProcessToken", "LookupPrivilegeValueA", "AdjustTokenPrivileges"}) {
        steps.clear();
        const auto fail = fresh.system().answer(function, FALSE, ERROR_ACCESS_DENIED);

        EXPECT_TRUE(fresh.load()) << function;

        EXPECT_EQ(fail.count(), 3u);
        EXPECT_EQ(steps.back(), "section 1024");
        fresh.unload();
    }
}

TEST_F(LibraryTest, LoadsWithoutItsCriticalSection) {
    fresh.ledger().allowUnknown("DeleteCriticalSection");
    const auto fail = fresh.system().replace<decltype(::InitializeCriticalSectionAndSpinCount)>(
        "InitializeCriticalSectionAndSpinCount", [](LPCRITICAL_SECTION section, DWORD spins) {
            ::InitializeCriticalSectionAndSpinCount(section, spins);
            return FALSE;
        });

    EXPECT_TRUE(fresh.load());
}

TEST_F(LibraryTest, GivesAllFourModulesBackAndDeletesItsSectionLast) {
    ASSERT_TRUE(fresh.load());
    std::vector<HMODULE> freed;
    std::vector<std::string> order;
    const auto free = fresh.system().replace<decltype(::FreeLibrary)>("FreeLibrary", [&](HMODULE module) {
        freed.push_back(module);
        order.emplace_back("free");
        return TRUE;
    });
    const auto remove = fresh.system().replace<decltype(::DeleteCriticalSection)>(
        "DeleteCriticalSection", [&](LPCRITICAL_SECTION given) {
            // The run time has sections of its own.
            if (given == ownSection) {
                order.emplace_back("delete");
            }
            ::DeleteCriticalSection(given);
        });

    fresh.unload();

    EXPECT_THAT(freed, ElementsAreArray(modules));
    EXPECT_EQ(freed.at(3), ::GetModuleHandleA("kernel32"));
    EXPECT_THAT(order, ElementsAre("free", "free", "free", "free", "delete"));
}

TEST_F(LibraryTest, EntersItsSectionNever) {
    const auto enter = fresh.system().watch("EnterCriticalSection");
    ASSERT_TRUE(fresh.load());
    constexpr const char* name = "Java_com_qarvo_kel_util_WindowsUtil_exists";
    using Function = decltype(Java_com_qarvo_kel_util_WindowsUtil_exists);
    const NativeMethod<Function> method(java, name, fresh.exported<Function>(name));

    EXPECT_TRUE(method(folder().path()));
    fresh.unload();

    ASSERT_NE(ownSection, nullptr);
    for (const RecordedCall& call : enter.calls()) {
        EXPECT_NE(call.argument<LPCRITICAL_SECTION>(0), ownSection);
    }
}

TEST_F(LibraryTest, DoesNothingForThreadsThatComeAndGo) {
    ASSERT_TRUE(fresh.load());
    const std::vector<std::string> before = steps;

    const HANDLE thread = ::CreateThread(nullptr, 0, [](void*) -> DWORD { return 0; }, nullptr, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    ::WaitForSingleObject(thread, INFINITE);
    ::CloseHandle(thread);

    EXPECT_EQ(steps, before);
    EXPECT_EQ(fresh.system().count("FreeLibrary"), 0u);
    EXPECT_EQ(fresh.system().count("DeleteCriticalSection"), 0u);
}

struct MissingModule {
    const char* name;
    std::vector<std::string> functions;
};

class MissingModuleTest : public LibraryTest, public ::testing::WithParamInterface<MissingModule> {};

TEST_P(MissingModuleTest, LeavesItsFunctionsOutAndGoesOnWithTheOthers) {
    missing = GetParam().name;
    std::vector<std::string> expected = loadingSteps;
    for (const std::string& function : GetParam().functions) {
        std::erase(expected, "function " + function);
    }

    EXPECT_TRUE(fresh.load());
    EXPECT_THAT(steps, ElementsAreArray(expected));

    const auto free = fresh.system().watch("FreeLibrary");
    fresh.unload();
    EXPECT_EQ(free.count(), 3u);
    for (const RecordedCall& call : free.calls()) {
        EXPECT_NE(call.argument<HMODULE>(0), nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Modules, MissingModuleTest,
    ::testing::Values(MissingModule{"advapi32.dll",
                                    {"SetSecurityInfo",
                                     "ConvertStringSecurityDescriptorToSecurityDescriptorW",
                                     "ConvertSecurityDescriptorToStringSecurityDescriptorW"}},
                      MissingModule{"shell32.dll", {"SHCreateItemFromParsingName"}},
                      MissingModule{"ntdll.dll", {"NtQueryInformationProcess", "NtSetInformationFile"}},
                      MissingModule{"Kernel32",
                                    {"CreateSymbolicLinkW", "Wow64EnableWow64FsRedirection", "IsWow64Process",
                                     "SearchPathW"}}),
    [](const auto& module) {
        return std::string(module.param.name, std::string_view(module.param.name).find_first_of("3.l"));
    });

class MissingFunctionTest : public LibraryTest, public ::testing::WithParamInterface<std::string> {};

TEST_P(MissingFunctionTest, LeavesTheOthersAsTheyAre) {
    missing = GetParam();

    EXPECT_TRUE(fresh.load());

    EXPECT_THAT(steps, ElementsAreArray(loadingSteps));
}

INSTANTIATE_TEST_SUITE_P(Functions, MissingFunctionTest, ::testing::ValuesIn([] {
                             std::set<std::string> names;
                             for (const std::string& step : loadingSteps) {
                                 if (step.starts_with("function ")) {
                                     names.insert(step.substr(9));
                                 }
                             }
                             return std::vector<std::string>(names.begin(), names.end());
                         }()),
                         [](const auto& name) { return name.param; });

// The two functions that static initialisation resolves: without one of them no volume is an NTFS volume.
class VolumeFunctionTest : public WinUtilTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(VolumeFunctionTest, IsMissedWhereADirectorysSecurityDependsOnItsVolume) {
    FreshLibrary fresh(folder(), L"fresh.dll");
    fresh.ledger().allowUnknown("FreeLibrary");
    const auto hidden = fresh.system().hide({GetParam()});
    ASSERT_TRUE(fresh.load());
    constexpr const char* name = "Java_com_qarvo_kel_util_WindowsUtil_WinFile";
    using Function = decltype(Java_com_qarvo_kel_util_WindowsUtil_WinFile);
    const NativeMethod<Function> method(java, name, fresh.exported<Function>(name));

    const JavaObject record = method(folder().path(), JNI_TRUE, JNI_TRUE);

    EXPECT_EQ(record.arguments().at(5).text(), L"");
    EXPECT_EQ(fresh.system().count("GetFileSecurityW"), 0u);
    EXPECT_NE(NATIVE(WinFile)(folder().path(), JNI_TRUE, JNI_TRUE).arguments().at(5).text(), L"");
}

INSTANTIATE_TEST_SUITE_P(Functions, VolumeFunctionTest,
                         ::testing::Values("GetVolumeInformationW", "GetVolumePathNameW"),
                         [](const auto& name) { return std::string(name.param); });

}  // namespace
