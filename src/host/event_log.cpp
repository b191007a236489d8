#include "host/event_log.h"

#include <windows.h>

#include <cstdio>
#include <iterator>

#include "bridge/errors.h"
#include "bridge/owners.h"
#include "bridge/standard_output.h"

namespace winutil::host {

namespace {

// A source that events are written in the name of.
using EventSource = Resource<HANDLE, DeregisterEventSource>;

// The two events that the message file of the source describes.
constexpr DWORD ordinaryEvent = 0x101;
constexpr DWORD alternativeEventId = 0x501D6;

constexpr std::size_t lineCapacity = 128;  // the longer line with two numbers of eight digits, and room

WORD eventType(int kind) noexcept {
    switch (kind) {
        case 1:
            return EVENTLOG_WARNING_TYPE;
        case 2:
            return EVENTLOG_ERROR_TYPE;
        default:
            return EVENTLOG_INFORMATION_TYPE;
    }
}

void printRegisterFailure() noexcept {
    char line[lineCapacity];
    _snprintf_s(line, std::size(line), _TRUNCATE, "RegisterEventSource failed with 0x%lx.\n", GetLastError());
    printText(line);
}

void printReportFailure(DWORD event) noexcept {
    // Required: a text that is made and dropped, because the line is known to end where it would begin, with
    // the code that stands when the text has been looked up.
    ErrorBuffer errorBuffer;
    errorBuffer.format(L"ReportEventW", GetLastError());
    char line[lineCapacity];
    _snprintf_s(line, std::size(line), _TRUNCATE, "ReportEvent failed with 0x%lx for event 0x%lx. Error=\n",
                GetLastError(), event);
    printText(line);
}

}  // namespace

void writeEvent(const wchar_t* source, const wchar_t* message, int kind, bool alternativeEvent) noexcept {
    const EventSource log(RegisterEventSourceW(nullptr, source));
    if (!log) {
        printRegisterFailure();
        return;
    }
    const DWORD event = alternativeEvent ? alternativeEventId : ordinaryEvent;
    if (!ReportEventW(log.get(), eventType(kind), 0, event, nullptr, 1, 0, &message, nullptr)) {
        printReportFailure(event);
    }
}

}  // namespace winutil::host
