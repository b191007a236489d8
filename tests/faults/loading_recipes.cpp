// The library itself, loaded and unloaded. No method does this, but every call of it can fail as well.
#include "recipe.h"

namespace {

using namespace testbed;

constexpr char doesWithout[] = "the library does without what it cannot have";

// A copy of the library, whose calls are the ones that count.
class LoadingTest : public WinUtilTest {
protected:
    SystemCalls& system() { return fresh.system(); }
    Ledger& ledger() { return fresh.ledger(); }

    FreshLibrary fresh{folder(), L"fresh.dll"};
};

class Recipe_library_loaded final : public RecipeOn<LoadingTest> {
    void perform() override {
        mayAnswer(L"false");
        tolerates({"OpenProcessToken", "LookupPrivilegeValueA", "AdjustTokenPrivileges", "LoadLibraryA",
                   "GetModuleHandleA", "GetProcAddress"},
                  doesWithout);
        givesBackWhatIsNone("FreeLibrary", "of a module that was only looked up");
        examine([&] {
            const bool loaded = fresh.load();
            base_ = reinterpret_cast<std::uintptr_t>(fresh.module());
            fresh.unload();
            return loaded;
        });
        // By the run time of one compiler alone.
        if (system().count("calloc") != 0) {
            tolerates({"calloc"}, doesWithout);
        }
    }

    std::uintptr_t libraryBase() const override { return base_; }

    std::uintptr_t base_ = 0;
};
[[maybe_unused]] const bool loadingAdded = addRecipe<Recipe_library_loaded>(loading, "loaded");

}  // namespace
