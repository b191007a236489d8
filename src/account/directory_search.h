#pragma once

#include "account/directory_objects.h"
#include "bridge/text.h"

namespace winutil::account {

// Finds the path of the object that a filter finds below the place that is searched and that binds as
// `identifier` (the last one, when there are several). A row that cannot be read or bound is passed over.
// E_FAIL when there is none, E_OUTOFMEMORY when there is no memory for a path.
HRESULT findObjectPath(IDirectorySearch* search, wchar_t* filter, REFIID identifier,
                       WideString& path) noexcept;

}  // namespace winutil::account
