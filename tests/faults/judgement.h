// Whether what a method did with one of its calls failing is one of its documented outcomes.
#pragma once

#include <string>
#include <vector>

#include "recipe.h"

namespace testbed {

// Empty when it is; else what is wrong. `plain` is the same recipe without the failure. What the recipe says
// of it is marked as needed.
std::string complaintAbout(Run& run, const Run& plain, const PlannedFault& planned);

// Waits that the recipe does not say, other than for a file that somebody else has open.
std::vector<std::string> complaintsAboutWaits(Run& run, const std::vector<PlannedFault>& faults);

std::string textOf(const Outcome& outcome);

}  // namespace testbed
