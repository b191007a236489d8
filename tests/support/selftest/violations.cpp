// Tests that do what no test may. gates_test.cpp runs each in a process of its own and wants it to fail.
#include "guarded_heap.h"
#include "selftest_library.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using namespace std::chrono_literals;

using Violations = WinUtilTest;

TEST_F(Violations, LeavesARecordOpen) {
    writeFile(folder() / L"file", "content");

    EXPECT_NE(NATIVE(openFile)(folder() / L"file"), 0);
}

TEST_F(Violations, LeavesAnExceptionPending) {
    NATIVE(openFile)(folder() / L"missing");
}

TEST_F(Violations, LeavesAFunctionReplaced) {
    static Replacement kept;
    kept = system().answer("Sleep", 0);
}

TEST_F(Violations, LeavesTheThreadImpersonating) {
    EXPECT_TRUE(ImpersonateSelf(SecurityImpersonation));
}

TEST_F(Violations, LeavesAFileOpenInItsFolder) {
    writeFile(folder() / L"file", "content");

    EXPECT_NE(CreateFileW((folder() / L"file").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
}

TEST_F(Violations, LeavesAFreshLibraryWithAHandle) {
    FreshLibrary fresh(folder(), L"fresh.dll");
    ASSERT_TRUE(fresh.load());

    fresh.ledger().take(Kind::handle, 4, "OpenProcessToken", "nowhere");
}

TEST_F(Violations, Hangs) {
    allowTime(1s);

    Sleep(INFINITE);
}

TEST_F(Violations, HangsInACase) {
    nameCase("the second case");
    allowTime(1s);

    Sleep(INFINITE);
}

TEST_F(Violations, ReadsOneByteBehindAnArray) {
    const GuardedBuffer buffer(10, "the content of a file");

    const volatile std::byte* end = buffer.data() + buffer.size();
    const std::byte read = *end;
    EXPECT_EQ(read, std::byte{0});
}

TEST_F(Violations, WritesBehindItsMemory) {
    LibraryUnderTest bad(misbehavingFile());
    ASSERT_TRUE(bad.load());
    const GuardedHeap heap(bad.system());

    bad.exported<void(std::size_t)>("writeBehind")(20);
}

TEST_F(Violations, ReadsTwoUnitsBehindAString) {
    const jobject string = java.reference(java.string(L"ab"));
    const jchar* chars = java.env()->GetStringChars(static_cast<jstring>(string), nullptr);

    const volatile jchar* units = chars;
    const jchar read = units[3];
    EXPECT_NE(read, 0);
}

TEST_F(Violations, Aborts) {
    std::abort();
}

TEST_F(Violations, PassesBeforeTheOthers) {
    SUCCEED();
}

}  // namespace
