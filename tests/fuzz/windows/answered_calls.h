// The system calls that more than one fuzz target answers from its input.
#pragma once

#include "answers/devices.h"
#include "answers/registry.h"
#include "answers/volumes.h"

namespace fuzz {

// What the calls are answered with. A target sets those that its parser asks for.
extern hostile::Devices* deviceAnswers;
extern hostile::Registry* registryAnswers;
extern hostile::Volumes* volumeAnswers;

}  // namespace fuzz
