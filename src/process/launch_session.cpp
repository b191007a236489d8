// Launching as the user of a session.
// windows.h comes first: the other builds on it.
#include <windows.h>

#include <wtsapi32.h>

#include "process/child_start.h"
#include "process/failure.h"
#include "process/java_process.h"
#include "process/launch.h"
#include "process/launch_chars.h"

namespace winutil::process {

namespace {

constexpr wchar_t tag[] = L"[WindowsUtil:createProcessAsUserSession]";

bool start(DWORD session, const ProgramTexts& program, const OutputPipes& pipes, const LaunchCells& cells,
           ErrorBuffer& failure) noexcept {
    KernelHandle sessionToken;
    if (!WTSQueryUserToken(session, sessionToken.receive())) {
        return failed(failure, GetLastError(), L"%s Failed to get session token", tag);
    }
    const KernelHandle linkedToken = linkedTokenOf(sessionToken.get());
    KernelHandle primaryToken;
    if (!makePrimaryToken(linkedToken ? linkedToken.get() : sessionToken.get(), primaryToken.receive())) {
        return failed(failure, GetLastError(), L"%s Failed to DuplicateTokenEx.", tag);
    }
    EnvironmentBlock environment;
    if (!CreateEnvironmentBlock(environment.receive(), sessionToken.get(), FALSE)) {
        return failed(failure, GetLastError(), L"%s Failed to CreateEnvironmentBlock.", tag);
    }
    PROCESS_INFORMATION child = {};
    if (!startChild(primaryToken.get(), program, environment.get(), pipes, child)) {
        return startFailed(tag, GetLastError(), program, failure);
    }
    const KernelHandle thread(child.hThread);
    *cells.process = child.hProcess;
    return true;
}

}  // namespace

jobject launchInSession(JNIEnv* env, const Program& program, DWORD session) noexcept {
    ErrorBuffer failure;
    LaunchCells cells;
    OutputPipes pipes;
    if (!allocateCells(tag, failure, cells.process, cells.output, cells.error) ||
        !makeOutputPipes(tag, pipes, failure)) {
        // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): the cells are let go on purpose
        throwIOException(env, failure.text());
        return nullptr;
    }
    const ProgramChars programChars(env, program);
    if (!programChars) {
        return nullptr;
    }
    if (!start(session, programChars.get(), pipes, cells, failure)) {
        throwIOException(env, failure.text());
        return nullptr;
    }
    return newJavaProcess(env, tag, cells, pipes);
}

}  // namespace winutil::process
