#include "process/launch.h"

// windows.h comes first: the others build on it.
#include <windows.h>

#include <userenv.h>
#include <wtsapi32.h>

#include "bridge/arguments.h"
#include "bridge/credentials.h"
#include "bridge/owners.h"
#include "bridge/privileges.h"
#include "process/failure.h"
#include "process/java_process.h"

namespace winutil::process {

namespace {

constexpr wchar_t userTag[] = L"[WindowsUtil:createProcessAsUserN]";
constexpr wchar_t sessionTag[] = L"[WindowsUtil:createProcessAsUserSession]";

constexpr std::size_t profilePathCapacity = 2048;  // characters
// Required: less than there is room for, because a longer path has always been refused.
constexpr DWORD profilePathSize = 512;

// The environment of a user.
using EnvironmentBlock = Resource<void*, DestroyEnvironmentBlock>;

// The texts of a Program. The system may write to the command line while it reads it.
struct ProgramTexts {
    const wchar_t* application;
    wchar_t* commandLine;
    const wchar_t* workingDirectory;
};

bool outOfMemory(const wchar_t* tag, ErrorBuffer& errorBuffer) noexcept {
    return failed(errorBuffer, ERROR_NOT_ENOUGH_MEMORY, L"%s", tag);
}

// Makes empty cells.
template <class... Cells>
bool allocateCells(const wchar_t* tag, ErrorBuffer& errorBuffer, Cells&... cells) noexcept {
    // Required: no owner, because a launch that fails lets go of its cells and of what is in them: the token
    // and the profile belong to Java once they are made, and so does a child that runs.
    const auto allocateCell = [](HANDLE*& cell) noexcept {
        cell = allocateZeroed<HANDLE>(1).release();
        return cell != nullptr;
    };
    return (allocateCell(cells) && ...) || outOfMemory(tag, errorBuffer);
}

// Held alone while a child starts, and shared while a launch makes its pipes. A child inherits every
// handle of this process that can be inherited when it starts: with the write ends of another launch it would
// keep that one's streams from ending.
constinit SRWLOCK startLock = SRWLOCK_INIT;

bool setInheritable(const KernelHandle& handle, bool inheritable) noexcept {
    return SetHandleInformation(handle.get(), HANDLE_FLAG_INHERIT, inheritable ? HANDLE_FLAG_INHERIT : 0) !=
           FALSE;
}

// Makes a pipe whose write end no process inherits until its child starts.
bool makePipe(OutputPipe& pipe) noexcept {
    SECURITY_ATTRIBUTES attributes = {};
    static_assert(sizeof(attributes) == 24);
    attributes.nLength = sizeof(attributes);
    // Required: inheritable at first, because a write end that cannot be switched must reach the child all
    // the same.
    attributes.bInheritHandle = TRUE;
    if (!CreatePipe(pipe.readEnd.receive(), pipe.writeEnd.receive(), &attributes, 0)) {
        return false;
    }
    setInheritable(pipe.writeEnd, false);
    return true;
}

// Makes both pipes. From here on no process inherits an end of them, until InheritableWriteEnds lets the
// child.
bool makeOutputPipes(const wchar_t* tag, OutputPipes& pipes, ErrorBuffer& errorBuffer) noexcept {
    const SharedLock lock(startLock);
    if (!makePipe(pipes.output)) {
        return failed(errorBuffer, GetLastError(), L"%s Failed to CreatePipe for stdout", tag);
    }
    if (!makePipe(pipes.error)) {
        return failed(errorBuffer, GetLastError(), L"%s Failed to CreatePipe for stderr", tag);
    }
    if (!setInheritable(pipes.output.readEnd, false)) {
        return failed(errorBuffer, GetLastError(), L"%s Failed to SetHandleInformation for hStdOutReadPipe",
                      tag);
    }
    if (!setInheritable(pipes.error.readEnd, false)) {
        return failed(errorBuffer, GetLastError(), L"%s Failed to SetHandleInformation for hStdErrReadPipe",
                      tag);
    }
    return true;
}

// Returns the token that is linked to another one, none where there is none: an administrator's elevated
// token, when the other is the limited one.
KernelHandle linkedTokenOf(HANDLE token) noexcept {
    TOKEN_LINKED_TOKEN linked = {};
    static_assert(sizeof(linked) == 8 && TokenLinkedToken == 19);
    DWORD size = 0;
    if (!GetTokenInformation(token, TokenLinkedToken, &linked, sizeof(linked), &size) ||
        linked.LinkedToken == token) {
        return {};
    }
    return KernelHandle(linked.LinkedToken);
}

bool makePrimaryToken(HANDLE token, HANDLE* primary) noexcept {
    return DuplicateTokenEx(token, MAXIMUM_ALLOWED, nullptr, SecurityDelegation, TokenPrimary, primary) !=
           FALSE;
}

// Lets the write ends be inherited for the length of a scope, and no other launch start its child. Names the
// one that cannot be, and leaves the last error: a child would run without that stream.
class InheritableWriteEnds {
public:
    explicit InheritableWriteEnds(const OutputPipes& pipes) noexcept
        : lock_(startLock),
          pipes_(pipes),
          refused_(!setInheritable(pipes.output.writeEnd, true)  ? L"hStdOutWritePipe"
                   : !setInheritable(pipes.error.writeEnd, true) ? L"hStdErrWritePipe"
                                                                 : nullptr) {}
    InheritableWriteEnds(const InheritableWriteEnds&) = delete;
    InheritableWriteEnds& operator=(const InheritableWriteEnds&) = delete;
    // A failure is passed over: the ends are closed soon.
    ~InheritableWriteEnds() {
        setInheritable(pipes_.output.writeEnd, false);
        setInheritable(pipes_.error.writeEnd, false);
    }

