// Has every recipe performed with each of its calls failing, and keeps the account. Each recipe is examined
// in a process of its own: what crashes or hangs there is a violation, and the next case goes on in another
// process.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "recipe.h"

namespace testbed {

// Makes every recipe a test of its own. To be called once, before the tests run.
void registerRecipes();

// Whether this process examines one recipe for another process; it has done so then.
bool examinedForParent(int argc, char** argv);

class FaultMatrix {
public:
    static FaultMatrix& instance();

    // All cases of one recipe, as failures of the running test where one is not as it must be.
    void examine(const Recipe& recipe);

    // That the recipes examined come to every place where the library makes a call that can fail, but for
    // those that are named.
    void examineCallSites();

    const std::vector<std::string>& violations() const { return violations_; }

    // The account, on the standard output and in faults.txt.
    void report() const;

private:
    // What came of one recipe.
    struct Account {
        std::size_t cases = 0;
        std::string lastCase;
        std::set<std::string> remarks;  // a reason and, behind a tab, a function
        std::set<std::string> needed;
        bool begun = false;
        bool ended = false;
    };

    void examineInAnotherProcess(const Recipe& recipe, Account& account);
    void keep(const Recipe& recipe, Account& account, const std::string& kind, const std::string& text);
    void keepRemarks(const Recipe& recipe, const Account& account, bool complete);
    void violation(const std::string& text);

    std::set<std::string> methods_;
    std::size_t recipes_ = 0;
    std::size_t failed_ = 0;
    std::size_t pairs_ = 0;
    std::vector<std::string> violations_;
    std::vector<std::string> lines_;  // one for each recipe
    // What is tolerated, leaked or waited for: the reason, with the functions that it is about and the
    // methods that give it.
    struct Remark {
        std::set<std::string> functions;
        std::set<std::string> methods;
    };
    std::map<std::string, Remark> remarks_;
    std::set<std::uint64_t> callSites_;  // those that a recipe comes to while nothing fails
};

}  // namespace testbed
