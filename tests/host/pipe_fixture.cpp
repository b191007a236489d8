#include "pipe_fixture.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace testbed {

namespace {

constexpr DWORD rawBufferSize = 1 << 20;

void require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(std::string(what) + " failed with " + std::to_string(GetLastError()));
    }
}

}  // namespace

RawPipe::RawPipe(HANDLE pipe) : pipe_(pipe) {
    require(pipe != INVALID_HANDLE_VALUE, "opening the pipe");
}

RawPipe::RawPipe(RawPipe&& other) noexcept : pipe_(std::exchange(other.pipe_, INVALID_HANDLE_VALUE)) {}

RawPipe RawPipe::server(const std::wstring& name) {
    return RawPipe(CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX,
                                    PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, rawBufferSize,
                                    rawBufferSize, 0, nullptr));
}

RawPipe RawPipe::client(const std::wstring& name) {
    RawPipe pipe(
        CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    DWORD mode = PIPE_READMODE_MESSAGE;
    require(SetNamedPipeHandleState(pipe.pipe_, &mode, nullptr, nullptr) != FALSE, "SetNamedPipeHandleState");
    return pipe;
}

void RawPipe::awaitClient() {
    require(ConnectNamedPipe(pipe_, nullptr) || GetLastError() == ERROR_PIPE_CONNECTED, "ConnectNamedPipe");
}

void RawPipe::dropClient() {
    require(DisconnectNamedPipe(pipe_) != FALSE, "DisconnectNamedPipe");
}

void RawPipe::write(std::string_view message) {
    DWORD written = 0;
    require(WriteFile(pipe_, message.data(), static_cast<DWORD>(message.size()), &written, nullptr) &&
                written == message.size(),
            "WriteFile");
}

std::string RawPipe::read() {
    std::string message(rawBufferSize, '\0');
    DWORD count = 0;
    if (!ReadFile(pipe_, message.data(), rawBufferSize, &count, nullptr)) {
        return {};
    }
    message.resize(count);
    return message;
}

DWORD RawPipe::readFailure() {
    char byte = 0;
    DWORD count = 0;
    return ReadFile(pipe_, &byte, 1, &count, nullptr) ? ERROR_SUCCESS : GetLastError();
}

void RawPipe::close() {
    if (const HANDLE pipe = std::exchange(pipe_, INVALID_HANDLE_VALUE); pipe != INVALID_HANDLE_VALUE) {
        CloseHandle(pipe);
    }
}

std::string asMessage(std::wstring_view text) {
    const std::wstring terminated(text);
    return {reinterpret_cast<const char*>(terminated.c_str()), (terminated.size() + 1) * sizeof(wchar_t)};
}

std::wstring PipeTest::uniqueName() {
    static std::atomic<int> next = 0;
    return L"\\\\.\\pipe\\winutil test " + std::to_wstring(GetCurrentProcessId()) + L" " +
           std::to_wstring(++next);
}

std::wstring PipeTest::serveHere() {
    using Function = decltype(Java_com_qarvo_kel_util_WindowsUtil_connectPipe);
    constexpr char export_[] = "Java_com_qarvo_kel_util_WindowsUtil_connectPipe";
    FakeJava ownJava;
    return NativeMethod<Function>(ownJava, export_, library().exported<Function>(export_))(name).text();
}

std::wstring PipeTest::serve(const std::function<void()>& client) {
    for (int round = 0; round < 50; ++round) {
        std::promise<void> waiting;
        bool early = false;
        const auto connect = REPLACE(ConnectNamedPipe, [&](HANDLE pipe, LPOVERLAPPED overlapped) {
            waiting.set_value();
            const BOOL done = REAL(ConnectNamedPipe)(pipe, overlapped);
            early = !done && GetLastError() == ERROR_PIPE_CONNECTED;
            return done;
        });
        auto server = std::async(std::launch::async, [this] { return serveHere(); });
        waiting.get_future().wait();
        // The server has still a step to go before it listens.
        Sleep(static_cast<DWORD>(5 + round));
        std::exception_ptr failure;
        try {
            client();
        } catch (const std::runtime_error&) {
            failure = std::current_exception();
        }
        const std::wstring answer = server.get();
        if (early) {
            continue;
        }
        if (failure) {
            std::rethrow_exception(failure);
        }
        return answer;
    }
    throw std::runtime_error("the client always comes before the server listens");
}

ScriptedPipe::ScriptedPipe(SystemCalls& system) {
    create = system.replace<decltype(::CreateNamedPipeW)>(
        "CreateNamedPipeW", [this](LPCWSTR, DWORD, DWORD, DWORD, DWORD, DWORD, DWORD, LPSECURITY_ATTRIBUTES) {
            return note("CreateNamedPipeW", createCode) ? Ledger::fakeHandle() : INVALID_HANDLE_VALUE;
        });
    connect = system.replace<decltype(::ConnectNamedPipe)>(
        "ConnectNamedPipe", [this](HANDLE, LPOVERLAPPED) { return note("ConnectNamedPipe", connectCode); });
    open = system.replace<decltype(::CreateFileW)>(
        "CreateFileW", [this](LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
            const DWORD code = nextOpening_ < openings.size() ? openings[nextOpening_++] : ERROR_SUCCESS;
            return note("CreateFileW", code) ? Ledger::fakeHandle() : INVALID_HANDLE_VALUE;
        });
    setMode = system.replace<decltype(::SetNamedPipeHandleState)>(
        "SetNamedPipeHandleState", [this](HANDLE, LPDWORD given, LPDWORD, LPDWORD) {
            mode = *given;
            return note("SetNamedPipeHandleState", modeCode);
        });
    wait = system.replace<decltype(::WaitNamedPipeW)>(
        "WaitNamedPipeW", [this](LPCWSTR, DWORD) { return note("WaitNamedPipeW", waitCode); });
    write = system.replace<decltype(::WriteFile)>(
        "WriteFile", [this](HANDLE, LPCVOID bytes, DWORD size, LPDWORD count, LPOVERLAPPED) {
            written.emplace_back(static_cast<const char*>(bytes), size);
            *count = size - shortBy;
            return note("WriteFile", writeCode);
        });
    read = system.replace<decltype(::ReadFile)>(
        "ReadFile", [this](HANDLE, LPVOID buffer, DWORD size, LPDWORD count, LPOVERLAPPED) {
            const Read next =
                nextRead_ < reads.size() ? reads[nextRead_++] : Read{.bytes = {}, .code = ERROR_BROKEN_PIPE};
            EXPECT_EQ(size, 8192u);
            *count = static_cast<DWORD>(std::min<std::size_t>(size, next.bytes.size()));
            std::memcpy(buffer, next.bytes.data(), *count);
            SetLastError(next.code);
            return next.code == ERROR_SUCCESS;
        });
    flush = system.replace<decltype(::FlushFileBuffers)>("FlushFileBuffers",
                                                         [this](HANDLE) { return note("FlushFileBuffers"); });
    disconnect = system.replace<decltype(::DisconnectNamedPipe)>(
        "DisconnectNamedPipe", [this](HANDLE) { return note("DisconnectNamedPipe"); });
    close = system.replace<decltype(::CloseHandle)>("CloseHandle",
                                                    [this](HANDLE) { return note("CloseHandle"); });
}

BOOL ScriptedPipe::note(const char* function, DWORD code) {
    calls.emplace_back(function);
    SetLastError(code);
    return code == ERROR_SUCCESS;
}

}  // namespace testbed
