#pragma once

#include <cstdio>
#include <iterator>

#include "bridge/errors.h"
#include "bridge/standard_output.h"
#include "process/process_id.h"

namespace winutil::process {

// What a method tells about its steps on the standard output, when it is asked to.
class Progress {
public:
    Progress(const wchar_t* tag, bool wanted) noexcept : tag_(tag), wanted_(wanted) {}

    // Prints a line; the first text of its format is the tag.
    template <class... Values>
    void print(const wchar_t* format, Values... values) const noexcept {
        if (wanted_) {
            wchar_t line[capacity];
            _snwprintf_s(line, std::size(line), _TRUNCATE, format, tag_, values...);
            printText(line);
        }
    }

    // Prints why a method ends, and writes it with the system's text of the code. Returns false.
    bool fail(ErrorBuffer& errorBuffer, DWORD code, const wchar_t* message) const noexcept {
        print(L"%s %s\n", message);
        errorBuffer.format(message, L"", code);
        return false;
    }

private:
    // The two longest texts that are read from a process, and the words around them.
    static constexpr std::size_t capacity = 2 * 2048 + 256;

    const wchar_t* tag_;
    bool wanted_;
};

// The message of a step on a process, with its id in it.
class ProcessMessage {
public:
    ProcessMessage(const wchar_t* format, ProcessId process) noexcept {
        _snwprintf_s(text_, std::size(text_), _TRUNCATE, format, process.number());
    }
    const wchar_t* get() const noexcept { return text_; }

private:
    wchar_t text_[64];
};

}  // namespace winutil::process
