#include "pe_image.h"

#include <gmock/gmock.h>

#include "selftest_library.h"
#include "temp_folder.h"

namespace {

using namespace testbed;
using ::testing::Contains;
using ::testing::Field;

TEST(PeImage, FindsImportsAndExportsInAFile) {
    const auto image = PeImage::ofFile(misbehavingFile());

    ASSERT_TRUE(image);
    EXPECT_THAT(image->imports(), Contains(Field(&Import::name, "CreateFileW")));
    EXPECT_THAT(image->exports(), Contains(Field(&Export::name, "leakMemory")));
}

TEST(PeImage, TellsCodeFromVariables) {
    const HMODULE runtime = GetModuleHandleW(L"msvcrt.dll");
    const auto find = [&](const char* name) {
        return reinterpret_cast<const void*>(GetProcAddress(runtime, name));
    };

    EXPECT_TRUE(PeImage::ofModule(runtime).isCode(find("malloc")));
    EXPECT_FALSE(PeImage::ofModule(runtime).isCode(find("_fmode")));
}

TEST(PeImage, RefusesWhatIsNone) {
    const TempFolder folder;
    writeFile(folder / L"text", "MZ, but no more");

    EXPECT_FALSE(PeImage::ofFile(folder / L"text"));
    EXPECT_FALSE(PeImage::ofFile(folder / L"missing"));
}

}  // namespace
