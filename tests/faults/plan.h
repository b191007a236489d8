// Which calls of a recipe are to fail, and how.
#pragma once

#include <string>
#include <vector>

#include "recipe.h"

namespace testbed {

using Faults = std::vector<PlannedFault>;

// Every call of a performance in each way that it fails, and all calls of a function together.
Faults plan(Run& run);

// "CreateFileW 2 with 0x5", and for one call behind another "FIRST + SECOND".
std::string nameOf(const Faults& faults);

// How much fails: every call of a recipe once; or, with each of these failing, every call of what then
// happens as well.
enum class Extent { single, pairs };
Extent extentWanted();

// Whether the environment asks for these faults, for others that begin with them, or for all.
bool isWanted(const Faults& faults, bool orFollowers);
bool isEverythingWanted();

// Whether every outcome is to be shown.
bool isShowingWanted();

}  // namespace testbed
