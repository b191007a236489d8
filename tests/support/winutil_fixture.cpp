#include "winutil_fixture.h"

#include <cstdlib>

#include "thread_token.h"

namespace testbed {

namespace {

void reportDifferences(const Ledger& ledger) {
    for (const std::string& difference : ledger.differences()) {
        ADD_FAILURE() << "ledger: " << difference;
    }
}

std::wstring copyLibrary(const TempFolder& folder, const std::wstring& name) {
    std::wstring copy = folder / name;
    if (!CopyFileW(libraryFile().c_str(), copy.c_str(), TRUE)) {
        throw std::runtime_error("cannot copy the library: " + toUtf8(systemText(GetLastError())));
    }
    return copy;
}

}  // namespace

std::wstring libraryFile() {
    const wchar_t* other = _wgetenv(L"WINUTIL_LIBRARY");
    return builtPath(other == nullptr ? L"" WINUTIL_LIBRARY : other);
}

FreshLibrary::FreshLibrary(const TempFolder& folder, const std::wstring& name)
    : LibraryUnderTest(copyLibrary(folder, name)) {}

FreshLibrary::~FreshLibrary() {
    unload();
    reportDifferences(ledger());
}

WinUtilTest::WinUtilTest() {
    library();
    system().start();
    ledger().start();
}

WinUtilTest::~WinUtilTest() {
    for (const std::string& name : system().replaced()) {
        ADD_FAILURE() << name << " is still replaced";
    }
    if (isImpersonating()) {
        ADD_FAILURE() << "the thread still impersonates somebody";
        RevertToSelf();
    }
    reportDifferences(ledger());
}

// Never deleted: unloading the DLL while the program ends is not what the tests look at.
LibraryUnderTest& WinUtilTest::library() {
    static LibraryUnderTest& loaded = [&]() -> LibraryUnderTest& {
        auto* made = new LibraryUnderTest(libraryFile());
        if (!made->load()) {
            throw std::runtime_error("cannot load " + toUtf8(libraryFile()) + ": " +
                                     toUtf8(systemText(GetLastError())));
        }
        return *made;
    }();
    return loaded;
}

const TempFolder& WinUtilTest::folder() {
    if (!folder_) {
        folder_.emplace();
    }
    return *folder_;
}

Thrown ioException(std::wstring message) {
    return {"java/io/IOException", std::move(message)};
}

Thrown fileNotFound(std::wstring message) {
    return {"java/io/FileNotFoundException", std::move(message)};
}

Thrown nothingThrown() {
    return {};
}

}  // namespace testbed
