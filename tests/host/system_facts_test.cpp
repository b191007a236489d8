// Facts about the system, and the calls that are passed through to it.
#include <windows.h>

#include <combaseapi.h>
#include <conio.h>
#include <shlobj.h>

#include <cstring>
#include <future>

#include "winutil_fixture.h"

namespace {

using namespace testbed;

class SystemVersion : public WinUtilTest {
protected:
    // A system of this version.
    Replacement show(DWORD platform, BYTE product, BOOL result = TRUE) {
        return REPLACE(GetVersionExA, [platform, product, result](LPOSVERSIONINFOA information) {
            OSVERSIONINFOEXA empty = {};
            empty.dwOSVersionInfoSize = 156;
            EXPECT_EQ(std::memcmp(information, &empty, sizeof(empty)), 0);
            auto* version = reinterpret_cast<OSVERSIONINFOEXA*>(information);
            version->dwMajorVersion = 10;
            version->dwMinorVersion = 7;
            version->dwPlatformId = platform;
            version->wProductType = product;
            return result;
        });
    }
};

TEST_F(SystemVersion, IsTheOneThatTheSystemShows) {
    OSVERSIONINFOEXA version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    ASSERT_TRUE(GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&version)));

    EXPECT_EQ(NATIVE(getMajorVersion)(), static_cast<jint>(version.dwMajorVersion));
    EXPECT_EQ(NATIVE(getMinorVersion)(), static_cast<jint>(version.dwMinorVersion));
    EXPECT_EQ(NATIVE(getProductType)(), version.wProductType);
}

TEST_F(SystemVersion, HasMajorMinorAndProduct) {
    const auto version = show(VER_PLATFORM_WIN32_NT, VER_NT_SERVER);

    EXPECT_EQ(NATIVE(getMajorVersion)(), 10);
    EXPECT_EQ(NATIVE(getMinorVersion)(), 7);
    EXPECT_EQ(NATIVE(getProductType)(), 3);
    EXPECT_EQ(version.count(), 3u);
}

TEST_F(SystemVersion, HasTheProductTypesOfTheNtFamily) {
    for (const int product : {1, 2, 3, 0, 255}) {
        const auto version = show(VER_PLATFORM_WIN32_NT, static_cast<BYTE>(product));
        EXPECT_EQ(NATIVE(getProductType)(), product);
    }
}

TEST_F(SystemVersion, HasNoProductTypeOnAnotherPlatform) {
    for (const DWORD platform : {0ul, 1ul, 3ul}) {
        const auto version = show(platform, VER_NT_WORKSTATION);
        EXPECT_EQ(NATIVE(getProductType)(), -1);
    }
}

TEST_F(SystemVersion, IsZeroWhenTheSystemDoesNotTell) {
    const auto version = system().answer("GetVersionExA", FALSE, ERROR_INVALID_PARAMETER);

    EXPECT_EQ(NATIVE(getMajorVersion)(), 0);
    EXPECT_EQ(NATIVE(getMinorVersion)(), 0);
    EXPECT_EQ(NATIVE(getProductType)(), -1);
}

// Whether the call succeeds is not looked at.
TEST_F(SystemVersion, IsWhatWasWrittenWhateverTheResult) {
    const auto version = show(VER_PLATFORM_WIN32_NT, VER_NT_WORKSTATION, FALSE);

    EXPECT_EQ(NATIVE(getMajorVersion)(), 10);
    EXPECT_EQ(NATIVE(getProductType)(), 1);
}

class Redirection : public WinUtilTest {
protected:
    // A method of a copy of the library that was loaded on a system without these functions.
    template <class Function>
    NativeMethod<Function> nativeOf(FreshLibrary& fresh, const char* name) {
        return NativeMethod<Function>(java, name, fresh.exported<Function>(name));
    }
};

TEST_F(Redirection, IsSwitchedAsAsked) {
    for (const bool enable : {true, false}) {
        const auto change = system().answer("Wow64EnableWow64FsRedirection", 0x101, ERROR_SUCCESS);

        EXPECT_TRUE(NATIVE(Wow64EnableWow64FsRedirection)(enable));

        ASSERT_EQ(change.count(), 1u);
        EXPECT_EQ(change.calls()[0].argument<BYTE>(0), enable ? 1 : 0);
    }
}

TEST_F(Redirection, IsNotThereToSwitchInThisProcess) {
    EXPECT_FALSE(NATIVE(Wow64EnableWow64FsRedirection)(false));
    EXPECT_FALSE(NATIVE(Wow64EnableWow64FsRedirection)(true));
}

TEST_F(Redirection, IsFineOnASystemWithoutIt) {
    FreshLibrary fresh(folder(), L"without redirection.dll");
    const auto hidden = fresh.system().hide({"Wow64EnableWow64FsRedirection", "IsWow64Process"});
    // The entry point gives back a kernel32 that it never took.
    fresh.ledger().allowUnknown("FreeLibrary");
    ASSERT_TRUE(fresh.load());

    EXPECT_TRUE(nativeOf<decltype(Java_com_qarvo_kel_util_WindowsUtil_Wow64EnableWow64FsRedirection)>(
        fresh, "Java_com_qarvo_kel_util_WindowsUtil_Wow64EnableWow64FsRedirection")(false));
    EXPECT_FALSE(nativeOf<decltype(Java_com_qarvo_kel_util_WindowsUtil_isWindows64)>(
        fresh, "Java_com_qarvo_kel_util_WindowsUtil_isWindows64")());

    fresh.unload();
}

