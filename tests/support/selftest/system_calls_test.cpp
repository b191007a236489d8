#include <gmock/gmock.h>

#include <thread>

#include "pe_image.h"
#include "selftest_library.h"
#include "text.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const wchar_t* windowsFolder = L"C:\\windows";

class SystemCallsTest : public MisbehavingLibrary {
protected:
    SystemCallsTest() {
        EXPECT_TRUE(library.load());
        library.system().start();
    }
    SystemCalls& system() { return library.system(); }
};

TEST_F(SystemCallsTest, LeavesACallThatNothingReplacesAsItIs) {
    EXPECT_EQ(exported<DWORD(const wchar_t*)>("lastErrorOfAttributes")(windowsFolder), 0u);
    EXPECT_EQ(exported<DWORD(const wchar_t*)>("lastErrorOfAttributes")(L"C:\\missing"),
              DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(SystemCallsTest, PassesEveryArgumentOnAndTheResultBack) {
    std::vector<std::uint64_t> seen;
    const auto open = system().replace<decltype(CreateFileW)>(
        "CreateFileW", [&](LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD disposition,
                           DWORD flags, HANDLE model) {
            seen = {static_cast<std::uint64_t>(path[0]),   access, share, disposition, flags,
                    reinterpret_cast<std::uint64_t>(model)};
            return Ledger::fakeHandle();
        });

    const HANDLE file = exported<HANDLE(const wchar_t*, DWORD, DWORD, DWORD, DWORD, HANDLE)>(
        "openWithEverything")(L"x", 0x80000000, 3, 4, 0x02000001, reinterpret_cast<HANDLE>(0x1234567890));

    EXPECT_TRUE(Ledger::isFake(reinterpret_cast<std::uint64_t>(file)));
    EXPECT_THAT(seen, ElementsAre(L'x', 0x80000000, 3, 4, 0x02000001, 0x1234567890));
}

TEST_F(SystemCallsTest, KeepsFloatingPointArguments) {
    const auto watch = system().watch("_copysign");

    EXPECT_EQ(exported<double(double, double)>("withSignOf")(7.5, -1.0), -7.5);

    EXPECT_EQ(watch.count(), 1u);
}

TEST_F(SystemCallsTest, LeavesTheLastErrorAsTheCallLeftIt) {
    EXPECT_EQ(exported<DWORD(DWORD)>("lastErrorAfterAllocation")(4711), 4711u);
}

TEST_F(SystemCallsTest, SpoilsTheLastErrorBehindACleanUp) {
    auto* lastError = exported<DWORD(DWORD)>("lastErrorAfterClose");
    EXPECT_NE(lastError(4711), 4711u);

    const auto close = system().replace<decltype(CloseHandle)>(
        "CloseHandle", [](HANDLE event) { return CloseHandle(event); });
    EXPECT_NE(lastError(4711), 4711u);
}

TEST_F(SystemCallsTest, AnswersWithAResultAndALastError) {
    const auto answer =
        system().answer("GetFileAttributesW", INVALID_FILE_ATTRIBUTES, DWORD{ERROR_SHARING_VIOLATION});

    EXPECT_EQ(exported<DWORD(const wchar_t*)>("lastErrorOfAttributes")(windowsFolder),
              DWORD{ERROR_SHARING_VIOLATION});
}

TEST_F(SystemCallsTest, FailsOnlyTheCallThatItIsToldTo) {
    const auto failing = system().failCall("GetFileAttributesW", 2, ERROR_NOT_READY, INVALID_FILE_ATTRIBUTES);
    auto* attributes = exported<DWORD(const wchar_t*)>("lastErrorOfAttributes");

    EXPECT_EQ(attributes(windowsFolder), 0u);
    EXPECT_EQ(attributes(windowsFolder), DWORD{ERROR_NOT_READY});
    EXPECT_EQ(attributes(windowsFolder), 0u);
}

TEST_F(SystemCallsTest, RecordsArgumentsAndCounts) {
    const auto sleep = system().answer("Sleep", 0);
    auto* sleepFor = exported<void(DWORD)>("sleepFor");

    sleepFor(500);
    sleepFor(2000);

    ASSERT_EQ(sleep.count(), 2u);
    EXPECT_EQ(sleep.calls()[0].argument<DWORD>(0), 500u);
    EXPECT_EQ(sleep.calls()[1].argument<DWORD>(0), 2000u);
    EXPECT_EQ(system().count("Sleep"), 2u);
}

TEST_F(SystemCallsTest, LetsTheNewestReplacementWinAndRestoresTheOneBefore) {
    const auto older = system().answer("GetFileAttributesW", INVALID_FILE_ATTRIBUTES, DWORD{1});
    auto* attributes = exported<DWORD(const wchar_t*)>("lastErrorOfAttributes");
    {
        const auto newer = system().answer("GetFileAttributesW", INVALID_FILE_ATTRIBUTES, DWORD{2});
        EXPECT_EQ(attributes(windowsFolder), 2u);
    }
    EXPECT_EQ(attributes(windowsFolder), 1u);
    EXPECT_THAT(system().replaced(), ElementsAre("GetFileAttributesW"));
}

TEST_F(SystemCallsTest, ReplacesCallsOfEveryThread) {
    const auto sleep = system().answer("Sleep", 0);

    std::thread([&] { exported<void(DWORD)>("sleepFor")(1); }).join();

    ASSERT_EQ(sleep.count(), 1u);
    EXPECT_NE(sleep.calls()[0].thread, GetCurrentThreadId());
}

TEST_F(SystemCallsTest, ReplacesWhatTheLibraryFoundByName) {
    const auto count = system().answer("GetTickCount64", 42);

    EXPECT_EQ(exported<ULONGLONG()>("callTickCount")(), 42u);
}

TEST_F(SystemCallsTest, TouchesNobodyElse) {
    const auto attributes = system().answer("GetFileAttributesW", 0);

    EXPECT_NE(GetFileAttributesW(windowsFolder) & FILE_ATTRIBUTE_DIRECTORY, 0u);
}

TEST_F(SystemCallsTest, RefusesANameThatTheLibraryDoesNotCall) {
    const auto failures = failuresOf([&] { const auto unused = system().answer("CreateFileX", 0); });

    EXPECT_THAT(failures, ElementsAre(HasSubstr("does not call CreateFileX")));
}

class LoadingTest : public MisbehavingLibrary {};

TEST_F(LoadingTest, SeesCallsOfStaticInitialisationAndOfTheEntryPoint) {
    const auto find = library.system().watch("GetProcAddress");
    const auto event = library.system().watch("CreateEventW");

    ASSERT_TRUE(library.load());

    EXPECT_GE(find.count(), 1u);
    EXPECT_EQ(event.count(), 1u);
    EXPECT_TRUE(exported<bool()>("hasTickCount")());
}

TEST_F(LoadingTest, HidesFunctionsFromTheLibraryWhileItLoads) {
    const auto hidden = library.system().hide({"GetTickCount64"});

    ASSERT_TRUE(library.load());

    EXPECT_FALSE(exported<bool()>("hasTickCount")());
}

TEST_F(LoadingTest, LeavesTheExportTablesOfTheSystemAsTheyWere) {
    const HMODULE kernel = GetModuleHandleW(L"kernel32");
    const auto before = PeImage::ofModule(kernel).findExport("GetProcAddress");

    ASSERT_TRUE(library.load());

    EXPECT_EQ(PeImage::ofModule(kernel).findExport("GetProcAddress")->target, before->target);
}

TEST_F(LoadingTest, NamesAFunctionThatWasReplacedButNeverAskedFor) {
    const auto failures =
        failuresOf([&] { const auto unused = library.system().answer("NoSuchFunction", 0); });

    EXPECT_THAT(failures, ElementsAre(HasSubstr("never asked for NoSuchFunction")));
}

TEST_F(LoadingTest, GivesBackEverythingWhenItIsUnloaded) {
    ASSERT_TRUE(library.load());
    ASSERT_FALSE(ledger.isEmpty());

    library.unload();

    EXPECT_THAT(ledger.differences(), IsEmpty());
    EXPECT_EQ(GetModuleHandleW(L"misbehaving_library.dll"), nullptr);
}

TEST_F(LoadingTest, NamesWhatStaysWhenItIsUnloaded) {
    ASSERT_TRUE(library.load());
    exported<void()>("loseTheEvent")();

    library.unload();

    EXPECT_THAT(ledger.differences(),
                ElementsAre(HasSubstr("taken by CreateEventW at misbehaving_library.dll+0x")));
}

}  // namespace
