// A folder of its own for a test, gone with everything in it at the end.
#pragma once

#include <string>
#include <string_view>

namespace testbed {

class TempFolder {
public:
    TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    // Fails the test when something in it cannot be removed. Directory links are not entered; whoever made
    // one in a way that this system does not remove, removes it.
    ~TempFolder();

    // Without a backslash at the end.
    const std::wstring& path() const { return path_; }
    // The path of something in it.
    std::wstring operator/(std::wstring_view name) const { return path_ + L"\\" + std::wstring(name); }

private:
    std::wstring path_;
};

// Makes a file with that content; missing folders above it are made as well. The path may be longer than 260
// characters.
void writeFile(const std::wstring& path, std::string_view content);
std::string readFile(const std::wstring& path);
bool fileExists(const std::wstring& path);

// A path that the build wrote into the program, as the program sees it: where another system built it, that
// system's root is a drive.
std::wstring builtPath(std::wstring path);

}  // namespace testbed