TEST_F(Redirection, MakesA32BitProcessOnA64BitSystem) {
    EXPECT_FALSE(NATIVE(isWindows64)());

    const auto answerWith = [&](BOOL result, BOOL value) {
        return REPLACE(IsWow64Process, [=](HANDLE process, PBOOL wow64) {
            EXPECT_EQ(process, GetCurrentProcess());
            *wow64 = value;
            return result;
        });
    };
    {
        const auto answer = answerWith(TRUE, TRUE);
        EXPECT_TRUE(NATIVE(isWindows64)());
    }
    const auto answer = answerWith(FALSE, TRUE);
    EXPECT_FALSE(NATIVE(isWindows64)());
}

using HostFacts = WinUtilTest;

TEST_F(HostFacts, SayWhetherTheUserIsAnAdministrator) {
    EXPECT_EQ(NATIVE(isUserAnAdmin)(), IsUserAnAdmin() != FALSE);
    for (const BOOL result : {0, 1, 0x100}) {
        const auto answer = system().answer("IsUserAnAdmin", static_cast<std::uint64_t>(result));
        EXPECT_EQ(NATIVE(isUserAnAdmin)(), result != FALSE);
    }
}

TEST_F(HostFacts, HaveTheLocationOfTheUser) {
    EXPECT_EQ(NATIVE(getLocationID)(), GetUserGeoID(GEOCLASS_NATION));
    const auto answer = system().answer("GetUserGeoID", static_cast<std::uint64_t>(GEOID_NOT_AVAILABLE));

    EXPECT_EQ(NATIVE(getLocationID)(), -1);

    EXPECT_EQ(answer.calls().at(0).argument<DWORD>(0), 16u);
}

TEST_F(HostFacts, HaveTheNextKeyOfTheConsole) {
    for (const int key : {0x79, 0x0D, 0, 0xE0, 0x84, -1}) {
        const auto console = REPLACE(_getch, [key] { return key; });
        EXPECT_EQ(NATIVE(getConsoleChar)(), key);
    }
}

// COM belongs to a thread: each test has one of its own.
class ComOfAThread : public WinUtilTest {
protected:
    template <class Function>
    static auto call(FakeJava& ownJava, const char* name) {
        return NativeMethod<Function>(ownJava, name, library().exported<Function>(name));
    }
    static jint start(FakeJava& ownJava, DWORD model) {
        return call<decltype(Java_com_qarvo_kel_util_WindowsUtil_CoInitializeEx)>(
            ownJava, "Java_com_qarvo_kel_util_WindowsUtil_CoInitializeEx")(model);
    }
    static void end(FakeJava& ownJava) {
        call<decltype(Java_com_qarvo_kel_util_WindowsUtil_CoUninitialize)>(
            ownJava, "Java_com_qarvo_kel_util_WindowsUtil_CoUninitialize")();
    }
    template <class Body>
    static void onNewThread(Body body) {
        std::async(std::launch::async, [&] {
            FakeJava ownJava;
            body(ownJava);
        }).get();
    }
};

TEST_F(ComOfAThread, IsStartedOnceAndCounted) {
    onNewThread([](FakeJava& ownJava) {
        EXPECT_EQ(start(ownJava, COINIT_MULTITHREADED), S_OK);
        EXPECT_EQ(start(ownJava, COINIT_MULTITHREADED), S_FALSE);
        end(ownJava);
        end(ownJava);
    });
}

TEST_F(ComOfAThread, KeepsItsModel) {
    onNewThread([](FakeJava& ownJava) {
        EXPECT_EQ(start(ownJava, COINIT_APARTMENTTHREADED), S_OK);
        EXPECT_EQ(start(ownJava, COINIT_MULTITHREADED), static_cast<jint>(0x80010106));
        end(ownJava);
    });
}

TEST_F(ComOfAThread, CanBeStartedAnewWhenItHasEnded) {
    onNewThread([](FakeJava& ownJava) {
        EXPECT_EQ(start(ownJava, COINIT_APARTMENTTHREADED), S_OK);
        end(ownJava);
        EXPECT_EQ(start(ownJava, COINIT_MULTITHREADED), S_OK);
        end(ownJava);
    });
}

TEST_F(ComOfAThread, GetsTheFlagsAsTheyAre) {
    const auto initialize = system().answer("CoInitializeEx", static_cast<DWORD>(E_INVALIDARG));

    EXPECT_EQ(NATIVE(CoInitializeEx)(-1), E_INVALIDARG);

    EXPECT_EQ(initialize.calls().at(0).argument<void*>(0), nullptr);
    EXPECT_EQ(initialize.calls().at(0).argument<DWORD>(1), 0xFFFFFFFFu);
}

}  // namespace
