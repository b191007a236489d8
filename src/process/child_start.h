// The steps that every launch has in common.
#pragma once

#include <windows.h>

#include <userenv.h>

#include "bridge/errors.h"
#include "bridge/owners.h"
#include "process/child_output.h"

namespace winutil::process {

// What is started, and where; each may be null. The system may write to the command line while it reads it.
struct ProgramTexts {
    const wchar_t* application;
    wchar_t* commandLine;
    const wchar_t* workingDirectory;
};

// The environment of a user.
struct EnvironmentBlockKind {
    using Value = void*;
    static Value none() noexcept { return nullptr; }
    static void close(Value value) noexcept { DestroyEnvironmentBlock(value); }
};
using EnvironmentBlock = Owned<EnvironmentBlockKind>;

// Returns the token that is linked to another one, none where there is none: an administrator's elevated
// token, when the other is the limited one.
KernelHandle linkedTokenOf(HANDLE token) noexcept;

// Makes a primary token of another one. Returns false, with the reason as the last error, when it fails.
bool makePrimaryToken(HANDLE token, HANDLE* primary) noexcept;

// Starts the child with the write ends as its output. Returns false, with the reason as the last error, when
// it fails.
bool startChild(HANDLE token, const ProgramTexts& program, void* environment, const OutputPipes& pipes,
                PROCESS_INFORMATION& child) noexcept;

// Writes why the child was not started. Returns false.
bool startFailed(const wchar_t* tag, DWORD code, const ProgramTexts& program, ErrorBuffer& failure) noexcept;

}  // namespace winutil::process
