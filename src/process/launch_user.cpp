// Launching with an account's name and password.
#include "bridge/privileges.h"
#include "process/child_start.h"
#include "process/failure.h"
#include "process/java_process.h"
#include "process/launch.h"
#include "process/launch_chars.h"

namespace winutil::process {

namespace {

constexpr wchar_t tag[] = L"[WindowsUtil:createProcessAsUserN]";

constexpr std::size_t profilePathCapacity = 2048;  // characters
// What the system is told of it: its longest answer, kept as it is.
constexpr DWORD profilePathSize = 512;

bool accountStepFailed(ErrorBuffer& failure, DWORD code, const wchar_t* step,
                       const AccountTexts& account) noexcept {
    return failed(failure, code, L"%s Failed to %s for wcDomain='%s' username='%s'.", tag, step,
                  account.domain, account.user);
}

bool loadProfile(HANDLE token, const AccountTexts& account, const LaunchCells& cells,
                 ErrorBuffer& failure) noexcept {
    wchar_t path[profilePathCapacity];
    DWORD size = profilePathSize;
    if (!GetUserProfileDirectoryW(token, path, &size)) {
        return accountStepFailed(failure, GetLastError(), L"GetUserProfileDirectory", account);
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
        return failed(failure, GetLastError(), L"%s Failed to LoadUserProfileW", tag);
    }
    *cells.profile = profile.hProfile;
    return true;
}

// The profile stays loaded and the token in its cell open, whichever later step fails, deliberately.
bool start(const AccountTexts& account, const ProgramTexts& program, const OutputPipes& pipes,
           const LaunchCells& cells, ErrorBuffer& failure) noexcept {
    KernelHandle logonToken;
    if (!LogonUserW(account.user, account.domain, account.password, LOGON32_LOGON_INTERACTIVE,
                    LOGON32_PROVIDER_DEFAULT, logonToken.receive())) {
        return accountStepFailed(failure, GetLastError(), L"LogonUserW", account);
    }
    if (!loadProfile(logonToken.get(), account, cells, failure)) {
        return false;
    }
    const KernelHandle linkedToken = linkedTokenOf(logonToken.get());
    if (!makePrimaryToken(linkedToken ? linkedToken.get() : logonToken.get(), cells.token)) {
        return accountStepFailed(failure, GetLastError(), L"DuplicateTokenEx", account);
    }
    EnvironmentBlock environment;
    if (!CreateEnvironmentBlock(environment.receive(), logonToken.get(), FALSE)) {
        return accountStepFailed(failure, GetLastError(), L"CreateEnvironmentBlock", account);
    }
    if (!ImpersonateLoggedOnUser(*cells.token)) {
        return accountStepFailed(failure, GetLastError(), L"ImpersonateLoggedOnUser", account);
    }
    PROCESS_INFORMATION child = {};
    const bool started = startChild(*cells.token, program, environment.get(), pipes, child);
    const DWORD code = GetLastError();
    RevertToSelf();
    if (!started) {
        return startFailed(tag, code, program, failure);
    }
    // The handle of the child's primary thread is never closed, deliberately.
    *cells.process = child.hProcess;
    return true;
}

}  // namespace

jobject launchAsUser(JNIEnv* env, const Program& program, const Account& account) noexcept {
    ErrorBuffer failure;
    LaunchCells cells;
    OutputPipes pipes;
    if (!allocateCells(tag, failure, cells.process, cells.output, cells.error, cells.token, cells.profile) ||
        !makeOutputPipes(tag, pipes, failure)) {
        // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): the cells are let go on purpose
        throwIOException(env, failure.text());
        return nullptr;
    }
    const AccountChars accountChars(env, account);
    if (!accountChars) {
        return nullptr;
    }
    const ProgramChars programChars(env, program);
    if (!programChars) {
        return nullptr;
    }
    if (!start(accountChars.get(), programChars.get(), pipes, cells, failure)) {
        throwIOException(env, failure.text());
        return nullptr;
    }
    return newJavaProcess(env, tag, cells, pipes);
}

}  // namespace winutil::process
