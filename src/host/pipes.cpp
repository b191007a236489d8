#include "host/pipes.h"

#include <windows.h>

#include <cstring>
#include <cwchar>
#include <iterator>

#include "bridge/owners.h"

namespace winutil::host {

namespace {

constexpr DWORD pipeBufferSize = 4096;  // bytes, in either direction
constexpr DWORD busyTimeout = 20'000;   // milliseconds
constexpr wchar_t acknowledgement[] = L"OK";

// Disconnects the client of a pipe at the end of a scope, when it has read what was written.
class ConnectedClient {
public:
    explicit ConnectedClient(HANDLE pipe) noexcept : pipe_(pipe) {}
    ConnectedClient(const ConnectedClient&) = delete;
    ConnectedClient& operator=(const ConnectedClient&) = delete;
    ~ConnectedClient() {
        FlushFileBuffers(pipe_);
        DisconnectNamedPipe(pipe_);
    }

private:
    HANDLE pipe_;
};

bool acknowledge(HANDLE pipe) noexcept {
    DWORD written = 0;
    return WriteFile(pipe, acknowledgement, sizeof(acknowledgement), &written, nullptr) &&
           written == sizeof(acknowledgement);
}

// Opens the client's end of a pipe; none when there is no such pipe or it stays busy.
FileHandle openPipe(const wchar_t* pipeName) noexcept {
    for (;;) {
        FileHandle pipe(
            CreateFileW(pipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        // As often as another client is faster.
        if (pipe || GetLastError() != ERROR_PIPE_BUSY || !WaitNamedPipeW(pipeName, busyTimeout)) {
            return pipe;
        }
    }
}

bool writeText(HANDLE pipe, const wchar_t* text) noexcept {
    const std::size_t size = (std::wcslen(text) + 1) * sizeof(wchar_t);
    DWORD written = 0;
    return size <= MAXDWORD && WriteFile(pipe, text, static_cast<DWORD>(size), &written, nullptr);
}

// Reads an answer to its end. Returns whether what one of the reads brought sorts before "OK"; each read
// begins at the start of the buffer.
bool readRefusal(HANDLE pipe) noexcept {
    wchar_t answer[messageSize / sizeof(wchar_t)] = {};
    bool refused = false;
    for (;;) {
        DWORD count = 0;
        const bool complete = ReadFile(pipe, answer, sizeof(answer), &count, nullptr) != FALSE;
        if (!complete && GetLastError() != ERROR_MORE_DATA) {
            return refused;
        }
        refused = refused || std::wcsncmp(acknowledgement, answer, std::size(acknowledgement) - 1) > 0;
        if (complete) {
            return refused;
        }
    }
}

}  // namespace

void serveClient(const wchar_t* pipeName, MessageBytes& message) noexcept {
    std::memset(message, 0, sizeof(message));
    const FileHandle pipe(
        CreateNamedPipeW(pipeName, PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE,
                         PIPE_UNLIMITED_INSTANCES, pipeBufferSize, pipeBufferSize, 0, nullptr));
    // Required: a client that came before the server was ready is one more failure, because the Java side
    // serves again after each call.
    if (!pipe || !ConnectNamedPipe(pipe.get(), nullptr)) {
        return;
    }
    const ConnectedClient client(pipe.get());
    DWORD count = 0;
    // Required: not cleared in between, because callers know what an earlier message leaves behind a shorter
    // one.
    while (ReadFile(pipe.get(), message, messageSize, &count, nullptr) && count > 0 &&
           acknowledge(pipe.get())) {
    }
}

int sendMessage(const wchar_t* pipeName, const wchar_t* message) noexcept {
    const FileHandle pipe = openPipe(pipeName);
    DWORD mode = PIPE_READMODE_MESSAGE;
    // Required: every failure is 0 like "OK", because callers look for a refusal alone.
    if (!pipe || !SetNamedPipeHandleState(pipe.get(), &mode, nullptr, nullptr) ||
        !writeText(pipe.get(), message)) {
        return 0;
    }
    return readRefusal(pipe.get()) ? 1 : 0;
}

}  // namespace winutil::host
