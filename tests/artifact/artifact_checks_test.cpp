// The checks against files that must not pass them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "artifact_checks.h"
#include "temp_folder.h"

namespace {

using namespace testbed;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class ArtifactChecks : public ::testing::Test {
protected:
    ArtifactChecks() {
        bad = PeImage::ofFile(builtPath(L"" MISBEHAVING_LIBRARY));
        EXPECT_TRUE(bad);
    }

    std::optional<PeImage> bad;
};

TEST_F(ArtifactChecks, FindAnExportThatIsNoNative) {
    EXPECT_THAT(foreignExports(*bad, {}), Contains("leakMemory is no native method"));
    EXPECT_THAT(foreignExports(*bad, {"leakMemory", "hasNothing"}),
                ::testing::Not(Contains("leakMemory is no native method")));
}

TEST_F(ArtifactChecks, FindAnExportThatIsAVariable) {
    EXPECT_THAT(foreignExports(*bad, {"exportedVariable"}), Contains("exportedVariable is no function"));
}

TEST_F(ArtifactChecks, FindANativeThatIsNotExported) {
    EXPECT_THAT(missingExports(*bad, {"leakMemory", "Java_missing"}), ElementsAre("Java_missing"));
}

TEST_F(ArtifactChecks, FindAModuleThatDoesNotComeWithWindows) {
    EXPECT_THAT(foreignModules(importedModules(*bad)), IsEmpty());
    EXPECT_THAT(foreignModules({"kernel32.dll", "libstdc++-6.dll", "libgcc_s_seh-1.dll"}),
                UnorderedElementsAre("libstdc++-6.dll", "libgcc_s_seh-1.dll"));
}

TEST_F(ArtifactChecks, FindSymbolsLeftBehind) {
    EXPECT_THAT(weaknesses(*bad), Contains("symbols left in the file"));
}

TEST_F(ArtifactChecks, FindWhatTheLinkerWasNotAskedFor) {
    EXPECT_THAT(weaknesses(*bad), Contains("data may be executed"));
    EXPECT_THAT(weaknesses(*bad), Contains("a fixed address"));
    EXPECT_THAT(weaknesses(*bad), Contains("no high-entropy addresses"));
}

TEST(NativesOf, ReadsTheNamesInAHeader) {
    const std::string header =
        "JNIEXPORT jboolean JNICALL Java_a_B_exists\n  (JNIEnv *, jobject, jstring);\n"
        "JNIEXPORT void JNICALL Java_a_B_read__J_3BII\n  (JNIEnv *, jobject, jlong);\n";

    EXPECT_THAT(nativesOf(header), ElementsAre("Java_a_B_exists", "Java_a_B_read__J_3BII"));
}

}  // namespace
