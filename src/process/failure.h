// Messages of failed steps.
#pragma once

#include <windows.h>

#include "bridge/errors.h"

namespace winutil::process {

// The message of a step. It is made by wsprintfW, which shows a null text as "(null)" and cuts what runs past
// 1024 characters.
class StepMessage {
public:
    template <class... Values>
    explicit StepMessage(const wchar_t* format, Values... values) noexcept {
        wsprintfW(text_, format, values...);
    }
    const wchar_t* get() const noexcept { return text_; }

private:
    // One character more: not every system terminates what it cuts.
    wchar_t text_[1024 + 1] = {};
};

// Writes why a step failed, as "message  (code) system text". Returns false, as the step does.
template <class... Values>
bool failed(ErrorBuffer& failure, DWORD code, const wchar_t* format, Values... values) noexcept {
    const StepMessage message(format, values...);
    formatWin32Error(message.get(), L"", code, failure.text(), ErrorBuffer::capacity);
    return false;
}

}  // namespace winutil::process
