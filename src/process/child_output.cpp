#include "process/child_output.h"

#include "process/failure.h"

namespace winutil::process {

namespace {

bool makeInheritablePipe(OutputPipe& pipe) noexcept {
    SECURITY_ATTRIBUTES attributes = {};
    static_assert(sizeof(attributes) == 24);
    attributes.nLength = sizeof(attributes);
    attributes.bInheritHandle = TRUE;
    return CreatePipe(pipe.readEnd.receive(), pipe.writeEnd.receive(), &attributes, 0) != FALSE;
}

bool keepFromChild(const KernelHandle& handle) noexcept {
    return SetHandleInformation(handle.get(), HANDLE_FLAG_INHERIT, 0) != FALSE;
}

}  // namespace

bool makeOutputPipes(const wchar_t* tag, OutputPipes& pipes, ErrorBuffer& failure) noexcept {
    if (!makeInheritablePipe(pipes.output)) {
        return failed(failure, GetLastError(), L"%s Failed to CreatePipe for stdout", tag);
    }
    if (!makeInheritablePipe(pipes.error)) {
        return failed(failure, GetLastError(), L"%s Failed to CreatePipe for stderr", tag);
    }
    if (!keepFromChild(pipes.output.readEnd)) {
        return failed(failure, GetLastError(), L"%s Failed to SetHandleInformation for hStdOutReadPipe", tag);
    }
    if (!keepFromChild(pipes.error.readEnd)) {
        return failed(failure, GetLastError(), L"%s Failed to SetHandleInformation for hStdErrReadPipe", tag);
    }
    return true;
}

}  // namespace winutil::process
