// All cases of one recipe, performed and judged. What comes of them goes into a journal line by line, so that
// a case that ends the program is named there.
#pragma once

#include <cstddef>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "plan.h"
#include "recipe.h"

namespace testbed {

// The kinds of lines in a journal; the rest of a line is a text of that kind.
namespace journal {
inline constexpr char begin[] = "begin";
inline constexpr char testCase[] = "case";  // it begins
inline constexpr char violation[] = "violation";
inline constexpr char callSite[] = "site";  // where a call comes from when nothing fails
inline constexpr char remark[] = "remark";  // the recipe says so
inline constexpr char needed[] = "needed";  // and a case needs it
inline constexpr char end[] = "end";
}  // namespace journal

class Examination {
public:
    // The first cases, as many as `skipped`, are another examination's.
    Examination(const Recipe& recipe, const std::wstring& journalFile, std::size_t skipped);

    void run();

private:
    Run perform(const Faults& faults);
    Faults planned(Run& run);
    bool isDue();
    // The last of the faults is judged by what happens without it, `before`.
    void judge(const Run& plain, const Run& before, const Faults& faults, Run& run);
    void examineCase(const Run& plain, const Faults& faults);
    void examineFollowers(const Run& plain, const PlannedFault& first, Run& before);
    void keepRemarks(const Run& run);
    void write(const char* kind, const std::string& text);

    const Recipe& recipe_;
    std::ofstream journal_;
    std::size_t skipped_;
    std::size_t cases_ = 0;
    std::set<std::string> written_;
};

}  // namespace testbed
