// What a sender makes of each answer, and each step of sending where it fails.
#include "pipe_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ScriptedSending : public PipeTest {
protected:
    ScriptedPipe pipe{system()};
};

struct Answer {
    std::wstring text;
    int flag;
};

class AnswerText : public ScriptedSending, public ::testing::WithParamInterface<Answer> {};

TEST_P(AnswerText, IsComparedWithOk) {
    pipe.reads = {{.bytes = asMessage(GetParam().text)}};

    EXPECT_EQ(send(L"x"), GetParam().flag);

    EXPECT_EQ(pipe.read.count(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Texts, AnswerText,
                         ::testing::Values(Answer{L"OK", 0}, Answer{L"OKAY", 0}, Answer{L"OL", 0},
                                           Answer{L"P", 0}, Answer{L"ok", 0}, Answer{L"\uFFFF", 0},
                                           Answer{L"NO REPLY", 1}, Answer{L"NZ", 1}, Answer{L"OJ", 1},
                                           Answer{L"O", 1}, Answer{L"A", 1}, Answer{L"", 1}));

struct Parts {
    std::vector<ScriptedPipe::Read> reads;
    int flag;
};

class AnswerParts : public ScriptedSending, public ::testing::WithParamInterface<Parts> {};

TEST_P(AnswerParts, AreReadToTheFirstThatIsWholeOrFails) {
    pipe.reads = GetParam().reads;

    EXPECT_EQ(send(L"x"), GetParam().flag);

    EXPECT_EQ(pipe.read.count(), GetParam().reads.size());
    EXPECT_EQ(pipe.calls.back(), "CloseHandle");
}

const std::string ok = asMessage(L"OK");
const std::string no = asMessage(L"NO");

INSTANTIATE_TEST_SUITE_P(Reads, AnswerParts,
                         ::testing::Values(Parts{{{ok, ERROR_MORE_DATA}, {ok}}, 0},
                                           Parts{{{ok, ERROR_MORE_DATA}, {no}}, 1},
                                           Parts{{{no, ERROR_MORE_DATA}, {ok}}, 1},
                                           Parts{{{no, ERROR_MORE_DATA}, {ok, ERROR_MORE_DATA}, {ok}}, 1},
                                           Parts{{{no, ERROR_MORE_DATA}, {"", ERROR_BROKEN_PIPE}}, 1},
                                           Parts{{{ok, ERROR_MORE_DATA}, {no, ERROR_BROKEN_PIPE}}, 0},
                                           Parts{{{no, ERROR_BROKEN_PIPE}}, 0},
                                           Parts{{{"", ERROR_SUCCESS}}, 1}));

TEST_F(ScriptedSending, OpensSetsWritesReadsAndCloses) {
    pipe.reads = {{.bytes = ok}};

    EXPECT_EQ(send(L"caf\u00E9"), 0);

    EXPECT_THAT(pipe.calls,
                ElementsAre("CreateFileW", "SetNamedPipeHandleState", "WriteFile", "CloseHandle"));
    EXPECT_THAT(pipe.written, ElementsAre(asMessage(L"caf\u00E9")));
    EXPECT_EQ(pipe.mode, DWORD{PIPE_READMODE_MESSAGE});
    const RecordedCall open = pipe.open.calls().at(0);
    EXPECT_EQ(open.argument<DWORD>(1), 0xC0000000u);
    EXPECT_EQ(open.argument<DWORD>(2), 0u);
    EXPECT_EQ(open.argument<void*>(3), nullptr);
    EXPECT_EQ(open.argument<DWORD>(4), DWORD{OPEN_EXISTING});
    EXPECT_EQ(open.argument<DWORD>(5), 0u);
    EXPECT_EQ(open.argument<void*>(6), nullptr);
    const RecordedCall setMode = pipe.setMode.calls().at(0);
    EXPECT_EQ(setMode.argument<void*>(2), nullptr);
    EXPECT_EQ(setMode.argument<void*>(3), nullptr);
}

TEST_F(ScriptedSending, WaitsTwentySecondsForABusyPipeAsOftenAsNeeded) {
    pipe.openings = {ERROR_PIPE_BUSY, ERROR_PIPE_BUSY, ERROR_PIPE_BUSY};
    pipe.reads = {{.bytes = no}};

    EXPECT_EQ(send(L"x"), 1);

    ASSERT_EQ(pipe.wait.count(), 3u);
    for (const RecordedCall& call : pipe.wait.calls()) {
        EXPECT_EQ(call.argument<DWORD>(1), 20'000u);
    }
}

TEST_F(ScriptedSending, GivesUpWhenThePipeStaysBusy) {
    pipe.openings = {ERROR_PIPE_BUSY};
    pipe.waitCode = ERROR_SEM_TIMEOUT;
    pipe.reads = {{.bytes = no}};

    EXPECT_EQ(send(L"x"), 0);

    EXPECT_THAT(pipe.calls, ElementsAre("CreateFileW", "WaitNamedPipeW"));
}

class FailingOpen : public ScriptedSending, public ::testing::WithParamInterface<DWORD> {};

TEST_P(FailingOpen, IsNotTriedAgain) {
    pipe.openings = {GetParam()};
    pipe.reads = {{.bytes = no}};

    EXPECT_EQ(send(L"x"), 0);

    EXPECT_THAT(pipe.calls, ElementsAre("CreateFileW"));
}

INSTANTIATE_TEST_SUITE_P(Codes, FailingOpen,
                         ::testing::Values(ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED, ERROR_SEM_TIMEOUT,
                                           ERROR_INVALID_NAME));

TEST_F(ScriptedSending, GivesUpAnErrorBehindABusyPipe) {
    pipe.openings = {ERROR_PIPE_BUSY, ERROR_FILE_NOT_FOUND};
    pipe.reads = {{.bytes = no}};

    EXPECT_EQ(send(L"x"), 0);

    EXPECT_THAT(pipe.calls, ElementsAre("CreateFileW", "WaitNamedPipeW", "CreateFileW"));
}

TEST_F(ScriptedSending, WritesNothingToAPipeWithoutMessages) {
    pipe.modeCode = ERROR_INVALID_PARAMETER;
    pipe.reads = {{.bytes = no}};

    EXPECT_EQ(send(L"x"), 0);

    EXPECT_THAT(pipe.calls, ElementsAre("CreateFileW", "SetNamedPipeHandleState", "CloseHandle"));
}

TEST_F(ScriptedSending, ReadsNothingWhenItCannotWrite) {
    pipe.writeCode = ERROR_NO_DATA;
    pipe.reads = {{.bytes = no}};

    EXPECT_EQ(send(L"x"), 0);

    EXPECT_EQ(pipe.read.count(), 0u);
    EXPECT_EQ(pipe.calls.back(), "CloseHandle");
}

}  // namespace