    // None where both can be inherited.
    const wchar_t* refused() const noexcept { return refused_; }

private:
    const ExclusiveLock lock_;
    const OutputPipes& pipes_;
    const wchar_t* refused_;
};

// Why a child did not start.
struct StartFailure {
    DWORD code = ERROR_SUCCESS;
    const wchar_t* refusedEnd = nullptr;  // the write end that it could not have been given
};

// Starts the child with the write ends as its output. Returns false, with the reason, when that fails.
bool startChild(HANDLE token, const ProgramTexts& program, void* environment, const OutputPipes& pipes,
                PROCESS_INFORMATION& child, StartFailure& failure) noexcept {
    if (program.application == nullptr && program.commandLine == nullptr) {
        // The system reads one of the two without a look: that would end this process.
        failure.code = ERROR_INVALID_PARAMETER;
        return false;
    }
    STARTUPINFOW startup = {};
    static_assert(sizeof(startup) == 104);
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = pipes.output.writeEnd.get();
    startup.hStdError = pipes.error.writeEnd.get();
    const InheritableWriteEnds inheritable(pipes);
    const bool started = inheritable.refused() == nullptr &&
                         CreateProcessAsUserW(token, program.application, program.commandLine, nullptr,
                                              nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT, environment,
                                              program.workingDirectory, &startup, &child);
    failure = {GetLastError(), inheritable.refused()};
    return started;
}

bool startFailed(const wchar_t* tag, const StartFailure& failure, const ProgramTexts& program,
                 ErrorBuffer& errorBuffer) noexcept {
    if (failure.refusedEnd != nullptr) {
        return failed(errorBuffer, failure.code, L"%s Failed to SetHandleInformation for %s", tag,
                      failure.refusedEnd);
    }
    return failed(errorBuffer, failure.code,
                  L"%s Failed to CreateProcessAsUserW for wcAppName='%s' wcArguments='%s' wcWorkingDir='%s'.",
                  tag, program.application, program.commandLine, program.workingDirectory);
}

bool accountStepFailed(DWORD code, const wchar_t* step, const Credentials& account,
                       ErrorBuffer& errorBuffer) noexcept {
    return failed(errorBuffer, code, L"%s Failed to %s for wcDomain='%s' username='%s'.", userTag, step,
                  account.domain, account.user);
}

bool loadProfile(HANDLE token, const Credentials& account, const LaunchCells& cells,
                 ErrorBuffer& errorBuffer) noexcept {
    wchar_t path[profilePathCapacity];
    DWORD size = profilePathSize;
    if (!GetUserProfileDirectoryW(token, path, &size)) {
        return accountStepFailed(GetLastError(), L"GetUserProfileDirectory", account, errorBuffer);
    }
    setPrivilege("SeBackupPrivilege", TRUE);
    setPrivilege("SeRestorePrivilege", TRUE);
    PROFILEINFOW profile = {};
    static_assert(sizeof(profile) == 56);
    profile.dwSize = sizeof(profile);
    profile.dwFlags = PI_NOUI;
    profile.lpUserName = const_cast<wchar_t*>(account.user);
    profile.lpProfilePath = path;
    if (!LoadUserProfileW(token, &profile)) {
        return failed(errorBuffer, GetLastError(), L"%s Failed to LoadUserProfileW", userTag);
    }
    *cells.profile = profile.hProfile;
    return true;
}

// The profile stays loaded and the token in its cell open, whichever later step fails.
bool startAsUser(const Credentials& account, const ProgramTexts& program, const OutputPipes& pipes,
                 const LaunchCells& cells, ErrorBuffer& errorBuffer) noexcept {
    KernelHandle logonToken;
    if (!LogonUserW(account.user, account.domain, account.password, LOGON32_LOGON_INTERACTIVE,
                    LOGON32_PROVIDER_DEFAULT, logonToken.receive())) {
        return accountStepFailed(GetLastError(), L"LogonUserW", account, errorBuffer);
    }
    if (!loadProfile(logonToken.get(), account, cells, errorBuffer)) {
        return false;
    }
    const KernelHandle linkedToken = linkedTokenOf(logonToken.get());
    if (!makePrimaryToken(linkedToken ? linkedToken.get() : logonToken.get(), cells.token)) {
        return accountStepFailed(GetLastError(), L"DuplicateTokenEx", account, errorBuffer);
    }
    EnvironmentBlock environment;
    if (!CreateEnvironmentBlock(environment.receive(), logonToken.get(), FALSE)) {
        return accountStepFailed(GetLastError(), L"CreateEnvironmentBlock", account, errorBuffer);
    }
    if (!ImpersonateLoggedOnUser(*cells.token)) {
        return accountStepFailed(GetLastError(), L"ImpersonateLoggedOnUser", account, errorBuffer);
    }
    PROCESS_INFORMATION child = {};
    StartFailure failure;
    const bool started = startChild(*cells.token, program, environment.get(), pipes, child, failure);
    RevertToSelf();
    if (!started) {
        return startFailed(userTag, failure, program, errorBuffer);
    }
    // Required: the handle of the child's primary thread is not closed, because it belongs to what Java has
    // of the child, as token and profile do.
    *cells.process = child.hProcess;
    return true;
}

bool startInSession(DWORD session, const ProgramTexts& program, const OutputPipes& pipes,
                    const LaunchCells& cells, ErrorBuffer& errorBuffer) noexcept {
    KernelHandle sessionToken;
    if (!WTSQueryUserToken(session, sessionToken.receive())) {
        return failed(errorBuffer, GetLastError(), L"%s Failed to get session token", sessionTag);
    }
    const KernelHandle linkedToken = linkedTokenOf(sessionToken.get());
    KernelHandle primaryToken;
    if (!makePrimaryToken(linkedToken ? linkedToken.get() : sessionToken.get(), primaryToken.receive())) {
        return failed(errorBuffer, GetLastError(), L"%s Failed to DuplicateTokenEx.", sessionTag);
    }
    EnvironmentBlock environment;
    if (!CreateEnvironmentBlock(environment.receive(), sessionToken.get(), FALSE)) {
        return failed(errorBuffer, GetLastError(), L"%s Failed to CreateEnvironmentBlock.", sessionTag);
    }
    PROCESS_INFORMATION child = {};
    StartFailure failure;
    if (!startChild(primaryToken.get(), program, environment.get(), pipes, child, failure)) {
        return startFailed(sessionTag, failure, program, errorBuffer);
    }
    const KernelHandle thread(child.hThread);
    *cells.process = child.hProcess;
    return true;
}

}  // namespace

jobject launchAsUser(JNIEnv* env, const Program& program, const Account& account,
                     ErrorBuffer& errorBuffer) noexcept {
    LaunchCells cells;
    OutputPipes pipes;
    if (!allocateCells(userTag, errorBuffer, cells.process, cells.output, cells.error, cells.token,
                       cells.profile) ||
        !makeOutputPipes(userTag, pipes, errorBuffer)) {
        // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): the cells are let go
        return nullptr;
    }
    // Taken here, because cells and pipes come first.
    const Arguments arguments(env, inPlace(account.domain), inPlace(account.user),
                              inPlaceSecret(account.password), inPlace(program.application),
                              inPlace(program.commandLine), inPlace(program.workingDirectory));
    if (!arguments) {
        outOfMemory(userTag, errorBuffer);
        return nullptr;
    }
    const Credentials credentials{
        .domain = arguments.get<0>(), .user = arguments.get<1>(), .password = arguments.get<2>()};
    const ProgramTexts texts{.application = arguments.get<3>(),
                             .commandLine = arguments.get<4>(),
                             .workingDirectory = arguments.get<5>()};
    if (!startAsUser(credentials, texts, pipes, cells, errorBuffer)) {
        return nullptr;
    }
    return newJavaProcess(env, userTag, cells, pipes, errorBuffer);
}

jobject launchInSession(JNIEnv* env, const Program& program, DWORD session,
                        ErrorBuffer& errorBuffer) noexcept {
    LaunchCells cells;
    OutputPipes pipes;
    if (!allocateCells(sessionTag, errorBuffer, cells.process, cells.output, cells.error) ||
        !makeOutputPipes(sessionTag, pipes, errorBuffer)) {
        // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): the cells are let go
        return nullptr;
    }
    const Arguments arguments(env, inPlace(program.application), inPlace(program.commandLine),
                              inPlace(program.workingDirectory));
    if (!arguments) {
        outOfMemory(sessionTag, errorBuffer);
        return nullptr;
    }
    const ProgramTexts texts{.application = arguments.get<0>(),
                             .commandLine = arguments.get<1>(),
                             .workingDirectory = arguments.get<2>()};
    if (!startInSession(session, texts, pipes, cells, errorBuffer)) {
        return nullptr;
    }
    return newJavaProcess(env, sessionTag, cells, pipes, errorBuffer);
}

}  // namespace winutil::process
