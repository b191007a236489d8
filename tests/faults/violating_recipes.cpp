// Recipes that are not as they must be, to see that the matrix says so. They are none of its recipes.
#include "reasons.h"
#include "recipe.h"
#include "watchdog.h"

namespace {

using namespace testbed;
using namespace testbed::reasons;
using namespace std::chrono_literals;

// Calls a method that asks for attributes, in its second form of the path as well.
class AttributesTest : public WinUtilTest {
protected:
    bool exists() { return NATIVE(exists)(L"C:\\windows"); }
};

void crash() {
    static volatile int* volatile nowhere = nullptr;
    *nowhere = 0;
}

#define VIOLATION(branch)                                                       \
    class Violation_##branch final : public testbed::RecipeOn<AttributesTest> { \
        void perform() override;                                                \
    };                                                                          \
    [[maybe_unused]] const bool branch##Added =                                 \
        testbed::addRecipe<Violation_##branch>(testbed::violating, #branch);    \
    void Violation_##branch::perform()

VIOLATION(crashes) {
    mayAnswer(L"false");
    examine([&] {
        if (!exists()) {
            crash();
        }
        return true;
    });
}

VIOLATION(hangs) {
    mayAnswer(L"false");
    allowTime(1s);
    examine([&] {
        if (!exists()) {
            Sleep(INFINITE);
        }
        return true;
    });
}

VIOLATION(crashesAtOnce) {
    examine([] {
        crash();
        return true;
    });
}

VIOLATION(overlooks) {
    examine([&] {
        exists();
        return true;
    });
}

VIOLATION(makesUp) {
    examine([&] { return exists() ? jint{1} : jint{7}; });
}

VIOLATION(isDifferentBehindAFailure) {
    mayAnswer(L"false");
    static bool failed = false;
    examine([&] {
        const bool found = exists() && !failed;
        failed = failed || !found;
        return found;
    });
}

VIOLATION(keeps) {
    mayAnswer(L"false");
    examine([&] {
        const bool found = exists();
        if (!found) {
            ledger().take(Kind::handle, 4, "CreateFileW", "nowhere");
        }
        return found;
    });
}

VIOLATION(remarksTooMuch) {
    mayAnswer(L"false");
    tolerates({"CloseHandle"}, nothingLeftToDo);
    examine([&] { return exists(); });
}

}  // namespace
