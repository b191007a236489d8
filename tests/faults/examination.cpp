#include "examination.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "documented_failures.h"
#include "judgement.h"
#include "watchdog.h"

namespace testbed {

namespace {

// Long for a call whose waits are answered at once.
constexpr std::chrono::seconds caseTimeLimit{20};

// What the test bed finds wrong while the body runs.
template <class Body>
std::vector<std::string> complaintsOf(Body&& body) {
    ::testing::TestPartResultArray results;
    {
        const ::testing::ScopedFakeTestPartResultReporter reporter(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
        body();
    }
    std::vector<std::string> complaints;
    for (int i = 0; i < results.size(); ++i) {
        complaints.emplace_back(results.GetTestPartResult(i).message());
        std::ranges::replace(complaints.back(), '\n', ' ');
    }
    return complaints;
}

}  // namespace

Examination::Examination(const Recipe& recipe, const std::wstring& journalFile, std::size_t skipped)
    : recipe_(recipe), journal_(std::filesystem::path(journalFile), std::ios::binary), skipped_(skipped) {}

void Examination::write(const char* kind, const std::string& text) {
    journal_ << kind << ' ' << text << std::endl;
}

Run Examination::perform(const Faults& faults) {
    nameCase((recipe_.name() + (faults.empty() ? "" : ", " + nameOf(faults))).c_str());
    allowTime(caseTimeLimit);
    Run run;
    run.promises = documentedFailures(recipe_.method);
    run.complaints = complaintsOf([&] {
        try {
            recipe_.make()->execute(faults, run);
        } catch (const std::exception& failure) {
            ADD_FAILURE() << "the recipe itself failed: " << failure.what();
        }
    });
    std::ranges::move(complaintsAboutWaits(run, faults), std::back_inserter(run.complaints));
    return run;
}

Faults Examination::planned(Run& run) {
    Faults faults;
    for (const std::string& complaint : complaintsOf([&] { faults = plan(run); })) {
        write(journal::violation, complaint);
    }
    return faults;
}

void Examination::keepRemarks(const Run& run) {
    forEachRemark(run.promises, [&](const char* kind, const Promises::Remark& remark) {
        const std::string text = kind + (": " + remark.reason) + "\t" + remark.function;
        for (const char* line : {journal::remark, journal::needed}) {
            if ((line == journal::remark || remark.needed) && written_.insert(line + text).second) {
                write(line, text);
            }
        }
    });
}

bool Examination::isDue() {
    return ++cases_ > skipped_;
}

void Examination::judge(const Run& plain, const Run& before, const Faults& faults, Run& run) {
    std::vector<std::string> complaints = run.complaints;
    std::string complaint = complaintAbout(run, before, faults.back());
    // Of two faults either may be what is seen, and each may hide what the other does.
    for (std::size_t i = 0; faults.size() > 1 && i < faults.size() && !complaint.empty(); ++i) {
        complaint = complaintAbout(run, plain, faults[i]);
    }
    if (!complaint.empty()) {
        complaints.push_back(complaint);
    }
    keepRemarks(run);
    const Run after = perform({});
    if (after.outcome != plain.outcome || !after.complaints.empty()) {
        complaints.push_back("the next call, without a failure, is not as before: " + textOf(after.outcome));
    }
    for (const std::string& each : complaints) {
        write(journal::violation, nameOf(faults) + ": " + each + "; it answered " + textOf(run.outcome) +
                                      ", and without it " + textOf(before.outcome));
    }
    if (isShowingWanted()) {
        std::cout << recipe_.name() << ", " << nameOf(faults) << ": " << textOf(run.outcome) << std::endl;
    }
}

void Examination::examineFollowers(const Run& plain, const PlannedFault& first, Run& before) {
    for (const PlannedFault& second : planned(before)) {
        const bool isTheSame = second.function == first.function &&
                               (second.occurrence == first.occurrence || first.lasting || second.lasting);
        const Faults faults = {first, second};
        if (!isTheSame && !second.lasting && isWanted(faults, false) && isDue()) {
            write(journal::testCase, nameOf(faults));
            Run run = perform(faults);
            judge(plain, before, faults, run);
        }
    }
}

void Examination::examineCase(const Run& plain, const Faults& faults) {
    const bool due = isDue();
    if (due) {
        write(journal::testCase, nameOf(faults));
    } else if (extentWanted() == Extent::single || cases_ == skipped_) {
        // The last one that is skipped is the one that ended the program.
        return;
    }
    Run run = perform(faults);
    if (due) {
        judge(plain, plain, faults, run);
    }
    if (extentWanted() == Extent::pairs && run.complaints.empty()) {
        examineFollowers(plain, faults.front(), run);
    }
}

void Examination::run() {
    write(journal::begin, "");
    Run plain = perform({});
    for (const std::uintptr_t site : plain.callSites) {
        write(journal::callSite, std::to_string(site));
    }
    for (const std::string& complaint : plain.complaints) {
        write(journal::violation, "with nothing failing: " + complaint);
    }
    if (isShowingWanted()) {
        std::cout << recipe_.name() << ": " << textOf(plain.outcome) << std::endl;
    }
    for (const PlannedFault& each : planned(plain)) {
        if (isWanted({each}, true)) {
            examineCase(plain, {each});
        }
    }
    keepRemarks(plain);
    write(journal::end, "");
}

}  // namespace testbed
