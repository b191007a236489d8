// Both ends of real pipes, the library's and plain ones that say and hear what they like.
#pragma once

#include <functional>
#include <future>
#include <string>
#include <vector>

#include "winutil_fixture.h"

namespace testbed {

// One end of a pipe in message mode, without the library. A failure is an exception.
class RawPipe {
public:
    // The server's end, the only instance of its pipe.
    static RawPipe server(const std::wstring& name);
    // The client's end of a pipe that is there.
    static RawPipe client(const std::wstring& name);
    RawPipe(RawPipe&& other) noexcept;
    ~RawPipe() { close(); }

    void awaitClient();
    void dropClient();
    void write(std::string_view message);
    // The next message, or an empty text when the other end is gone.
    std::string read();
    // What came of reading when there is no message: the code of the failure.
    DWORD readFailure();
    void close();

private:
    explicit RawPipe(HANDLE pipe);

    HANDLE pipe_;
};

// A text as the library puts it on a pipe: UTF-16 with its zero.
std::string asMessage(std::wstring_view text);

class PipeTest : public WinUtilTest {
protected:
    // Serves one client on a thread of its own and, once it waits, runs the client here. Gives what the
    // server answers Java. A client that comes before the server listens makes the server give up: such a
    // round does not count.
    std::wstring serve(const std::function<void()>& client);

    // What the serving method answers, called on the thread of the caller.
    std::wstring serveHere();

    int send(std::wstring_view message) { return NATIVE(sendPipe)(name, message); }

    // A name of this test's own.
    const std::wstring name = uniqueName();

private:
    static std::wstring uniqueName();
};

// A pipe in memory in place of the calls for files and pipes: what it answers is written down before, and
// what it is given can be looked at.
class ScriptedPipe {
public:
    explicit ScriptedPipe(SystemCalls& system);

    struct Read {
        std::string bytes;
        DWORD code = ERROR_SUCCESS;
    };
    std::vector<Read> reads;      // behind the last one the pipe is broken
    std::vector<DWORD> openings;  // codes of the client's first attempts to open it
    DWORD createCode = ERROR_SUCCESS;
    DWORD connectCode = ERROR_SUCCESS;
    DWORD modeCode = ERROR_SUCCESS;
    DWORD writeCode = ERROR_SUCCESS;
    DWORD waitCode = ERROR_SUCCESS;
    DWORD shortBy = 0;  // bytes that are missing from each write

    std::vector<std::string> written;
    std::vector<std::string> calls;  // the functions in their order, without the reads
    DWORD mode = 0;

    // What each function was given last.
    Replacement create, connect, open, setMode, wait, write, read, flush, disconnect, close;

private:
    BOOL note(const char* function, DWORD code = ERROR_SUCCESS);
    std::size_t nextRead_ = 0;
    std::size_t nextOpening_ = 0;
};

}  // namespace testbed
