// The computer as a product: who made it, and which one it is.
#pragma once

#include "bridge/errors.h"

namespace winutil::inventory {

// A text about the computer; a longer one is cut.
using ComputerText = wchar_t[1024];

// Write manufacturer and model, and the UUID of the motherboard; nothing where WMI knows of no computer. They
// return false with a message when the query fails.
bool readSystemModel(ComputerText& model, ErrorBuffer& errorBuffer) noexcept;
bool readMotherboardUuid(ComputerText& uuid, ErrorBuffer& errorBuffer) noexcept;

}  // namespace winutil::inventory
