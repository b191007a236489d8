// The worker behind openFile in a DLL of its own: no native method asks for its preallocating form.
#include "fileio/preallocation.h"

using namespace winutil::fileio;

#define EXPORTED extern "C" __declspec(dllexport)

EXPORTED HANDLE* open(const wchar_t* path, std::int64_t length, std::int64_t start) {
    return openForReading(path, length, start).release();
}

EXPORTED void close(HANDLE* cell) {
    const winutil::FileCell owner(cell);
}

EXPORTED void switchPreallocationOff() {
    preallocatingOpenOff = true;
}
