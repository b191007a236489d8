// The floor without Java: the system calls that a job cannot do without, in a loop.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

using Paths = std::vector<std::wstring>;

struct ListingResult {
    std::int64_t entries;  // -1 when the directory could not be listed
    std::uint64_t digest;  // 0 when no digest was asked for
};

// Called every `sampleInterval` entries of a listing, where a caller wants to look at the process meanwhile.
using Sampler = void (*)(void* context);
inline constexpr std::int64_t sampleInterval = 1000;

// Lists a directory; with security also asks whether each entry is a directory, for directories what volume
// they lie on, and converts each descriptor to text. `digestFields` below 0: no digest.
ListingResult listDirectory(const std::wstring& directory, bool withSecurity, int digestFields,
                            Sampler sampler = nullptr, void* context = nullptr);

// Reads a file to its end in blocks; returns the bytes read, or -1.
std::int64_t readFile(const std::wstring& path, char* buffer, DWORD block);

// Overwrites an existing file from its beginning with `total` bytes in blocks; returns the bytes, or -1.
std::int64_t overwriteFile(const std::wstring& path, const char* buffer, DWORD block, std::int64_t total);

// Opens each file, asks for its size, reads once, closes it; returns the bytes read, or -1.
std::int64_t readFiles(const Paths& paths, char* buffer, DWORD capacity);

// Query each path; return how many exist, the sum of the attribute words, the sum of the last-write times.
std::int64_t countExisting(const Paths& paths);
std::int64_t sumAttributes(const Paths& paths);
std::int64_t sumLastModified(const Paths& paths);

// Walks through the numbers in a key of the current user's, by the ANSI functions; returns how many there
// are, or -1.
std::int64_t countNumbers(const std::wstring& key);

// Walks through all processes and asks for the account of each of this name; returns how many have one.
std::int64_t countProcesses(const std::wstring& executableName);

// Milliseconds since 1970.
std::int64_t toJavaTime(const FILETIME& time) noexcept;

}  // namespace bench
