// Functions that keep the ledger around a call of the system: one template for each way of taking and giving
// back.
#pragma once

#include <windows.h>

#include <cstdint>
#include <tuple>
#include <type_traits>

#include "system_calls.h"

namespace testbed {

// How a function says that it succeeded.
enum class Success { nonZero, zero, notNegative, always };

template <class T>
std::uint64_t toWord(T value) {
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<std::uint64_t>(value);
    } else {
        return static_cast<std::uint64_t>(value);
    }
}

template <Success success, class R>
bool succeeded(R result) {
    if constexpr (success == Success::always) {
        return true;
    } else if constexpr (success == Success::nonZero) {
        return toWord(result) != 0;
    } else if constexpr (success == Success::zero) {
        return toWord(result) == 0;
    } else {
        return result >= 0;
    }
}

template <class R, class... Args>
R passOn(const InterceptedCall& call, Args... args) {
    return call.pass(static_cast<R (*)(Args...)>(nullptr), args...);
}

// Keeps the last error of the call that was just made.
class LastErrorKeeper {
public:
    LastErrorKeeper() = default;
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;
    ~LastErrorKeeper() { SetLastError(error_); }

private:
    DWORD error_ = GetLastError();
};

// No function need leave the last error alone because it succeeds. One that gives something back never does
// here, so that whoever reads the last error behind a clean-up reads this.
constexpr DWORD errorOfCleanUp = 0x0BADBAD0;

// Takes a value out of the ledger ahead of the call that gives it back: once the system has it, another
// thread may get the same one.
class GivingBack {
public:
    GivingBack(const InterceptedCall& call, Kind kind, std::uint64_t value)
        : ledger_(call.ledger()), given_(ledger_.give(kind, value, call.function(), call.caller())) {
        reachesSystem_ = given_.what != Ledger::Given::twice && (!Ledger::isFake(value) || call.isReplaced());
    }

    // False when the system must not see the value: it has it already, or never gave it out.
    bool reachesSystem() const { return reachesSystem_; }

    // The call failed.
    void undo() const { ledger_.undo(given_); }

private:
    Ledger& ledger_;
    Ledger::GivenBack given_;
    bool reachesSystem_;
};

// Hands out its result, unless that is the value that stands for none.
template <class Function, Kind kind, std::intptr_t none>
struct TakesResult;

template <class R, class... Args, Kind kind, std::intptr_t none>
struct TakesResult<R(Args...), kind, none> {
    static R WINAPI call(Args... args) {
        const InterceptedCall intercepted;
        const R result = passOn<R>(intercepted, args...);
        const LastErrorKeeper keeper;
        if (toWord(result) != static_cast<std::uint64_t>(none)) {
            intercepted.ledger().take(kind, toWord(result), intercepted.function(), intercepted.caller());
        }
        return result;
    }
};

// Stores what it hands out where one of its arguments points.
template <class Function, Kind kind, std::size_t index, Success success>
struct TakesStored;

template <class R, class... Args, Kind kind, std::size_t index, Success success>
struct TakesStored<R(Args...), kind, index, success> {
    static R WINAPI call(Args... args) {
        const InterceptedCall intercepted;
        const R result = passOn<R>(intercepted, args...);
        const LastErrorKeeper keeper;
        const auto place = reinterpret_cast<const std::uint64_t*>(std::get<index>(std::tuple(args...)));
        if (succeeded<success>(result) && place != nullptr && *place != 0) {
            intercepted.ledger().take(kind, *place, intercepted.function(), intercepted.caller());
        }
        return result;
    }
};

// Takes what an argument says: the address of something that it sets up.
template <class Function, Kind kind, std::size_t index, Success success>
struct TakesArgument;

template <class R, class... Args, Kind kind, std::size_t index, Success success>
struct TakesArgument<R(Args...), kind, index, success> {
    static R WINAPI call(Args... args) {
        const InterceptedCall intercepted;
        const auto take = [&] {
            intercepted.ledger().take(kind, toWord(std::get<index>(std::tuple(args...))),
                                      intercepted.function(), intercepted.caller());
        };
        if constexpr (std::is_void_v<R>) {
            passOn<R>(intercepted, args...);
            const LastErrorKeeper keeper;
            take();
        } else {
            const R result = passOn<R>(intercepted, args...);
            const LastErrorKeeper keeper;
            if (succeeded<success>(result)) {
                take();
            }
            return result;
        }
    }
};

// Gives back what an argument says. A null is let through where the function allows it.
template <class Function, Kind kind, std::size_t index, Success success, bool allowsNull>
struct Gives;

template <class R, class... Args, Kind kind, std::size_t index, Success success, bool allowsNull>
struct Gives<R(Args...), kind, index, success, allowsNull> {
    static R WINAPI call(Args... args) {
        const InterceptedCall intercepted;
        const std::uint64_t value = toWord(std::get<index>(std::tuple(args...)));
        if (allowsNull && value == 0) {
            return passOn<R>(intercepted, args...);
        }
        const GivingBack giving(intercepted, kind, value);
        if constexpr (std::is_void_v<R>) {
            if (giving.reachesSystem()) {
                passOn<R>(intercepted, args...);
            }
            SetLastError(errorOfCleanUp);
        } else {
            if (!giving.reachesSystem()) {
                SetLastError(errorOfCleanUp);
                return intercepted.told(detail::fromWord<R>(success == Success::nonZero ? 1 : 0));
            }
            const R result = passOn<R>(intercepted, args...);
            if (succeeded<success>(result)) {
                SetLastError(errorOfCleanUp);
            } else {
                const LastErrorKeeper keeper;
                giving.undo();
            }
            return intercepted.told(result);
        }
    }
};

}  // namespace testbed
