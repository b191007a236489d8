#include "matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#include "call_sites.h"
#include "examination.h"
#include "fault_table.h"
#include "temp_folder.h"
#include "text.h"
#include "watchdog.h"
#include "winutil_fixture.h"

namespace testbed {

namespace {

constexpr char examineOption[] = "--examine";

// Of one recipe, with every pair of its calls failing.
constexpr std::chrono::seconds recipeTimeLimit{3600};

// A recipe whose cases die again and again has said enough. A process that ends before it begins, as now and
// then one does here, is followed by another.
constexpr int mostProcesses = 5;

std::string joined(const std::set<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

// Runs this program with those arguments, and with this process' streams, to its end.
DWORD exitCodeOf(const std::wstring& arguments) {
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION child = {};
    std::wstring commandLine = L'"' + std::wstring(program) + L"\" " + arguments;
    std::cout.flush();
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &child)) {
        const DWORD code = GetLastError();
        std::cout << "cannot start another process: " << toUtf8(systemText(code)) << std::endl;
        return code;
    }
    WaitForSingleObject(child.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(child.hProcess, &code);
    CloseHandle(child.hThread);
    CloseHandle(child.hProcess);
    return code;
}

std::string endOf(DWORD exitCode) {
    switch (exitCode) {
        case exitCodeOfCrash:
            return "it crashes";
        case exitCodeOfHang:
            return "it hangs";
        default:
            return "it ends the process with code " + std::to_string(exitCode);
    }
}

// The places where the library makes a call that can fail, with the functions.
std::map<DWORD, std::string> failingCallSites() {
    auto sites = callSites(PeImage::ofFile(libraryFile()).value());
    std::erase_if(sites, [](const auto& site) { return failingFunction(site.second) == nullptr; });
    return sites;
}

}  // namespace

FaultMatrix& FaultMatrix::instance() {
    static FaultMatrix matrix;
    return matrix;
}

bool examinedForParent(int argc, char** argv) {
    if (argc != 5 || std::strcmp(argv[1], examineOption) != 0) {
        return false;
    }
    for (const auto* all : {&recipes(), &violatingRecipes()}) {
        const auto recipe = std::ranges::find(*all, argv[2], &Recipe::name);
        if (recipe != all->end()) {
            Examination(*recipe, toWide(argv[4]), std::stoul(argv[3])).run();
        }
    }
    return true;
}

void FaultMatrix::violation(const std::string& text) {
    violations_.push_back(text);
    ADD_FAILURE() << text;
}

void FaultMatrix::keep(const Recipe& recipe, Account& account, const std::string& kind,
                       const std::string& text) {
    account.begun = true;
    if (kind == journal::testCase) {
        ++account.cases;
        ++(text.find(" + ") == std::string::npos ? failed_ : pairs_);
        account.lastCase = text;
    } else if (kind == journal::violation) {
        violation(recipe.name() + ", " + text);
    } else if (kind == journal::remark) {
        account.remarks.insert(text);
    } else if (kind == journal::needed) {
        account.needed.insert(text);
    } else if (kind == journal::callSite) {
        callSites_.insert(std::stoull(text));
    } else if (kind == journal::end) {
        account.ended = true;
    }
}

void FaultMatrix::examineInAnotherProcess(const Recipe& recipe, Account& account) {
    const TempFolder folder;
    const std::wstring journalFile = folder / L"journal.txt";
    const std::size_t casesBefore = account.cases;
    const DWORD exitCode = exitCodeOf(toWide(examineOption) + L" " + toWide(recipe.name()) + L" " +
                                      std::to_wstring(casesBefore) + L" \"" + journalFile + L"\"");
    std::istringstream lines(fileExists(journalFile) ? readFile(journalFile) : "");
    for (std::string line; std::getline(lines, line);) {
        const std::size_t blank = std::min(line.find(' '), line.size() - 1);
        keep(recipe, account, line.substr(0, blank), line.substr(blank + 1));
    }
    if (!account.ended && account.begun) {
        const bool inACase = account.cases != casesBefore;
        violation(recipe.name() + ", " + (inACase ? account.lastCase : "with nothing failing") + ": " +
                  endOf(exitCode));
    }
}

void FaultMatrix::examine(const Recipe& recipe) {
    allowTime(recipeTimeLimit);
    if (recipe.method != loading) {
        methods_.insert(recipe.method);
    }
    ++recipes_;
    Account account;
    bool whole = true;
    for (int processes = 0; !account.ended && processes != mostProcesses; ++processes) {
        const std::size_t casesBefore = account.cases;
        account.begun = false;
        examineInAnotherProcess(recipe, account);
        if (account.begun && !account.ended) {
            whole = false;
            if (account.cases == casesBefore) {
                break;
            }
        }
    }
    if (!account.ended) {
        violation(recipe.name() + ", the cases behind are left out");
    }
    keepRemarks(recipe, account, whole && isEverythingWanted());
    lines_.push_back(recipe.name() + ": " + std::to_string(account.cases));
}

void FaultMatrix::keepRemarks(const Recipe& recipe, const Account& account, bool complete) {
    for (const std::string& text : account.remarks) {
        const std::size_t tab = text.find('\t');
        Remark& remark = remarks_[text.substr(0, tab)];
        remark.functions.insert(text.substr(tab + 1));
        remark.methods.insert(recipe.method);
        if (complete && !account.needed.contains(text)) {
            violation(recipe.name() + ", no case needs this: " + text);
        }
    }
}

void FaultMatrix::examineCallSites() {
    std::map<std::string, std::vector<DWORD>> leftOut;
    for (const auto& [site, function] : failingCallSites()) {
        if (!callSites_.contains(site)) {
            leftOut[function].push_back(site);
        }
    }
    for (const auto& [function, reason] : unreachableCalls()) {
        if (leftOut[function].empty()) {
            violation("some recipe makes every call of " + function + ", but it is said that " + reason);
        }
        // Which of several calls is meant cannot be told.
        if (leftOut[function].size() == 1) {
            leftOut.erase(function);
        }
    }
    for (const auto& [function, sites] : leftOut) {
        for (const DWORD site : sites) {
            violation("made by no recipe: " + function + " at " + hex(site));
        }
    }
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
    for (const auto& [function, reason] : unreachableCalls()) {
        both("not reached: " + reason + " (" + function + ")");
    }
    for (const std::string& text : violations_) {
        both("violation: " + text);
    }
    const auto sites = failingCallSites();
    const auto reached =
        std::ranges::count_if(sites, [this](const auto& site) { return callSites_.contains(site.first); });
    both("Fault matrix: " + std::to_string(methods_.size()) + " methods, " + std::to_string(recipes_) +
         " recipes, " + std::to_string(reached) + " of " + std::to_string(sites.size()) + " call sites, " +
         std::to_string(failed_) + " calls failed" +
         (pairs_ == 0 ? "" : ", " + std::to_string(pairs_) + " pairs of them") + ", " +
         std::to_string(violations_.size()) + " violations");
}

}  // namespace testbed
