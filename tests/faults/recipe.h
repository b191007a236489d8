// A recipe: one native method in one situation, prepared as a test prepares it. The matrix performs it again
// and again, each time in a fixture of its own and each time with another of its calls failing.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "any_method.h"
#include "com_slots.h"

namespace testbed {

// What a native method did: its answer as a text, what it handed to collectors, and what it raised.
struct Outcome {
    std::wstring value;
    std::vector<std::wstring> log;
    Thrown thrown;
    bool operator==(const Outcome&) const = default;
};

// One call that is to fail, or that call and all later ones of its function.
struct PlannedFault {
    std::string function;
    std::size_t occurrence = 1;
    bool lasting = false;
    std::optional<Fault> fault;  // of the system; none for a function of the Java environment
    std::string exception;       // what the Java environment leaves pending

    // "CreateFileW 2 with 0x5", as WINUTIL_FAULT names it.
    std::string name() const;
    std::string codeText() const;
    // The code that a message about this failure has.
    DWORD code() const;
};

// What a recipe says of its outcomes, beside what its method documents.
struct Promises {
    struct Remark {
        // As in "CoInitializeEx"; one way of its failing, "CoInitializeEx with 0x80010106"; or one call of
        // it, "SetFilePointerEx 2".
        std::string function;
        std::string reason;
        bool needed = false;  // for something to be as it must be
    };
    // A failure that no caller hears of.
    struct Tolerated : Remark {
        enum class Outcome {
            asEver,  // as if nothing had failed
            less,    // the same answer, with some of what collectors are handed left out
            given,   // the one below
            sameValue,
            any,
        };

        Outcome outcome = Outcome::asEver;
        std::wstring value = {};
    };

    std::set<std::string> exceptions;
    std::set<std::wstring> failureValues;
    // What stays behind a failure.
    struct Leak : Remark {
        std::size_t most = 1;
        std::set<std::string> behind = {};  // the functions that fail; none for any
        bool always = false;                // also when nothing fails
        std::size_t found = 0;
    };

    std::vector<Tolerated> tolerated;
    std::vector<Leak> leaks;
    std::vector<Leak> foreign;  // what is given back without having been taken
    std::vector<Remark> waits;
    std::vector<Remark> otherCodes;
    std::vector<Remark> endless;  // what is asked again for as long as it fails
    std::vector<Remark> whole;    // what never comes short
    bool anyValueBesideException = false;
};

// Whether a recipe says so of a function. What it says is needed then.
bool isSaid(std::vector<Promises::Remark>& remarks, const std::string& function);

// Visits what a recipe says, with the kind of each.
template <class Visit>
void forEachRemark(const Promises& promises, Visit&& visit) {
    const auto visitAll = [&](const char* kind, const auto& remarks) {
        for (const auto& each : remarks) {
            visit(kind, each);
        }
    };
    visitAll("tolerated", promises.tolerated);
    visitAll("required leak", promises.leaks);
    visitAll("required leak", promises.foreign);
    visitAll("wait", promises.waits);
    visitAll("other code", promises.otherCodes);
    visitAll("asked again without limit", promises.endless);
    visitAll("never short", promises.whole);
}

// One performance.
struct Run {
    bool finished = false;
    Outcome outcome;
    std::map<std::string, std::size_t> systemCalls;
    std::map<std::string, std::size_t> javaCalls;
    std::set<std::uintptr_t> callSites;  // offsets in the library of the places behind the calls
    Promises promises;
    std::vector<std::string> complaints;  // of the test bed
};

class RecipeBody {
public:
    virtual ~RecipeBody() = default;
    virtual void execute(const std::vector<PlannedFault>& planned, Run& run) = 0;
};

struct Recipe {
    std::string method;
    std::string branch;
    std::unique_ptr<RecipeBody> (*make)();

