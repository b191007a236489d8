#include <gmock/gmock.h>

#include <thread>

#include "fake_com.h"
#include "selftest_library.h"
#include "temp_folder.h"

namespace {

using namespace testbed;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class LedgerTest : public MisbehavingLibrary {
protected:
    LedgerTest() {
        EXPECT_TRUE(library.load());
        ledger.start();
        writeFile(file, "content");
    }

    TempFolder folder;
    std::wstring file = folder / L"file";
};

TEST_F(LedgerTest, IsEmptyWhenEverythingWentBack) {
    EXPECT_TRUE(exported<BOOL(const wchar_t*)>("openAndClose")(file.c_str()));
    exported<void()>("growAndFree")();

    EXPECT_THAT(ledger.differences(), IsEmpty());
}

TEST_F(LedgerTest, NamesLeakedMemory) {
    exported<void(std::size_t)>("leakMemory")(100);

    EXPECT_THAT(
        ledger.differences(),
        ElementsAre(AllOf(HasSubstr("memory"), HasSubstr("taken by malloc at misbehaving_library.dll+0x"))));
}

TEST_F(LedgerTest, NamesALeakedHandle) {
    exported<void(const wchar_t*)>("openFile")(file.c_str());

    ASSERT_THAT(ledger.differences(),
                ElementsAre(AllOf(HasSubstr("handle"), HasSubstr("taken by CreateFileW"))));
    CloseHandle(reinterpret_cast<HANDLE>(ledger.left().front().value));
}

TEST_F(LedgerTest, NamesALeakedTextOfTheSystem) {
    exported<void()>("leaveTextAllocated")();

    EXPECT_THAT(ledger.differences(), ElementsAre(HasSubstr("taken by FormatMessageW")));
}

TEST_F(LedgerTest, NamesALeakedModule) {
    const HMODULE module = exported<HMODULE(const char*)>("loadAgain")("kernel32.dll");

    EXPECT_THAT(ledger.differences(), ElementsAre(HasSubstr("taken by LoadLibraryA")));
    FreeLibrary(module);
}

TEST_F(LedgerTest, NamesAHandleThatWasClosedTwiceAndSparesTheSystem) {
    const auto close = library.system().watch("CloseHandle");

    exported<void(const wchar_t*)>("openAndCloseTwice")(file.c_str());

    EXPECT_EQ(close.count(), 2u);
    EXPECT_THAT(ledger.differences(), ElementsAre(HasSubstr("given back by CloseHandle")));
    EXPECT_THAT(ledger.differences(), ElementsAre(HasSubstr("a second time")));
}

TEST_F(LedgerTest, NamesAHandleThatNoCallTook) {
    exported<BOOL(HANDLE)>("closeIt")(INVALID_HANDLE_VALUE);

    EXPECT_THAT(ledger.differences(), ElementsAre(HasSubstr("but no call took it")));
}

TEST_F(LedgerTest, ForgivesWhatTheTestAllows) {
    ledger.allowUnknown("CloseHandle");

    exported<BOOL(HANDLE)>("closeIt")(INVALID_HANDLE_VALUE);

    EXPECT_THAT(ledger.differences(), IsEmpty());
}

TEST_F(LedgerTest, ForgivesADeclaredLeakAndNoMore) {
    ledger.expectLeft("malloc", 1);
    auto* leak = exported<void(std::size_t)>("leakMemory");

    leak(1);
    EXPECT_THAT(ledger.differences(), IsEmpty());
    leak(1);
    EXPECT_THAT(ledger.differences(), ElementsAre(HasSubstr("taken by malloc")));
}

TEST_F(LedgerTest, MissesADeclaredLeakThatDidNotHappen) {
    ledger.expectLeft("CreateFileW", 2);

    EXPECT_THAT(ledger.differences(), ElementsAre("expected 2 more left by CreateFileW"));
}

TEST_F(LedgerTest, KeepsFakeHandlesFromTheSystem) {
    const HANDLE fake = Ledger::fakeHandle();
    const auto open = library.system().answer("CreateFileW", reinterpret_cast<std::uint64_t>(fake));

    EXPECT_TRUE(exported<BOOL(const wchar_t*)>("openAndClose")(file.c_str()));

    EXPECT_THAT(ledger.differences(), IsEmpty());
}

TEST_F(LedgerTest, KeepsWhatAFailingCloseDidNotTake) {
    const auto close = library.system().answer("CloseHandle", FALSE, DWORD{ERROR_INVALID_HANDLE});

    EXPECT_FALSE(exported<BOOL(const wchar_t*)>("openAndClose")(file.c_str()));

    ASSERT_THAT(ledger.differences(), ElementsAre(HasSubstr("taken by CreateFileW")));
    CloseHandle(reinterpret_cast<HANDLE>(ledger.left().front().value));
}

TEST_F(LedgerTest, FillsFreshMemory) {
    EXPECT_NE(exported<int()>("readFreshMemory")(), 0);
}

TEST_F(LedgerTest, CountsReferencesToComObjects) {
    FakeCom<IUnknown> object(ledger, IID_IUnknown);
    auto* release = exported<void(IUnknown*)>("releaseIt");

    IUnknown* reference = object.referenced();
    EXPECT_THAT(ledger.differences(), ElementsAre(HasSubstr("COM reference")));
    release(reference);
    EXPECT_THAT(ledger.differences(), IsEmpty());
    release(reference);
    EXPECT_THAT(ledger.differences(), ElementsAre(HasSubstr("given back by Release")));
}

TEST_F(LedgerTest, KeepsUpWithManyThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([this] {
            for (int k = 0; k < 200; ++k) {
                exported<void()>("growAndFree")();
                exported<BOOL(const wchar_t*)>("openAndClose")(file.c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_THAT(ledger.differences(), IsEmpty());
}

TEST_F(LedgerTest, CountsNothingFromBeforeTheStart) {
    exported<void(std::size_t)>("leakMemory")(1);

    ledger.start();

    EXPECT_THAT(ledger.differences(), IsEmpty());
}

}  // namespace
