// The object behind the Java long of an open file.
#pragma once

#include <windows.h>

#include <cstdint>

namespace winutil::fileio {

struct OpenFileRecord {
    wchar_t* path = nullptr;  // a copy of the path as given
    HANDLE* handleCell = nullptr;
    std::int64_t position = 0;          // bytes read so far through the read methods
    std::int64_t fileSize = 0;          // bytes, at open
    DWORD flags = 0;                    // flags and attributes as given; 0 from openFile
    DWORD access = 0;                   // as given, before anything was added; 0 from openFile
    std::int64_t preallocatedSize = 0;  // bytes; 0 where nothing was preallocated

    HANDLE handle() const noexcept { return *handleCell; }
};

}  // namespace winutil::fileio
