// Performs recipes with each of their calls failing, judges what came of it, and keeps the account.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "recipe.h"

namespace testbed {

// How much fails: every call of a recipe once; or, with each of these failing, every call of what then
// happens as well.
enum class Extent { single, pairs };
Extent extentWanted();

// Makes every recipe a test of its own. To be called once, before the tests run.
void registerRecipes();

class FaultMatrix {
public:
    static FaultMatrix& instance();

    // All cases of one recipe, as failures of the running test where one is not as it must be.
    void examine(const Recipe& recipe);

    // The account, on the standard output and in faults.txt.
    void report() const;

    // The functions that some recipe called so far.
    const std::set<std::string>& called() const { return called_; }

private:
    using Faults = std::vector<PlannedFault>;

    Run perform(const Recipe& recipe, const Faults& faults);
    // The last of the faults is judged by what happens without it, `before`.
    Run judgeCase(const Recipe& recipe, const Run& plain, const Run& before, const Faults& faults);
    void judgeFollowers(const Recipe& recipe, const Run& plain, const PlannedFault& first, const Run& before);
    void keepRemarks(const Recipe& recipe, const Promises& promises);
    void violation(const Recipe& recipe, const std::string& text);

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
    std::set<std::string> called_;
};

}  // namespace testbed
