#include "process/child_start.h"

#include "process/failure.h"

namespace winutil::process {

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

bool startChild(HANDLE token, const ProgramTexts& program, void* environment, const OutputPipes& pipes,
                PROCESS_INFORMATION& child) noexcept {
    STARTUPINFOW startup = {};
    static_assert(sizeof(startup) == 104);
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = pipes.output.writeEnd.get();
    startup.hStdError = pipes.error.writeEnd.get();
    return CreateProcessAsUserW(token, program.application, program.commandLine, nullptr, nullptr, TRUE,
                                CREATE_UNICODE_ENVIRONMENT, environment, program.workingDirectory, &startup,
                                &child) != FALSE;
}

bool startFailed(const wchar_t* tag, DWORD code, const ProgramTexts& program, ErrorBuffer& failure) noexcept {
    return failed(failure, code,
                  L"%s Failed to CreateProcessAsUserW for wcAppName='%s' wcArguments='%s' wcWorkingDir='%s'.",
                  tag, program.application, program.commandLine, program.workingDirectory);
}

}  // namespace winutil::process
