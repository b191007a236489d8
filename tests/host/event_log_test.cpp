// Entries of the application event log. This system's log keeps none: what it is given is looked at instead.
#include <cstdio>

#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Event {
    std::wstring source;
    WORD type;
    WORD category;
    DWORD id;
    std::vector<std::wstring> texts;
    bool operator==(const Event&) const = default;
};

class EventLog : public WinUtilTest {
protected:
    BOOL report(HANDLE, WORD type, WORD category, DWORD id, PSID user, WORD count, DWORD size, LPCWSTR* texts,
                LPVOID data) {
        EXPECT_EQ(user, nullptr);
        EXPECT_EQ(size, 0u);
        EXPECT_EQ(data, nullptr);
        events.push_back({source, type, category, id, {texts, texts + count}});
        SetLastError(reportCode);
        return reportCode == ERROR_SUCCESS;
    }

    void write(int kind, bool alternative = false) {
        NATIVE(createEventLog)(L"Backup", L"message", kind, alternative);
    }

    std::wstring source;
    DWORD registerCode = ERROR_SUCCESS;
    DWORD reportCode = ERROR_SUCCESS;
    std::vector<Event> events;
    std::string printed;

    const Replacement registerSource =
        REPLACE(RegisterEventSourceW, [this](LPCWSTR machine, LPCWSTR name) -> HANDLE {
            EXPECT_EQ(machine, nullptr);
            source = name;
            SetLastError(registerCode);
            return registerCode == ERROR_SUCCESS ? Ledger::fakeHandle() : nullptr;
        });
    const Replacement reportEvent =
        REPLACE(ReportEventW, [this](auto... arguments) { return report(arguments...); });
    const Replacement print = REPLACE(fputs, [this](const char* text, std::FILE* stream) {
        EXPECT_EQ(_fileno(stream), 1);
        printed += text;
        return 0;
    });
};

struct KindAndType {
    int kind;
    WORD type;
};

class EventKind : public EventLog, public ::testing::WithParamInterface<KindAndType> {};

TEST_P(EventKind, DecidesTheType) {
    write(GetParam().kind);

    EXPECT_THAT(events, ElementsAre(Event{L"Backup", GetParam().type, 0, 257, {L"message"}}));
    EXPECT_EQ(printed, "");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, EventKind,
    ::testing::Values(KindAndType{1, EVENTLOG_WARNING_TYPE}, KindAndType{2, EVENTLOG_ERROR_TYPE},
                      KindAndType{0, EVENTLOG_INFORMATION_TYPE}, KindAndType{3, EVENTLOG_INFORMATION_TYPE},
                      KindAndType{4, EVENTLOG_INFORMATION_TYPE}, KindAndType{-1, EVENTLOG_INFORMATION_TYPE}));

TEST_F(EventLog, HasAnAlternativeEvent) {
    write(2, true);

    EXPECT_THAT(events, ElementsAre(Event{L"Backup", 1, 0, 328150, {L"message"}}));
}

TEST_F(EventLog, TakesNoMessageForAnEmptyOne) {
    NATIVE(createEventLog)(L"Backup", nullptr, 1, false);

    EXPECT_THAT(events, ElementsAre(Event{L"Backup", 2, 0, 257, {L""}}));
}

TEST_F(EventLog, TakesAnyText) {
    NATIVE(createEventLog)(L"S\u00F6urce", L"%1 \u20AC %s\r\n", 0, false);

    EXPECT_THAT(events, ElementsAre(Event{L"S\u00F6urce", 4, 0, 257, {L"%1 \u20AC %s\r\n"}}));
}

TEST_F(EventLog, PrintsThatTheSourceCannotBeRegistered) {
    registerCode = RPC_S_SERVER_UNAVAILABLE;

    write(1);

    EXPECT_EQ(printed, "RegisterEventSource failed with 0x6ba.\n");
    EXPECT_THAT(events, IsEmpty());
    EXPECT_EQ(system().count("DeregisterEventSource"), 0u);
}

TEST_F(EventLog, PrintsThatTheEventCannotBeWritten) {
    reportCode = ERROR_LOG_FILE_FULL;

    write(1);

    EXPECT_EQ(printed, "ReportEvent failed with 0x5de for event 0x101. Error=\n");
    EXPECT_EQ(system().count("DeregisterEventSource"), 1u);
}

TEST_F(EventLog, PrintsTheIdOfTheAlternativeEvent) {
    reportCode = ERROR_ACCESS_DENIED;

    write(1, true);

    EXPECT_EQ(printed, "ReportEvent failed with 0x5 for event 0x501d6. Error=\n");
}

// The text is looked up before the line is printed, and its failure is the newer one.
TEST_F(EventLog, PrintsTheCodeThatStandsBehindTheLookUpOfItsText) {
    reportCode = 0x7000DEAD;
    SetLastError(ERROR_SUCCESS);
    ASSERT_EQ(systemText(reportCode), L"");
    const DWORD lookUpCode = GetLastError();

    write(1);

    EXPECT_EQ(printed, "ReportEvent failed with " + hex(lookUpCode) + " for event 0x101. Error=\n");
}

TEST_F(EventLog, RaisesNothing) {
    registerCode = ERROR_ACCESS_DENIED;
    write(1);
    EXPECT_FALSE(java.isPending());

    registerCode = ERROR_SUCCESS;
    reportCode = ERROR_ACCESS_DENIED;
    write(1);
    EXPECT_FALSE(java.isPending());
}

using RealEventLog = WinUtilTest;

TEST_F(RealEventLog, TakesAnEntry) {
    const auto report = system().watch("ReportEventW");

    NATIVE(createEventLog)(L"WinUtil tests", L"An entry of the tests", 0, false);

    EXPECT_EQ(report.count(), 1u);
}

}  // namespace
