// What stands between the DLL under test and the system: one slot for each function that the DLL calls. Tests
// count the calls, look at their arguments, answer them or put a function of their own in their place; only
// that DLL sees it.
#pragma once

#include <windows.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "code_area.h"
#include "ledger.h"

namespace testbed {

// A call that was seen, with its arguments as the machine passes them.
struct RecordedCall {
    static constexpr std::size_t argumentCount = 12;  // more than any function here has

    std::array<std::uint64_t, argumentCount> arguments;
    DWORD thread;

    // Argument number index, from 0. A pointer may lead to what is gone by now.
    template <class T>
    T argument(std::size_t index) const {
        if constexpr (std::is_pointer_v<T>) {
            return reinterpret_cast<T>(arguments.at(index));
        } else {
            return static_cast<T>(arguments.at(index));
        }
    }
};

// How one call of a function fails.
struct Fault {
    enum class Way {
        refused,  // it is not made
        made,     // it does its work and says that it did not: what gives something back, and nothing else
        cut,      // it is made for half of what it was asked for, and succeeds
    };

    Way way = Way::refused;
    std::uint64_t result = 0;
    std::optional<DWORD> lastError = {};
    std::size_t cutArgument = 0;    // which argument says how much is asked for
    bool cutBehindPointer = false;  // or leads to a DWORD that does
};

namespace detail {

struct Slot;

// What a test put in place of a function, for some or all of the calls that follow.
struct Behaviour {
    struct Answer {
        std::uint64_t result;
        std::optional<DWORD> lastError;
    };

    std::size_t first = 1;  // the calls that it applies to, counted from its placing
    std::size_t last = SIZE_MAX;
    std::optional<Answer> answer;  // with neither answer nor body it only looks on
    std::optional<Fault> fault;    // made or cut: decides with whatever else is in place
    std::shared_ptr<void> body;    // a std::function of the type below
    const std::type_info* type = nullptr;
    const void* entry = nullptr;  // what the trampoline jumps to for it
    std::vector<RecordedCall> calls;
};

}  // namespace detail

class SystemCalls;

// Keeps what a test put in place of a function until it goes out of scope.
class [[nodiscard]] Replacement {
public:
    Replacement() = default;
    Replacement(SystemCalls& owner, detail::Slot& slot, std::shared_ptr<detail::Behaviour> behaviour);
    Replacement(Replacement&& other) noexcept = default;
    Replacement& operator=(Replacement&& other) noexcept;
    ~Replacement() { restore(); }

    // The calls that came while it was in place.
    std::vector<RecordedCall> calls() const;
    std::size_t count() const { return calls().size(); }

    void restore();

private:
    SystemCalls* owner_ = nullptr;
    detail::Slot* slot_ = nullptr;
    std::shared_ptr<detail::Behaviour> behaviour_;
};

class SystemCalls {
public:
    explicit SystemCalls(Ledger& ledger);
    ~SystemCalls();

    // Puts body, anything that can be called as Function, in the function's place.
    template <class Function, class Body>
    Replacement replace(std::string_view name, Body&& body);

    // The function of the system itself.
    template <class Function>
    Function* real(std::string_view name) {
        return reinterpret_cast<Function*>(const_cast<void*>(realFunction(name)));
    }

    // Answers every call without making it. The result is what the machine returns: a BOOL, a code, a handle.
    Replacement answer(std::string_view name, std::uint64_t result, std::optional<DWORD> lastError = {});

    // Answers only call number k, counted from now; the others are made.
    Replacement failCall(std::string_view name, std::size_t k, DWORD lastError, std::uint64_t result = 0);

    // The same in any way that a call can fail, up to call number `last`.
    Replacement failCall(std::string_view name, std::size_t k, const Fault& fault, std::size_t last);

    // Lets every call through and records it.
    Replacement watch(std::string_view name);

    // Makes functions look as if this system had none of these names. Matters while the DLL resolves them.
    Replacement hide(std::initializer_list<std::string> names);

    // How often the DLL called the function since the test began.
    std::size_t count(std::string_view name) const;

    // The same of all functions that it called.
    std::map<std::string, std::size_t> counts() const;

    // Where in the DLL calls came from since this was last asked: the places behind them.
    std::set<const void*> takeCallers();

    // Begins counting anew.
    void start();

    // The functions that something is put in place of.
    std::vector<std::string> replaced() const;

    // From here on a name that the DLL has not asked for is a mistake of the test.
    void expectNoNewNames() { complete_ = true; }

