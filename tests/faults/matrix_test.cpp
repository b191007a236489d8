// Every recipe as a test of its own, and what makes the matrix complete.
#include <algorithm>
#include <set>

#include "documented_failures.h"
#include "fault_table.h"
#include "matrix.h"
#include "pe_image.h"

namespace {

using namespace testbed;
using ::testing::IsEmpty;

class RecipeTest : public ::testing::Test {
public:
    explicit RecipeTest(const Recipe& recipe) : recipe_(recipe) {}
    void TestBody() override { FaultMatrix::instance().examine(recipe_); }

private:
    const Recipe& recipe_;
};

class CallSiteTest : public ::testing::Test {
public:
    void TestBody() override { FaultMatrix::instance().examineCallSites(); }
};

class Account : public ::testing::Environment {
    void TearDown() override { FaultMatrix::instance().report(); }
};

std::set<std::string> exportedMethods() {
    std::set<std::string> methods;
    for (const auto& exported : PeImage::ofFile(libraryFile()).value().exports()) {
        methods.insert(exported.name.substr(nativePrefix.size()));
    }
    return methods;
}

using FaultMatrixTest = WinUtilTest;

TEST_F(FaultMatrixTest, HasARecipeForEveryMethod) {
    std::set<std::string> missing = exportedMethods();
    for (const Recipe& recipe : recipes()) {
        missing.erase(recipe.method);
    }
    EXPECT_THAT(missing, IsEmpty());
}

TEST_F(FaultMatrixTest, KnowsHowEveryMethodFails) {
    std::set<std::string> missing = exportedMethods();
    for (const std::string& method : documentedMethods()) {
        EXPECT_EQ(missing.erase(method), 1u) << method << " is no method";
    }
    EXPECT_THAT(missing, IsEmpty());
}

TEST_F(FaultMatrixTest, KnowsHowEveryFunctionFails) {
    std::set<std::string> missing;
    for (const std::string& function : system().known()) {
        if (failingFunction(function) == nullptr && reasonNotToFail(function) == nullptr) {
            missing.insert(function);
        }
    }
    EXPECT_THAT(missing, IsEmpty());
}

}  // namespace

namespace testbed {

// Not while the program is initialised: only later are all recipes there.
void registerRecipes() {
    ::testing::AddGlobalTestEnvironment(new Account);
    std::ranges::sort(recipes(), {}, &Recipe::name);
    for (const Recipe& recipe : recipes()) {
        ::testing::RegisterTest("Faults", recipe.name().c_str(), nullptr, nullptr, __FILE__, __LINE__,
                                [&recipe]() -> ::testing::Test* { return new RecipeTest(recipe); });
    }
    // Behind all of them.
    ::testing::RegisterTest("Faults", "comeToEveryCallSite", nullptr, nullptr, __FILE__, __LINE__,
                            []() -> ::testing::Test* { return new CallSiteTest; });
}

}  // namespace testbed
