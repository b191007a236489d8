#pragma once

#include "account/directory_objects.h"
#include "bridge/text.h"

namespace winutil::account {

// Returns the path of the object that a filter finds below the place that is searched and that binds as
// `identifier` (the last one, when there are several), or none. A row that cannot be read or bound is passed
// over.
WideString findObjectPath(IDirectorySearch* search, wchar_t* filter, REFIID identifier) noexcept;

}  // namespace winutil::account
