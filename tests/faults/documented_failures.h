// How each method reports that it failed, as the documentation of its class says.
#pragma once

#include <string>
#include <vector>

#include "recipe.h"

namespace testbed {

Promises documentedFailures(const std::string& method);

// The methods that there is something known of.
std::vector<std::string> documentedMethods();

}  // namespace testbed
