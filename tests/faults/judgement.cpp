#include "judgement.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "fault_table.h"

namespace testbed {

namespace {

constexpr char outOfMemory[] = "java/lang/OutOfMemoryError";

// What goes back beside an exception says nothing.
bool isNeutral(const std::wstring& value) {
    constexpr const wchar_t* neutral[] = {L"", L"null", L"0", L"false", L"-1", L"\"\"", L"0 elements"};
    return std::ranges::find(neutral, value) != std::end(neutral);
}

// The last number in parentheses, as in "[ReadFile] (6) Invalid handle."
std::optional<DWORD> codeIn(const std::wstring& message) {
    for (std::size_t end = message.rfind(L')'); end != std::wstring::npos && end != 0;
         end = message.rfind(L')', end - 1)) {
        const std::size_t start = message.rfind(L'(', end);
        if (start == std::wstring::npos) {
            return std::nullopt;
        }
        const std::wstring inside = message.substr(start + 1, end - start - 1);
        const bool isNumber =
            !inside.empty() && inside.find_first_not_of(L"0123456789") == std::wstring::npos;
        if (isNumber && inside.size() < 11) {
            return static_cast<DWORD>(std::stoull(inside));
        }
    }
    return std::nullopt;
}

// Whether what a recipe says is about this failure.
bool isAbout(const Promises::Remark& remark, const PlannedFault& planned) {
    return remark.function == planned.function ||
           remark.function == planned.function + " with " + planned.codeText() ||
           remark.function == planned.function + " " + std::to_string(planned.occurrence);
}

// Whether a recipe says something about this failure that is true. It is needed then.
template <class Remarks, class Condition>
bool isTrulySaid(Remarks& remarks, const PlannedFault& planned, Condition&& condition) {
    const auto found = std::ranges::find_if(
        remarks, [&](const auto& remark) { return isAbout(remark, planned) && condition(remark); });
    if (found == remarks.end()) {
        return false;
    }
    found->needed = true;
    return true;
}

std::string complaintAboutException(Run& run, const Run& plain, const PlannedFault& planned) {
    const Promises& promises = run.promises;
    const Thrown& thrown = run.outcome.thrown;
    const bool allowed = promises.exceptions.contains(thrown.className) || thrown.className == outOfMemory ||
                         thrown.className == planned.exception ||
                         thrown.className == plain.outcome.thrown.className;
    if (!allowed) {
        return "an exception that the method does not document";
    }
    if (!promises.anyValueBesideException && !isNeutral(run.outcome.value) &&
        !promises.failureValues.contains(run.outcome.value)) {
        return "a value beside an exception";
    }
    const std::optional<DWORD> code = codeIn(thrown.message);
    if (code && code != planned.code() && code != codeIn(plain.outcome.thrown.message) &&
        !isTrulySaid(run.promises.otherCodes, planned, [](const auto&) { return true; })) {
        return "the code of something else";
    }
    return "";
}

// Whether the first is what remains of the second where some of it is left out.
bool isPartOf(const std::vector<std::wstring>& part, const std::vector<std::wstring>& whole) {
    auto next = whole.begin();
    for (const std::wstring& each : part) {
        next = std::find(next, whole.end(), each);
        if (next == whole.end()) {
            return false;
        }
        ++next;
    }
    return true;
}

bool isAsTolerated(const Outcome& outcome, const Outcome& plain, const Promises::Tolerated& tolerated) {
    switch (tolerated.outcome) {
        case Promises::Tolerated::Outcome::asEver:
            return outcome == plain;
        case Promises::Tolerated::Outcome::less:
            return outcome.value == plain.value && isPartOf(outcome.log, plain.log);
        case Promises::Tolerated::Outcome::given:
            return outcome.value == tolerated.value && outcome.log == plain.log;
        case Promises::Tolerated::Outcome::sameValue:
            return outcome.value == plain.value;
        default:
            return true;
    }
}

// What gives something back has done so; what was cut short goes on; a path is tried again in its long form;
// a privilege that the account does not hold was asked for with success; what puts a code into words may do
// so for a message that nobody reads; and nobody may be there to read what is printed.
bool mayGoUnnoticed(const PlannedFault& planned) {
    constexpr std::string_view forReaders[] = {"FormatMessageW", "GetConsoleOutputCP", "fflush", "fputs",
                                               "fwrite"};
    return planned.fault && (std::ranges::find(forReaders, planned.function) != std::end(forReaders) ||
                             planned.fault->way != Fault::Way::refused ||
                             (isTriedAgain(planned.function) && !planned.lasting) ||
                             planned.fault->lastError == DWORD{ERROR_NOT_ALL_ASSIGNED});
}

std::string complaintAboutValue(Run& run, const Run& plain, const PlannedFault& planned) {
    if (run.promises.failureValues.contains(run.outcome.value)) {
        return "";
    }
    const bool failsAnyhow = !plain.outcome.thrown.className.empty();
    if (run.outcome == plain.outcome && (failsAnyhow || mayGoUnnoticed(planned))) {
        return "";
    }
    if (isTrulySaid(run.promises.tolerated, planned, [&](const Promises::Tolerated& tolerated) {
            return isAsTolerated(run.outcome, plain.outcome, tolerated);
        })) {
        return "";
    }
    return run.outcome == plain.outcome ? "the failure goes unnoticed"
                                        : "an answer that is no documented failure";
}

}  // namespace

std::string textOf(const Outcome& outcome) {
    std::string text = toUtf8(outcome.value);
    for (const std::wstring& entry : outcome.log) {
        text += " {" + toUtf8(entry) + "}";
    }
    if (!outcome.thrown.className.empty()) {
        text += " " + ::testing::PrintToString(outcome.thrown);
    }
    std::ranges::replace(text, '\n', ' ');
    std::ranges::replace(text, '\r', ' ');
    return text;
}

std::string complaintAbout(Run& run, const Run& plain, const PlannedFault& planned) {
    if (!run.finished) {
        return "the recipe did not come to its end";
    }
    return run.outcome.thrown.className.empty() ? complaintAboutValue(run, plain, planned)
                                                : complaintAboutException(run, plain, planned);
}

std::vector<std::string> complaintsAboutWaits(Run& run, const std::vector<PlannedFault>& faults) {
    const bool isShared = std::ranges::any_of(faults, [](const PlannedFault& each) {
        return each.fault && each.fault->lastError == DWORD{ERROR_SHARING_VIOLATION};
    });
    std::vector<std::string> complaints;
    for (const char* function : {"Sleep", "WaitForSingleObject", "WaitNamedPipeW"}) {
        if (!run.systemCalls.contains(function) || (isShared && function == std::string_view("Sleep"))) {
            continue;
        }
        if (!isSaid(run.promises.waits, function)) {
            complaints.push_back("it waits, by " + std::string(function));
        }
    }
    return complaints;
}

}  // namespace testbed
