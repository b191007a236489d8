// The DLL that was built, as a file and loaded from odd places.
#include <windows.h>

#include <winver.h>

#include <iostream>

#include "artifact_checks.h"
#include "tracked_functions.h"
#include "winutil_fixture.h"

namespace {

using namespace testbed;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::uint64_t largestSize = 190'000;
constexpr std::size_t nativeCount = 144;

class Artifact : public ::testing::Test {
protected:
    Artifact() {
        natives = nativesOf(readFile(builtPath(L"" NATIVE_HEADER)));
        image = PeImage::ofFile(libraryFile());
        EXPECT_TRUE(image);
    }

    std::set<std::string> natives;
    std::optional<PeImage> image;
};

TEST_F(Artifact, ExportsNativesOnly) {
    ASSERT_THAT(natives, SizeIs(nativeCount));
    EXPECT_FALSE(image->exports().empty());
    EXPECT_THAT(foreignExports(*image, natives), IsEmpty());
}

TEST_F(Artifact, ExportsEveryNative) {
    EXPECT_THAT(missingExports(*image, natives), IsEmpty());
    EXPECT_THAT(image->exports(), SizeIs(natives.size()));
}

TEST_F(Artifact, ExportsNothingByNumberAlone) {
    const auto& directory = image->headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const auto& exports = *image->at<IMAGE_EXPORT_DIRECTORY>(directory.VirtualAddress);

    EXPECT_EQ(exports.NumberOfFunctions, exports.NumberOfNames);
}

TEST_F(Artifact, NeedsNothingThatDoesNotComeWithWindows) {
    EXPECT_THAT(foreignModules(importedModules(*image)), IsEmpty());
}

TEST_F(Artifact, IsProtectedAsModernLibrariesAre) {
    EXPECT_THAT(weaknesses(*image), IsEmpty());
}

#if RELEASE_BUILD
TEST_F(Artifact, StaysSmall) {
    const std::string file = readFile(libraryFile());

    std::cout << file.size() << " bytes\n";
    EXPECT_LT(file.size(), largestSize);
}
#endif

TEST_F(Artifact, CallsEveryFunctionThatTheLedgerKnows) {
    // One is called by the library that tests the test bed alone, one by the start-up code of some compilers.
    std::set<std::string> called = {"CreateEventW", "realloc"};
    for (const Import& import : image->imports()) {
        called.insert(import.name);
    }
    // What is looked up when the library loads has its name as a text.
    const std::string file = readFile(libraryFile());
    for (const std::string& name : trackedFunctions()) {
        EXPECT_TRUE(called.contains(name) || file.find('\0' + name + '\0') != std::string::npos) << name;
    }
}

TEST_F(Artifact, NamesItsVersion) {
    const std::wstring file = libraryFile();
    DWORD unused = 0;
    std::string block(GetFileVersionInfoSizeW(file.c_str(), &unused), '\0');
    ASSERT_TRUE(GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(block.size()), block.data()));
    const auto text = [&](const wchar_t* name) {
        wchar_t* value = nullptr;
        UINT length = 0;
        VerQueryValueW(block.data(), (std::wstring(L"\\StringFileInfo\\040904B0\\") + name).c_str(),
                       reinterpret_cast<void**>(&value), &length);
        return std::wstring(value == nullptr ? L"" : value);
    };

    EXPECT_EQ(text(L"FileVersion"), L"" LIBRARY_VERSION);
    EXPECT_EQ(text(L"ProductVersion"), L"" LIBRARY_VERSION);
    EXPECT_EQ(text(L"OriginalFilename"), L"WinUtil64.dll");
}

TEST_F(Artifact, LoadsFromAFolderWithNamesOfEveryKind) {
    const TempFolder folder;
    const std::wstring copy = folder / L"Gr\x00FC\x00DF\x65E5\x672C \xD83D\xDE00\\WinUtil64.dll";
    writeFile(copy, readFile(libraryFile()));

    const HMODULE module = LoadLibraryW(copy.c_str());

    ASSERT_NE(module, nullptr) << GetLastError();
    EXPECT_NE(GetProcAddress(module, "Java_com_qarvo_kel_util_WindowsUtil_exists"), nullptr);
    EXPECT_TRUE(FreeLibrary(module));
}

}  // namespace
