// What the fuzz targets share of the Windows that they pretend.
#pragma once

#include <windows.h>

#include "bridge/optional_functions.h"

namespace winutil {

// The table of optional functions, to be filled by a target.
OptionalFunctions& fuzzedFunctions() noexcept;

}  // namespace winutil

namespace fuzz {

inline HANDLE fakeHandle() {
    static int something;
    return &something;
}

}  // namespace fuzz
