// The pipes that carry a child's standard output and standard error.
#pragma once

#include "bridge/errors.h"
#include "bridge/owners.h"

namespace winutil::process {

struct OutputPipe {
    KernelHandle readEnd;
    KernelHandle writeEnd;
};

struct OutputPipes {
    OutputPipe output;
    OutputPipe error;
};

// Makes both pipes. A child inherits the write ends and not the read ends. Returns false, with the reason in
// `failure`, when a step fails.
bool makeOutputPipes(const wchar_t* tag, OutputPipes& pipes, ErrorBuffer& failure) noexcept;

}  // namespace winutil::process
