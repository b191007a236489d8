// Each step of serving, where it fails.
#include "pipe_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ServingFailure : public PipeTest {
protected:
    std::wstring serveScripted() { return NATIVE(connectPipe)(L"\\\\.\\pipe\\x").text(); }

    ScriptedPipe pipe{system()};
};

TEST_F(ServingFailure, MakesAPipeForMessages) {
    pipe.createCode = ERROR_ACCESS_DENIED;

    EXPECT_EQ(serveScripted(), L"");

    EXPECT_THAT(pipe.calls, ElementsAre("CreateNamedPipeW"));
    const RecordedCall call = pipe.create.calls().at(0);
    EXPECT_EQ(call.argument<DWORD>(1), DWORD{PIPE_ACCESS_DUPLEX});
    EXPECT_EQ(call.argument<DWORD>(2), DWORD{PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE});
    EXPECT_EQ(call.argument<DWORD>(3), 255u);
    EXPECT_EQ(call.argument<DWORD>(4), 4096u);
    EXPECT_EQ(call.argument<DWORD>(5), 4096u);
    EXPECT_EQ(call.argument<DWORD>(6), 0u);
    EXPECT_EQ(call.argument<void*>(7), nullptr);
}

class FailingConnect : public ServingFailure, public ::testing::WithParamInterface<DWORD> {};

TEST_P(FailingConnect, ClosesThePipeAndReturns) {
    pipe.connectCode = GetParam();
    pipe.reads = {{.bytes = "never read"}};

    EXPECT_EQ(serveScripted(), L"");

    EXPECT_THAT(pipe.calls, ElementsAre("CreateNamedPipeW", "ConnectNamedPipe", "CloseHandle"));
}

// The client that came too early is no exception.
INSTANTIATE_TEST_SUITE_P(Codes, FailingConnect,
                         ::testing::Values(ERROR_PIPE_CONNECTED, ERROR_NO_DATA, ERROR_INVALID_HANDLE));

TEST_F(ServingFailure, FlushesAndDisconnectsBeforeItCloses) {
    pipe.reads = {{.bytes = "one"}};

    EXPECT_EQ(serveScripted(), L"one");

    EXPECT_THAT(pipe.calls, ElementsAre("CreateNamedPipeW", "ConnectNamedPipe", "WriteFile",
                                        "FlushFileBuffers", "DisconnectNamedPipe", "CloseHandle"));
    EXPECT_THAT(pipe.written, ElementsAre(asMessage(L"OK")));
    EXPECT_EQ(pipe.connect.calls().at(0).argument<void*>(1), nullptr);
}

TEST_F(ServingFailure, StopsWhenItCannotAnswer) {
    pipe.reads = {{.bytes = "one"}, {.bytes = "two"}};
    pipe.writeCode = ERROR_NO_DATA;

    EXPECT_EQ(serveScripted(), L"one");

    EXPECT_THAT(pipe.calls, ElementsAre("CreateNamedPipeW", "ConnectNamedPipe", "WriteFile",
                                        "FlushFileBuffers", "DisconnectNamedPipe", "CloseHandle"));
}

TEST_F(ServingFailure, StopsWhenAnAnswerIsCutShort) {
    pipe.reads = {{.bytes = "one"}, {.bytes = "two"}};
    pipe.shortBy = 1;

    EXPECT_EQ(serveScripted(), L"one");

    EXPECT_EQ(pipe.write.count(), 1u);
}

TEST_F(ServingFailure, StopsAtAMessageOfNoBytes) {
    pipe.reads = {{.bytes = "one"}, {.bytes = ""}, {.bytes = "two"}};

    EXPECT_EQ(serveScripted(), L"one");

    EXPECT_EQ(pipe.write.count(), 1u);
}

TEST_F(ServingFailure, StopsAtAMessageThatIsTooLong) {
    pipe.reads = {{.bytes = std::string(8192, 'x'), .code = ERROR_MORE_DATA}, {.bytes = "rest"}};

    EXPECT_EQ(serveScripted(), std::wstring(8192, L'x'));

    EXPECT_THAT(pipe.written, IsEmpty());
}

TEST_F(ServingFailure, GivesAMessageUpToItsFirstZero) {
    pipe.reads = {{.bytes = std::string("ab\0cd", 5)}};

    EXPECT_EQ(serveScripted(), L"ab");
}

TEST_F(ServingFailure, ClosesThePipeBeforeItAnswersJava) {
    pipe.reads = {{.bytes = "one"}};
    java.failCall("NewStringUTF");

    EXPECT_FALSE(NATIVE(connectPipe)(L"\\\\.\\pipe\\x"));

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_EQ(pipe.calls.back(), "CloseHandle");
}

TEST_F(ServingFailure, GivesNothingWithoutMemoryForTheName) {
    const auto allocate = system().failCall("malloc", 1, ERROR_NOT_ENOUGH_MEMORY);

    EXPECT_FALSE(NATIVE(connectPipe)(L"\\\\.\\pipe\\x"));

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_THAT(pipe.calls, IsEmpty());
}

TEST_F(ServingFailure, GivesNothingWithoutMemoryOfTheJvm) {
    java.failCall("GetStringChars");

    EXPECT_FALSE(NATIVE(connectPipe)(L"\\\\.\\pipe\\x"));

    EXPECT_EQ(java.takeException().className, "java/lang/OutOfMemoryError");
    EXPECT_THAT(pipe.calls, IsEmpty());
}

TEST_F(ServingFailure, HasNothingToGiveForANameThatIsNoPipe) {
    pipe.create.restore();
    pipe.close.restore();

    EXPECT_EQ(NATIVE(connectPipe)(L"C:\\no pipe").text(), L"");
    EXPECT_EQ(NATIVE(connectPipe)(L"").text(), L"");
}

using PipeNames = WinUtilTest;

TEST_F(PipeNames, AreFixed) {
    EXPECT_EQ(NATIVE(getPipeSlotPath)().text(), L"\\\\.\\pipe\\BACKUP");
    EXPECT_EQ(NATIVE(getMessagePipeSlotPath)().text(), L"\\\\.\\pipe\\MESSAGE");
}

}  // namespace
