#include "plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "fault_table.h"

namespace testbed {

namespace {

// What the environment of the process says; empty where it says nothing.
std::string setting(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// The ways in which one call of a function is to fail.
void planCall(Faults& planned, Run& run, const FailingFunction& function, std::size_t k) {
    for (const Fault& fault : function.faults) {
        if (fault.way != Fault::Way::cut || !isSaid(run.promises.whole, function.name)) {
            planned.push_back({function.name, k, false, fault, ""});
        }
    }
}

// All calls of a function, each in each of its ways, and all of them together.
void planFunction(Faults& planned, Run& run, const FailingFunction& function, std::size_t count) {
    for (std::size_t k = 1; k <= count; ++k) {
        planCall(planned, run, function, k);
    }
    for (const Fault& fault : function.faults) {
        if (fault.way == Fault::Way::refused && !isSaid(run.promises.endless, function.name)) {
            planned.push_back({function.name, 1, true, fault, ""});
        }
    }
}

}  // namespace

Faults plan(Run& run) {
    Faults planned;
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

std::string nameOf(const Faults& faults) {
    std::string name;
    for (const PlannedFault& each : faults) {
        name += (name.empty() ? "" : " + ") + each.name();
    }
    return name;
}

Extent extentWanted() {
    const bool pairWanted = setting("WINUTIL_FAULT").find(" + ") != std::string::npos;
    return pairWanted || setting("WINUTIL_FAULTS") == "pairs" ? Extent::pairs : Extent::single;
}

bool isWanted(const Faults& faults, bool orFollowers) {
    const std::string wanted = setting("WINUTIL_FAULT");
    const std::string name = nameOf(faults);
    return wanted.empty() || wanted == name || (orFollowers && wanted.starts_with(name + " + ")) ||
           (faults.size() == 1 && name.starts_with(wanted + " "));
}

bool isEverythingWanted() {
    return setting("WINUTIL_FAULT").empty();
}

bool isShowingWanted() {
    return !setting("WINUTIL_FAULTS_SHOWN").empty();
}

}  // namespace testbed
