#include "matrix.h"

#include <gtest/gtest-spi.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>

#include "documented_failures.h"
#include "fault_table.h"
#include "judgement.h"
#include "text.h"
#include "watchdog.h"

namespace testbed {

namespace {

// What the environment of the process says; empty where it says nothing.
std::string setting(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

bool isAmong(const std::vector<Promises::Remark>& remarks, const std::string& function) {
    return std::ranges::find(remarks, function, &Promises::Remark::function) != remarks.end();
}

// The ways in which one call of a function is to fail.
void planCall(std::vector<PlannedFault>& planned, const Run& run, const FailingFunction& function,
              std::size_t k) {
    for (const Fault& fault : function.faults) {
        if (fault.way != Fault::Way::cut || !isAmong(run.promises.whole, function.name)) {
            planned.push_back({function.name, k, false, fault, ""});
        }
    }
}

// All calls of a function, each in each of its ways, and all of them together.
void planFunction(std::vector<PlannedFault>& planned, const Run& run, const FailingFunction& function,
                  std::size_t count) {
    for (std::size_t k = 1; k <= count; ++k) {
        planCall(planned, run, function, k);
    }
    for (const Fault& fault : function.faults) {
        if (fault.way == Fault::Way::refused && !isAmong(run.promises.endless, function.name)) {
            planned.push_back({function.name, 1, true, fault, ""});
        }
    }
}

std::vector<PlannedFault> plan(const Run& run) {
    std::vector<PlannedFault> planned;
    for (const auto& [name, count] : run.systemCalls) {
        if (const FailingFunction* known = failingFunction(name); known != nullptr) {
            planFunction(planned, run, *known, count);
        } else if (reasonNotToFail(name) == nullptr) {
            ADD_FAILURE() << name << " is not in the table of functions that fail";
        }
    }
    for (const auto& [name, count] : run.javaCalls) {
        EXPECT_TRUE(isKnownJavaFunction(name)) << name << " is not in the table of Java's functions";
        const char* exception = exceptionBehindFailure(name);
        for (std::size_t k = 1; exception != nullptr && k <= count; ++k) {
            planned.push_back({name, k, false, std::nullopt, exception});
        }
    }
    return planned;
}

std::string nameOf(const std::vector<PlannedFault>& faults) {
    std::string name;
    for (const PlannedFault& each : faults) {
        name += (name.empty() ? "" : " + ") + each.name();
    }
    return name;
}

// Whether the environment asks for these faults, for others that begin with them, or for all.
bool isWanted(const std::vector<PlannedFault>& faults, bool orFollowers) {
    const std::string wanted = setting("WINUTIL_FAULT");
    const std::string name = nameOf(faults);
    return wanted.empty() || wanted == name || (orFollowers && wanted.starts_with(name + " + ")) ||
           (faults.size() == 1 && name.starts_with(wanted + " "));
}

std::string joined(const std::set<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

void collect(const ::testing::TestPartResultArray& results, Run& run) {
    for (int i = 0; i < results.size(); ++i) {
        std::string message = results.GetTestPartResult(i).message();
        std::ranges::replace(message, '\n', ' ');
        run.complaints.push_back(std::move(message));
    }
}

}  // namespace

std::vector<Recipe>& recipes() {
    static std::vector<Recipe> all;
    return all;
}

std::map<std::string, std::size_t> callsBetween(const std::map<std::string, std::size_t>& before,
                                                const std::map<std::string, std::size_t>& after) {
    std::map<std::string, std::size_t> calls;
    for (const auto& [function, count] : after) {
        const auto earlier = before.find(function);
        const std::size_t made = count - (earlier == before.end() ? 0 : earlier->second);
        if (made != 0) {
            calls.emplace(function, made);
        }
    }
    return calls;
}

std::string PlannedFault::name() const {
    std::string text = function + " " + std::to_string(occurrence) + (lasting ? " and later" : "");
    if (!fault) {
        return text;
    }
    if (fault->way == Fault::Way::cut) {
        return text + " cut short";
    }
    return text + " with " + codeText();
}

std::string PlannedFault::codeText() const {
    if (!fault) {
        return "";
    }
    return hex(fault->lastError && *fault->lastError != 0 ? *fault->lastError : fault->result);
}

std::optional<DWORD> PlannedFault::code() const {
    if (!fault) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    if (fault->lastError) {
        return fault->lastError;
    }
    return static_cast<DWORD>(fault->result);
}

Extent extentWanted() {
    const bool pairWanted = setting("WINUTIL_FAULT").find(" + ") != std::string::npos;
    return pairWanted || setting("WINUTIL_FAULTS") == "pairs" ? Extent::pairs : Extent::single;
}

FaultMatrix& FaultMatrix::instance() {
    static FaultMatrix matrix;
    return matrix;
}

Run FaultMatrix::perform(const Recipe& recipe, const Faults& faults) {
    nameCase((recipe.name() + (faults.empty() ? "" : ", " + nameOf(faults))).c_str());
    allowTime(defaultTimeLimit);
    Run run;
    run.promises = documentedFailures(recipe.method);
    ::testing::TestPartResultArray results;
    {
        const ::testing::ScopedFakeTestPartResultReporter reporter(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &results);
        try {
            recipe.make()->execute(faults, run);
        } catch (const std::exception& failure) {
            ADD_FAILURE() << "the recipe itself failed: " << failure.what();
        }
    }
    collect(results, run);
    return run;
}

void FaultMatrix::violation(const Recipe& recipe, const std::string& text) {
    violations_.push_back(recipe.name() + ", " + text);
    ADD_FAILURE() << violations_.back();
}

Run FaultMatrix::judgeCase(const Recipe& recipe, const Run& plain, const Run& before, const Faults& faults) {
    Run run = perform(recipe, faults);
    const std::string name = nameOf(faults);
    if (!setting("WINUTIL_FAULTS_SHOWN").empty()) {
        std::cout << recipe.name() << ", " << name << ": " << textOf(run.outcome) << std::endl;
    }
    std::vector<std::string> complaints = run.complaints;
    // Of two faults either may be what is seen, and each may hide what the other does.
    std::string complaint = complaintAbout(run, before, faults.back());
    for (const PlannedFault& each : faults) {
        complaint = complaint.empty() ? "" : complaintAbout(run, plain, each);
    }
    if (!complaint.empty()) {
        complaints.push_back(complaint);
    }
    const Run after = perform(recipe, {});
    if (after.outcome != plain.outcome || !after.complaints.empty()) {
        complaints.push_back("the next call, without a failure, is not as before: " + textOf(after.outcome));
    }
    for (const std::string& each : complaints) {
        violation(recipe, name + ": " + each + "; it answered " + textOf(run.outcome) + ", and without it " +
                              textOf(before.outcome));
    }
    return run;
}

void FaultMatrix::judgeFollowers(const Recipe& recipe, const Run& plain, const PlannedFault& first,
                                 const Run& before) {
    for (const PlannedFault& second : plan(before)) {
        const bool isTheSame = second.function == first.function &&
                               (second.occurrence == first.occurrence || first.lasting || second.lasting);
        if (!isTheSame && !second.lasting && isWanted({first, second}, false)) {
            ++pairs_;
            judgeCase(recipe, plain, before, {first, second});
        }
    }
}

void FaultMatrix::keepRemarks(const Recipe& recipe, const Promises& promises) {
    const auto keep = [&](const char* kind, const auto& remarks) {
        for (const auto& each : remarks) {
            Remark& remark = remarks_[kind + (": " + each.reason)];
            remark.functions.insert(each.function);
            remark.methods.insert(recipe.method);
        }
    };
    keep("tolerated", promises.tolerated);
    keep("required leak", promises.leaks);
    keep("wait", promises.waits);
    keep("other code", promises.otherCodes);
    keep("asked again without limit", promises.endless);
    keep("never short", promises.whole);
}

void FaultMatrix::examine(const Recipe& recipe) {
    const Run plain = perform(recipe, {});
    methods_.insert(recipe.method);
    ++recipes_;
    keepRemarks(recipe, plain.promises);
    for (const auto& [function, count] : plain.systemCalls) {
        called_.insert(function);
    }
    for (const std::string& complaint : plain.complaints) {
        violation(recipe, "with nothing failing: " + complaint);
    }
    if (!setting("WINUTIL_FAULTS_SHOWN").empty()) {
        std::cout << recipe.name() << ": " << textOf(plain.outcome) << std::endl;
    }
    const std::size_t before = failed_;
    for (const PlannedFault& planned : plan(plain)) {
        if (!isWanted({planned}, true)) {
            continue;
        }
        ++failed_;
        const Run failing = judgeCase(recipe, plain, plain, {planned});
        if (extentWanted() == Extent::pairs && failing.complaints.empty()) {
            judgeFollowers(recipe, plain, planned, failing);
        }
    }
    lines_.push_back(recipe.name() + ": " + std::to_string(failed_ - before));
    nameCase(nullptr);
}

void FaultMatrix::report() const {
    std::ofstream file("faults.txt");
    for (const std::string& line : lines_) {
        file << line << "\n";
    }
    const auto both = [&file](const std::string& line) {
        file << line << "\n";
        std::cout << line << "\n";
    };
    for (const auto& [reason, remark] : remarks_) {
        both(reason + " (" + joined(remark.functions) + "; " + joined(remark.methods) + ")");
    }
    for (const std::string& text : violations_) {
        both("violation: " + text);
    }
    both("Fault matrix: " + std::to_string(methods_.size()) + " methods, " + std::to_string(recipes_) +
         " recipes, " + std::to_string(failed_) + " calls failed" +
         (pairs_ == 0 ? "" : ", " + std::to_string(pairs_) + " pairs of them") + ", " +
         std::to_string(violations_.size()) + " violations");
}

}  // namespace testbed