    // Code that leads to the function's slot and through it, by default, to the real function.
    std::vector<unsigned char> trampolineFor(const std::string& name, const void* real);

    // The same for code that the DLL is given while it runs: what to hand out in its place.
    const void* lead(const std::string& name, const void* real);

    // The functions that the DLL can call by now.
    std::vector<std::string> known() const;

    Ledger& ledger() { return ledger_; }

private:
    friend class Replacement;
    friend class InterceptedCall;
    friend struct detail::Slot;

    detail::Slot& slot(std::string_view name);
    Replacement place(std::string_view name, std::shared_ptr<detail::Behaviour> behaviour);
    const void* realFunction(std::string_view name);
    FARPROC resolve(HMODULE module, const char* name);
    struct Choice {
        std::shared_ptr<detail::Behaviour> behaviour;
        std::optional<Fault> fault;
    };
    Choice choose(detail::Slot& slot, const std::uint64_t* arguments);
    const void* leadTo(detail::Slot& target);

    Ledger& ledger_;
    mutable std::mutex mutex_;
    std::map<std::string, std::unique_ptr<detail::Slot>, std::less<>> slots_;
    std::map<std::string, const void*, std::less<>> resolved_;  // trampolines given out by GetProcAddress
    std::vector<CodeArea> resolvedCode_;
    std::set<const void*> callers_;
    bool complete_ = false;
};

// Taken first thing by the function that a trampoline leads to: which call this is, and what to do with it.
class InterceptedCall {
public:
    InterceptedCall();
    ~InterceptedCall();

    const std::string& function() const;
    std::string caller() const;
    Ledger& ledger() const;

    // Whether a test answers this call itself.
    bool isReplaced() const;

    // What the caller is told of a call that was made: its result, or the failure that a test wants.
    template <class R>
    R told(R result) const;

    // Does what the test put in place, or else calls the real function.
    template <class R, class... Args>
    R pass(R (*)(Args...), std::type_identity_t<Args>... args) const;

private:
    const detail::Behaviour* behaviour() const;
    const std::optional<Fault>& fault() const;
    const void* realFunction() const;
    [[noreturn]] void refuse(const std::type_info& expected) const;

    struct Pending;
    std::unique_ptr<Pending> pending_;
    friend struct detail::Slot;
};

namespace detail {

template <class Function>
struct Entry;

// The function behind a trampoline whose body has captures and so no address of its own.
template <class R, class... Args>
struct Entry<R(Args...)> {
    static R WINAPI call(Args... args) {
        const InterceptedCall intercepted;
        return intercepted.pass(static_cast<R (*)(Args...)>(nullptr), args...);
    }
};

template <class R>
R fromWord(std::uint64_t word) {
    if constexpr (std::is_pointer_v<R>) {
        return reinterpret_cast<R>(word);
    } else if constexpr (!std::is_void_v<R>) {
        return static_cast<R>(word);
    }
}

}  // namespace detail

template <class R>
R InterceptedCall::told(R result) const {
    if (!fault()) {
        return result;
    }
    if (fault()->lastError) {
        SetLastError(*fault()->lastError);
    }
    return detail::fromWord<R>(fault()->result);
}

template <class R, class... Args>
R InterceptedCall::pass(R (*)(Args...), std::type_identity_t<Args>... args) const {
    const detail::Behaviour* placed = behaviour();
    if (placed == nullptr || (!placed->answer && !placed->body)) {
        return reinterpret_cast<R(WINAPI*)(Args...)>(const_cast<void*>(realFunction()))(args...);
    }
    if (placed->answer) {
        if (placed->answer->lastError) {
            SetLastError(*placed->answer->lastError);
        }
        return detail::fromWord<R>(placed->answer->result);
    }
    if (*placed->type != typeid(R(Args...))) {
        refuse(typeid(R(Args...)));
    }
    return (*static_cast<std::function<R(Args...)>*>(placed->body.get()))(args...);
}

template <class Function, class Body>
Replacement SystemCalls::replace(std::string_view name, Body&& body) {
    auto behaviour = std::make_shared<detail::Behaviour>();
    behaviour->body = std::make_shared<std::function<Function>>(std::forward<Body>(body));
    behaviour->type = &typeid(Function);
    behaviour->entry = reinterpret_cast<const void*>(&detail::Entry<Function>::call);
    return place(name, std::move(behaviour));
}

}  // namespace testbed
