#include "judgement.h"

#include <algorithm>

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

template <class Remarks>
auto remarkAbout(const Remarks& remarks, const std::string& function) {
    return std::ranges::find(remarks, function, &Remarks::value_type::function);
}

std::string complaintAboutException(const Run& run, const Run& plain, const PlannedFault& planned) {
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
    const bool otherAllowed = remarkAbout(promises.otherCodes, planned.function) != promises.otherCodes.end();
    if (code && code != planned.code() && code != codeIn(plain.outcome.thrown.message) && !otherAllowed) {
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

bool isTolerated(const Run& run, const Run& plain, const PlannedFault& planned) {
    const std::string withCode = planned.function + " with " + planned.codeText();
    const std::string oneCall = planned.function + " " + std::to_string(planned.occurrence);
    return std::ranges::any_of(run.promises.tolerated, [&](const Promises::Tolerated& tolerated) {
        const bool concerned = tolerated.function == planned.function || tolerated.function == withCode ||
                               tolerated.function == oneCall;
        return concerned && isAsTolerated(run.outcome, plain.outcome, tolerated);
    });
}

// What gives something back has done so; what was cut short goes on; a path is tried again in its long form;
// a privilege that the account does not hold was asked for with success; and what puts a code into words may
// do so for a message that nobody reads.
bool mayGoUnnoticed(const PlannedFault& planned) {
    return planned.fault &&
           (planned.function == "FormatMessageW" || planned.fault->way != Fault::Way::refused ||
            (isTriedAgain(planned.function) && !planned.lasting) ||
            planned.fault->lastError == DWORD{ERROR_NOT_ALL_ASSIGNED});
}

std::string complaintAboutValue(const Run& run, const Run& plain, const PlannedFault& planned) {
    if (run.promises.failureValues.contains(run.outcome.value) || isTolerated(run, plain, planned)) {
        return "";
    }
    if (run.outcome == plain.outcome) {
        const bool failsAnyhow = !plain.outcome.thrown.className.empty();
        return failsAnyhow || mayGoUnnoticed(planned) ? "" : "the failure goes unnoticed";
    }
    return "an answer that is no documented failure";
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

std::string complaintAbout(const Run& run, const Run& plain, const PlannedFault& planned) {
    if (!run.finished) {
        return "the recipe did not come to its end";
    }
    return run.outcome.thrown.className.empty() ? complaintAboutValue(run, plain, planned)
                                                : complaintAboutException(run, plain, planned);
}

}  // namespace testbed
