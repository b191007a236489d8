// Serving real clients.
#include "pipe_fixture.h"

namespace {

using namespace testbed;

using Serving = PipeTest;

const std::string acknowledgement = asMessage(L"OK");

// What a client hears of each of its messages.
std::string converse(RawPipe& client, std::string_view message) {
    client.write(message);
    return client.read();
}

TEST_F(Serving, GivesTheFirstCharacterOfAnEnglishText) {
    int answer = -1;

    const std::wstring message = serve([&] { answer = send(L"Hello"); });

    EXPECT_EQ(message, L"H");
    EXPECT_EQ(answer, 0);
}

TEST_F(Serving, AcknowledgesAMessageWithOk) {
    std::string answer;

    serve([&] {
        RawPipe client = RawPipe::client(name);
        answer = converse(client, asMessage(L"Hello"));
    });

    EXPECT_EQ(answer, std::string("O\0K\0\0\0", 6));
}

TEST_F(Serving, TakesTheBytesForModifiedUtf8) {
    const std::wstring message = serve([&] {
        RawPipe client = RawPipe::client(name);
        converse(client, "h\xC3\xA9llo \xE2\x82\xAC");
    });

    EXPECT_EQ(message, L"h\u00E9llo \u20AC");
}

TEST_F(Serving, GivesNothingForAnEmptyText) {
    int answer = -1;

    EXPECT_EQ(serve([&] { answer = send(L""); }), L"");

    EXPECT_EQ(answer, 0);
}

TEST_F(Serving, GivesNothingWhenTheClientWritesNothing) {
    EXPECT_EQ(serve([&] { RawPipe::client(name); }), L"");
}

TEST_F(Serving, EndsWithAMessageOfNoBytes) {
    DWORD failure = ERROR_SUCCESS;

    const std::wstring message = serve([&] {
        RawPipe client = RawPipe::client(name);
        converse(client, "one");
        client.write("");
        failure = client.readFailure();
    });

    EXPECT_EQ(message, L"one");
    EXPECT_TRUE(failure == ERROR_BROKEN_PIPE || failure == ERROR_PIPE_NOT_CONNECTED) << failure;
}

TEST_F(Serving, AcknowledgesEveryMessageAndGivesTheLast) {
    int acknowledged = 0;

    const std::wstring message = serve([&] {
        RawPipe client = RawPipe::client(name);
        acknowledged = 0;
        for (int i = 0; i < 500; ++i) {
            acknowledged += converse(client, "message " + std::to_string(i)) == acknowledgement ? 1 : 0;
        }
    });

    EXPECT_EQ(acknowledged, 500);
    EXPECT_EQ(message, L"message 499");
}

TEST_F(Serving, KeepsTheEndOfALongerMessageBehindAShorterOne) {
    const std::wstring message = serve([&] {
        RawPipe client = RawPipe::client(name);
        converse(client, "abcdef");
        converse(client, "XY");
    });

    EXPECT_EQ(message, L"XYcdef");
}

TEST_F(Serving, TakesAMessageThatFillsItsBuffer) {
    std::string answer;

    const std::wstring message = serve([&] {
        RawPipe client = RawPipe::client(name);
        answer = converse(client, std::string(8192, 'x'));
    });

    EXPECT_EQ(message, std::wstring(8192, L'x'));
    EXPECT_EQ(answer, acknowledgement);
}

TEST_F(Serving, DoesNotAcknowledgeALongerMessage) {
    std::string answer = "none yet";

    const std::wstring message = serve([&] {
        RawPipe client = RawPipe::client(name);
        answer = converse(client, std::string(8193, 'x'));
    });

    EXPECT_EQ(message, std::wstring(8192, L'x'));
    EXPECT_EQ(answer, "");
}

TEST_F(Serving, EndsWhenTheClientDisconnectsBeforeItsAnswer) {
    const std::wstring message = serve([&] {
        RawPipe client = RawPipe::client(name);
        converse(client, "one");
        client.write("two");
    });

    EXPECT_EQ(message, L"two");
}

TEST_F(Serving, ServesOneClientACall) {
    for (const wchar_t* text : {L"first", L"second", L"third"}) {
        int answer = -1;

        EXPECT_EQ(serve([&] { answer = send(text); }), std::wstring(text, 1));

        EXPECT_EQ(answer, 0);
    }
}

TEST_F(Serving, HasAnInstanceOfThePipeForEachCall) {
    const std::wstring outer = serve([&] {
        RawPipe first = RawPipe::client(name);
        EXPECT_EQ(serve([&] {
                      RawPipe second = RawPipe::client(name);
                      converse(second, "second");
                  }),
                  L"second");
        converse(first, "first");
    });

    EXPECT_EQ(outer, L"first");
}

}  // namespace
