// Sending messages to real servers.
#include "pipe_fixture.h"

namespace {

using namespace testbed;

class Sending : public PipeTest {
protected:
    // Sends a message to a server that answers with these bytes, and gives what the sender makes of it.
    int sendTo(std::string_view answer) {
        RawPipe server = RawPipe::server(name);
        auto serving = std::async(std::launch::async, [&] {
            server.awaitClient();
            received = server.read();
            server.write(answer);
            // The client closes when it has read the answer.
            server.readFailure();
        });
        const int result = send(message);
        serving.get();
        return result;
    }

    std::wstring message = L"message";
    std::string received;
};

TEST_F(Sending, DeliversTheTextWithItsZero) {
    message = L"M\u00E9ssage \U0001F4BE";

    sendTo(asMessage(L"OK"));

    EXPECT_EQ(received, asMessage(message));
}

TEST_F(Sending, DeliversALongText) {
    message = std::wstring(100'000, L'm');

    EXPECT_EQ(sendTo(asMessage(L"OK")), 0);

    EXPECT_EQ(received, asMessage(message));
}

TEST_F(Sending, TellsOkFromNoReply) {
    EXPECT_EQ(sendTo(asMessage(L"OK")), 0);
    EXPECT_EQ(sendTo(asMessage(L"NO REPLY")), 1);
}

TEST_F(Sending, ReadsAnAnswerThatIsLongerThanItsBuffer) {
    EXPECT_EQ(sendTo(asMessage(L"NO " + std::wstring(20'000, L'Z'))), 1);
    EXPECT_EQ(sendTo(asMessage(L"OK " + std::wstring(20'000, L'Z'))), 0);
}

// Each read begins at the start of the buffer, and is compared.
TEST_F(Sending, LooksAtEveryPartOfALongAnswer) {
    EXPECT_EQ(sendTo(asMessage(L"OK" + std::wstring(4'094, L'Z') + L"NO")), 1);
}

TEST_F(Sending, FillsTheServersBufferAndIsAcknowledged) {
    message = std::wstring(4'095, L'm');
    int result = -1;

    const std::wstring served = serve([&] { result = send(message); });

    EXPECT_EQ(served, L"m");
    EXPECT_EQ(result, 0);
}

TEST_F(Sending, IsNoneTheWiserWhenItsMessageIsTooLong) {
    message = std::wstring(4'096, L'm');
    int result = -1;

    const std::wstring served = serve([&] { result = send(message); });

    EXPECT_EQ(served, L"m");
    EXPECT_EQ(result, 0);
}

TEST_F(Sending, IsNoneTheWiserWhenTheServerGoesAway) {
    RawPipe server = RawPipe::server(name);
    auto serving = std::async(std::launch::async, [&] {
        server.awaitClient();
        server.read();
        server.close();
    });

    EXPECT_EQ(send(message), 0);

    serving.get();
}

TEST_F(Sending, IsNoneTheWiserWithoutAServer) {
    const auto open = system().watch("CreateFileW");

    EXPECT_EQ(send(message), 0);

    EXPECT_EQ(open.count(), 1u);
    EXPECT_EQ(system().count("WaitNamedPipeW"), 0u);
}

TEST_F(Sending, WaitsForAPipeThatIsBusy) {
    RawPipe server = RawPipe::server(name);
    RawPipe other = RawPipe::client(name);
    std::promise<void> waiting;
    const auto wait = REPLACE(WaitNamedPipeW, [&, first = true](LPCWSTR pipe, DWORD timeout) mutable {
        if (std::exchange(first, false)) {
            waiting.set_value();
        }
        return REAL(WaitNamedPipeW)(pipe, timeout);
    });
    auto serving = std::async(std::launch::async, [&] {
        waiting.get_future().wait();
        other.close();
        server.dropClient();
        server.awaitClient();
        received = server.read();
        server.write(asMessage(L"NO REPLY"));
        server.readFailure();
    });

    EXPECT_EQ(send(message), 1);

    serving.get();
    EXPECT_EQ(received, asMessage(message));
    EXPECT_GE(wait.count(), 1u);
}

}  // namespace
