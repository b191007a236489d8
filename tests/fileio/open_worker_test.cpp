// The preallocating form of the worker behind openFile.
#include "preallocation_steps.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OpenWorkerTest : public WinUtilTest {
protected:
    OpenWorkerTest() : worker(builtPath(L"" OPEN_WORKER)) {
        EXPECT_TRUE(worker.load());
        worker.ledger().start();
        writeFile(file, "content");
        steps.emplace(system());
    }
    ~OpenWorkerTest() override { EXPECT_THAT(worker.ledger().differences(), IsEmpty()); }

    SystemCalls& system() { return worker.system(); }
    HANDLE* open(std::int64_t length, std::int64_t start) {
        return worker.exported<HANDLE*(const wchar_t*, std::int64_t, std::int64_t)>("open")(file.c_str(),
                                                                                            length, start);
    }
    void close(HANDLE* cell) { worker.exported<void(HANDLE*)>("close")(cell); }

    LibraryUnderTest worker;
    std::wstring file = folder() / L"file";
    std::optional<PreallocationSteps> steps;
};

TEST_F(OpenWorkerTest, GivesAFileItsLengthAndGoesToTheStartThatIsAskedFor) {
    HANDLE* cell = open(4096, 100);

    LARGE_INTEGER size = {};
    LARGE_INTEGER position = {};
    EXPECT_TRUE(GetFileSizeEx(*cell, &size));
    EXPECT_TRUE(SetFilePointerEx(*cell, {}, &position, FILE_CURRENT));
    EXPECT_EQ(size.QuadPart, 4096);
    EXPECT_EQ(position.QuadPart, 100);
    EXPECT_THAT(steps->taken(), ElementsAre(privilegeOn, "open for writing", "move 4096", "end", "valid 4096",
                                            "move 0", "move 100", privilegeOff));
    close(cell);
}

TEST_F(OpenWorkerTest, OpensTheFileThatIsThereForReadingAndWriting) {
    const auto opens = system().watch("CreateFileW");

    close(open(4096, 0));

    ASSERT_EQ(opens.count(), 1u);
    EXPECT_EQ(opens.calls()[0].argument<DWORD>(1), 0xC0000000u);
    EXPECT_EQ(opens.calls()[0].argument<DWORD>(2), 3u);
    EXPECT_EQ(opens.calls()[0].argument<DWORD>(4), 3u);
    EXPECT_EQ(opens.calls()[0].argument<DWORD>(5), 0x2000001u);
}

TEST_F(OpenWorkerTest, DeclaresNoContentValidWithoutThePrivilege) {
    const auto token = system().answer("OpenProcessToken", FALSE, ERROR_ACCESS_DENIED);

    HANDLE* cell = open(4096, 100);

    EXPECT_THAT(steps->taken(), ElementsAre("open for writing", "move 4096", "end", "move 0", "move 100"));
    close(cell);
}

TEST_F(OpenWorkerTest, OnlyReadsWithoutALength) {
    HANDLE* cell = open(0, 100);

    EXPECT_THAT(steps->taken(), ElementsAre("open for reading"));
    close(cell);
}

TEST_F(OpenWorkerTest, OnlyReadsOnceItsSwitchIsOff) {
    worker.exported<void()>("switchPreallocationOff")();

    HANDLE* cell = open(4096, 100);

    EXPECT_THAT(steps->taken(), ElementsAre("open for reading"));
    close(cell);
}

TEST_F(OpenWorkerTest, OnlyReadsAFileThatCannotBeOpenedForWriting) {
    const auto opens = system().watch("CreateFileW");
    const auto plain = system().failCall("CreateFileW", 1, ERROR_ACCESS_DENIED, ~0ull);
    const auto longForm = system().failCall("CreateFileW", 2, ERROR_ACCESS_DENIED, ~0ull);

    HANDLE* cell = open(4096, 100);

    EXPECT_THAT(steps->taken(), ElementsAre(privilegeOn, privilegeOff, "open for reading"));
    ASSERT_EQ(opens.count(), 3u);
    EXPECT_EQ(opens.calls()[2].argument<DWORD>(1), 0x80000000u);
    EXPECT_EQ(opens.calls()[2].argument<DWORD>(2), 3u);
    EXPECT_EQ(opens.calls()[2].argument<DWORD>(4), 3u);
    EXPECT_EQ(opens.calls()[2].argument<DWORD>(5), 0x2000001u);
    close(cell);
}

struct WorkerFailure {
    const char* name;
    const char* function;
    std::size_t call;
    std::vector<std::string> before;  // the steps between the open and the failing one
};

class WorkerFailureTest : public OpenWorkerTest, public ::testing::WithParamInterface<WorkerFailure> {};

TEST_P(WorkerFailureTest, ClosesTheFileAndOnlyReadsIt) {
    const auto fail = system().failCall(GetParam().function, GetParam().call, ERROR_DISK_FULL);

    HANDLE* cell = open(4096, 100);

    std::vector<std::string> expected = {privilegeOn, "open for writing"};
    expected.insert(expected.end(), GetParam().before.begin(), GetParam().before.end());
    expected.insert(expected.end(), {"close", privilegeOff, "open for reading"});
    EXPECT_EQ(steps->taken(), expected);
    close(cell);
}

INSTANTIATE_TEST_SUITE_P(Steps, WorkerFailureTest,
                         ::testing::Values(WorkerFailure{"MoveToTheLength", "SetFilePointerEx", 1, {}},
                                           WorkerFailure{"SetTheEnd", "SetEndOfFile", 1, {"move 4096"}},
                                           WorkerFailure{"MoveToTheStart",
                                                         "SetFilePointerEx",
                                                         3,
                                                         {"move 4096", "end", "valid 4096", "move 0"}}),
                         [](const auto& failure) { return failure.param.name; });

}  // namespace