    std::string name() const { return method + "_" + branch; }
};

std::vector<Recipe>& recipes();

// Recipes that violate the rules on purpose, kept apart.
std::vector<Recipe>& violatingRecipes();

// What stands where a recipe names a method: for the library itself, and for those.
inline constexpr char loading[] = "library";
inline constexpr char violating[] = "violation";

template <class Body>
bool addRecipe(const char* method, const char* branch) {
    auto& all = method == std::string(violating) ? violatingRecipes() : recipes();
    all.push_back({method, branch, []() -> std::unique_ptr<RecipeBody> { return std::make_unique<Body>(); }});
    return true;
}

// The number of calls of each function between two counts.
std::map<std::string, std::size_t> callsBetween(const std::map<std::string, std::size_t>& before,
                                                const std::map<std::string, std::size_t>& after);

// On a fixture of the test bed; what the fixture checks at its end is judged as well.
template <class Fixture>
class RecipeOn : public Fixture, public RecipeBody {
public:
    void execute(const std::vector<PlannedFault>& planned, Run& run) final {
        planned_ = planned;
        run_ = &run;
        const ComSlots com(Fixture::system());
        const Replacement sleep = Fixture::system().answer("Sleep", 0);
        this->SetUp();
        perform();
        this->TearDown();
        settleLeaks();
    }

protected:
    virtual void perform() = 0;

    virtual std::uintptr_t libraryBase() const {
        return reinterpret_cast<std::uintptr_t>(Fixture::library().module());
    }

    // The call of the recipe: what the library does in it is recorded, or fails.
    template <class Call>
    void examine(Call&& call) {
        const auto systemBefore = Fixture::system().counts();
        const auto javaBefore = Fixture::java.counts();
        Fixture::system().takeCallers();
        {
            const std::vector<Replacement> failing = place();
            if constexpr (std::is_void_v<decltype(call())>) {
                call();
            } else {
                const auto value = call();
                run_->outcome.value = masked(textOf(value));
            }
        }
        run_->systemCalls = callsBetween(systemBefore, Fixture::system().counts());
        run_->javaCalls = callsBetween(javaBefore, Fixture::java.counts());
        for (const void* caller : Fixture::system().takeCallers()) {
            run_->callSites.insert(reinterpret_cast<std::uintptr_t>(caller) - libraryBase());
        }
        run_->outcome.thrown = Fixture::java.takeException();
        run_->outcome.thrown.message = masked(run_->outcome.thrown.message);
        run_->finished = true;
    }

    // Whether the call answered this, in which case there is something to take back.
    bool answered() const { return run_->outcome.thrown.className.empty(); }

    // What a collector was handed.
    void note(const std::wstring& entry) { run_->outcome.log.push_back(masked(entry)); }

    // A text that is another one each time: it stands as "<it>" in what is compared.
    void mask(std::wstring text) { masks_.push_back(std::move(text)); }

    // A collector that notes what it is handed.
    JavaObject noting(const std::string& name, const std::string& signature) {
        return Fixture::java.collector(name, signature, [this](const Arguments& arguments) {
            std::wstring entry;
            for (const Value& argument : arguments) {
                entry += textOf(argument) + L"|";
            }
            note(entry);
        });
    }

    // A list whose elements are noted when the call is over.
    void noteElements(const JavaObject& list) {
        for (const JavaObject& element : FakeJava::listElements(list)) {
            note(element.className() == "java/lang/String" ? element.text() : toWide(element.className()));
        }
    }

    // What the recipe promises.
    void mayAnswer(const std::wstring& value) { promises().failureValues.insert(value); }
    using Tolerance = Promises::Tolerated::Outcome;
    void tolerates(std::initializer_list<const char*> functions, const char* reason,
                   Tolerance outcome = Tolerance::asEver) {
        for (const char* function : functions) {
            say(promises().tolerated, function, reason).outcome = outcome;
        }
    }
    void leavesOut(std::initializer_list<const char*> functions, const char* reason) {
        tolerates(functions, reason, Tolerance::less);
    }
    void answersInstead(const char* function, const std::wstring& value, const char* reason) {
        Promises::Tolerated& made = say(promises().tolerated, function, reason);
        made.outcome = Tolerance::given;
        made.value = value;
    }
    // Java never sees it.
    void mayAnswerAnythingBesideAnException() { promises().anyValueBesideException = true; }
    // What some functions take is required to stay when another fails, or in any case.
    void mustLeak(const char* function, std::size_t most, const char* reason,
                  const std::set<std::string>& behind = {}) {
        Promises::Leak& made = say(promises().leaks, function, reason);
        made.most = most;
        made.behind = behind;
    }
    void alwaysLeaks(const char* function, const char* reason) {
        say(promises().leaks, function, reason).always = true;
    }
    // The same of a function of the Java environment, however often it is called.
    void alwaysKeeps(const char* javaFunction, const char* reason) {
        Fixture::java.keepUnreleased(javaFunction);
        say(promises().leaks, javaFunction, reason).needed = true;
    }
    // A call that is required to give back what was never taken, when another fails, or in any case.
    void givesBackWhatIsNone(const char* function, const char* reason,
                             const std::set<std::string>& behind = {}) {
        Promises::Leak& made = say(promises().foreign, function, reason);
        made.behind = behind;
        made.always = behind.empty();
    }
    void comesWhole(const char* function, const char* reason) { say(promises().whole, function, reason); }
    void waits(const char* function, const char* reason) { say(promises().waits, function, reason); }
    void asksForEver(const char* function, const char* reason) { say(promises().endless, function, reason); }
    void raisesOtherCode(const char* function, const char* reason) {
        say(promises().otherCodes, function, reason);
    }

