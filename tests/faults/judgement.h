// Whether what a method did with one of its calls failing is one of its documented outcomes.
#pragma once

#include <string>

#include "recipe.h"

namespace testbed {

// Empty when it is; else what is wrong. `plain` is the same recipe without the failure.
std::string complaintAbout(const Run& run, const Run& plain, const PlannedFault& planned);

std::string textOf(const Outcome& outcome);

}  // namespace testbed