    static std::wstring textOf(const std::wstring& value) { return value; }
    static std::wstring textOf(const JavaObject& value) { return describe(value); }
    static std::wstring textOf(bool value) { return describe(value); }
    static std::wstring textOf(jint value) { return describe(value); }
    static std::wstring textOf(jlong value) { return describe(value); }
    static std::wstring textOf(const Value& value) {
        return std::visit(
            [](const auto& held) -> std::wstring {
                using T = std::decay_t<decltype(held)>;
                if constexpr (std::is_same_v<T, JavaObject>) {
                    return describe(held);
                } else {
                    return std::to_wstring(held);
                }
            },
            value.any());
    }

    // The answer of a method that hands out a handle: 0, or that there is one.
    static std::wstring handleText(jlong handle) { return handle == 0 ? L"0" : L"a handle"; }

private:
    void TestBody() final {}

    Promises& promises() { return run_->promises; }

    template <class Remarks>
    static auto& say(Remarks& remarks, const char* function, const char* reason) {
        auto& made = remarks.emplace_back();
        made.function = function;
        made.reason = reason;
        return made;
    }

    std::vector<Replacement> place() {
        std::vector<Replacement> placed;
        for (const PlannedFault& each : planned_) {
            if (each.fault) {
                placed.push_back(Fixture::system().failCall(each.function, each.occurrence, *each.fault,
                                                            each.lasting ? SIZE_MAX : each.occurrence));
            } else {
                Fixture::java.failCall(each.function, each.occurrence, each.exception);
            }
        }
        return placed;
    }

    bool isToLeak(const Promises::Leak& leak) const {
        return leak.always || std::ranges::any_of(planned_, [&](const PlannedFault& each) {
                   return leak.behind.empty() || leak.behind.contains(each.function);
               });
    }

    // Leaks that are required stand in the ledger as such; a real handle among them is the test's to close.
    void settleLeaks() {
        for (const Holding& holding : Fixture::ledger().left()) {
            const auto leak = std::ranges::find_if(promises().leaks, [&](const Promises::Leak& each) {
                return each.function == holding.takenBy && isToLeak(each) && each.found < each.most;
            });
            if (leak == promises().leaks.end()) {
                continue;
            }
            ++leak->found;
            leak->needed = true;
            Fixture::ledger().expectLeft(holding.takenBy);
            if (holding.kind == Kind::handle && !Ledger::isFake(holding.value)) {
                CloseHandle(reinterpret_cast<HANDLE>(holding.value));
            }
        }
        for (Promises::Leak& each : promises().foreign) {
            if (isToLeak(each)) {
                const std::size_t complaints = Fixture::ledger().complaints().size();
                Fixture::ledger().allowUnknown(each.function);
                each.needed = Fixture::ledger().complaints().size() != complaints;
            }
        }
    }

    std::wstring masked(std::wstring given) const {
        for (const std::wstring& each : masks_) {
            for (std::size_t at = given.find(each); at != std::wstring::npos; at = given.find(each)) {
                given.replace(at, each.size(), L"<it>");
            }
        }
        return given;
    }

    std::vector<std::wstring> masks_;
    std::vector<PlannedFault> planned_;
    Run* run_ = nullptr;
};

}  // namespace testbed

// RECIPE(ReadWriteTest, getFileSize, ofAnOpenFile) { ... examine([&] { return NATIVE(getFileSize)(record);
// }); }
#define RECIPE(fixture, method, branch)                                          \
    class Recipe_##method##_##branch final : public testbed::RecipeOn<fixture> { \
        void perform() override;                                                 \
    };                                                                           \
    [[maybe_unused]] const bool method##_##branch##Added =                       \
        testbed::addRecipe<Recipe_##method##_##branch>(#method, #branch);        \
    void Recipe_##method##_##branch::perform()
