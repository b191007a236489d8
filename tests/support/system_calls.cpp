#include "system_calls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "interceptor.h"
#include "pe_image.h"
#include "stack_traces.h"
#include "tracked_functions.h"

namespace testbed {

namespace {

using detail::Behaviour;
using detail::Slot;

// Which intercepted call a thread is about to enter. Not a thread_local: this must work while a thread starts
// or ends.
const DWORD pendingIndex = TlsAlloc();

constexpr std::size_t resolvedCodeSize = 0x10000;

bool isCode(const void* address) {
    HMODULE module = nullptr;
    return GetModuleHandleExW(
               GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
               static_cast<const wchar_t*>(address), &module) != 0 &&
           PeImage::ofModule(module).isCode(address);
}

// The return address lies just below the arguments.
const void* callerOf(const std::uint64_t* arguments) {
    return reinterpret_cast<const void*>(arguments[-1]);
}

}  // namespace

struct InterceptedCall::Pending {
    Slot* slot;
    std::shared_ptr<Behaviour> behaviour;
    std::optional<Fault> fault;  // of a call that is made
    const void* caller;
};

namespace detail {

struct Slot {
    const void* interceptor;  // first, because the trampoline jumps through the slot's address
    SystemCalls* owner;
    std::string name;
    const void* real = nullptr;
    const void* tracked = nullptr;    // keeps the ledger around the call, when the function takes or gives
    std::shared_ptr<Behaviour> base;  // what happens when no test put anything in place
    std::vector<std::shared_ptr<Behaviour>> behaviours;  // the newest last
    std::atomic<std::size_t> count = 0;
    std::size_t countBefore = 0;

    static const void* decide(void* slot, std::uint64_t* arguments, std::uint64_t* result) noexcept;
};

// Halves what a call asks for. A question for a size, which asks for nothing, stays one.
void cut(std::uint64_t& argument, bool isPointer) {
    const auto half = [](DWORD asked) { return asked > 1 ? asked / 2 : asked; };
    if (!isPointer) {
        argument = half(static_cast<DWORD>(argument));
    } else if (auto* asked = reinterpret_cast<DWORD*>(argument); asked != nullptr) {
        *asked = half(*asked);
    }
}

// Says where the call goes; null means nowhere, with the result filled in.
const void* Slot::decide(void* slot, std::uint64_t* arguments, std::uint64_t* result) noexcept {
    DWORD lastError = GetLastError();
    Slot& self = *static_cast<Slot*>(slot);
    ++self.count;
    auto [behaviour, fault] = self.owner->choose(self, arguments);
    if (fault && fault->way == Fault::Way::cut) {
        cut(arguments[fault->cutArgument], fault->cutBehindPointer);
        fault.reset();
    }
    const void* target = self.real;
    if (self.tracked != nullptr || (behaviour && behaviour->body)) {
        target = self.tracked != nullptr ? self.tracked : behaviour->entry;
        TlsSetValue(pendingIndex, new InterceptedCall::Pending{&self, std::move(behaviour), std::move(fault),
                                                               callerOf(arguments)});
    } else if (behaviour && behaviour->answer) {
        *result = behaviour->answer->result;
        lastError = behaviour->answer->lastError.value_or(lastError);
        target = nullptr;
    }
    behaviour.reset();
    SetLastError(lastError);
    return target;
}

}  // namespace detail

InterceptedCall::InterceptedCall() {
    const DWORD lastError = GetLastError();
    pending_.reset(static_cast<Pending*>(TlsGetValue(pendingIndex)));
    TlsSetValue(pendingIndex, nullptr);
    SetLastError(lastError);
}

InterceptedCall::~InterceptedCall() {
    const DWORD lastError = GetLastError();
    pending_.reset();
    SetLastError(lastError);
}

const std::string& InterceptedCall::function() const {
    return pending_->slot->name;
}

std::string InterceptedCall::caller() const {
    return placeName(pending_->caller);
}

Ledger& InterceptedCall::ledger() const {
    return pending_->slot->owner->ledger();
}

bool InterceptedCall::isReplaced() const {
    return behaviour() != nullptr && (behaviour()->answer || behaviour()->body);
}

const Behaviour* InterceptedCall::behaviour() const {
    return pending_->behaviour.get();
}

const std::optional<Fault>& InterceptedCall::fault() const {
    return pending_->fault;
}

const void* InterceptedCall::realFunction() const {
    return pending_->slot->real;
}

void InterceptedCall::refuse(const std::type_info& expected) const {
    std::cerr << "The function put in place of " << function() << " has another type than the one expected, "
              << expected.name() << std::endl;
    std::abort();
}

Replacement::Replacement(SystemCalls& owner, Slot& slot, std::shared_ptr<Behaviour> behaviour)
    : owner_(&owner), slot_(&slot), behaviour_(std::move(behaviour)) {}

Replacement& Replacement::operator=(Replacement&& other) noexcept {
    restore();
    owner_ = other.owner_;
    slot_ = other.slot_;
    behaviour_ = std::move(other.behaviour_);
    return *this;
}

std::vector<RecordedCall> Replacement::calls() const {
    if (!behaviour_) {
        return {};
    }
    const std::lock_guard lock(owner_->mutex_);
    return behaviour_->calls;
}

void Replacement::restore() {
    if (!behaviour_) {
        return;
    }
    {
        const std::lock_guard lock(owner_->mutex_);
        std::erase(slot_->behaviours, behaviour_);
    }
    if (slot_->real == nullptr && !owner_->complete_ && behaviour_->calls.empty()) {
        ADD_FAILURE() << "The library never asked for " << slot_->name;
    }
    behaviour_.reset();
}

SystemCalls::SystemCalls(Ledger& ledger) : ledger_(ledger) {
    auto base = std::make_shared<Behaviour>();
    base->body = std::make_shared<std::function<FARPROC(HMODULE, LPCSTR)>>(
        [this](HMODULE module, LPCSTR name) { return resolve(module, name); });
    base->type = &typeid(FARPROC(HMODULE, LPCSTR));
    base->entry = reinterpret_cast<const void*>(&detail::Entry<FARPROC(HMODULE, LPCSTR)>::call);
    slot("GetProcAddress").base = std::move(base);
}

SystemCalls::~SystemCalls() = default;

Slot& SystemCalls::slot(std::string_view name) {
    const std::lock_guard lock(mutex_);
    auto found = slots_.find(name);
    if (found == slots_.end()) {
        auto made = std::make_unique<Slot>();
        made->interceptor = interceptorCode(&Slot::decide);
        made->owner = this;
        made->name = name;
        made->tracked = trackedFunction(made->name);
        found = slots_.emplace(made->name, std::move(made)).first;
    }
    return *found->second;
}

std::vector<unsigned char> SystemCalls::trampolineFor(const std::string& name, const void* real) {
    Slot& target = slot(name);
    if (target.real == nullptr) {
        target.real = real;
    }
    return trampolineCode(&target);
}

SystemCalls::Choice SystemCalls::choose(Slot& slot, const std::uint64_t* arguments) {
    const std::lock_guard lock(mutex_);
    callers_.insert(callerOf(arguments));
    Choice choice;
    for (auto behaviour = slot.behaviours.rbegin(); behaviour != slot.behaviours.rend(); ++behaviour) {
        auto& calls = (*behaviour)->calls;
        RecordedCall& call = calls.emplace_back();
        std::copy_n(arguments, call.arguments.size(), call.arguments.begin());
        call.thread = GetCurrentThreadId();
        if (calls.size() < (*behaviour)->first || calls.size() > (*behaviour)->last) {
            continue;
        }
        if ((*behaviour)->fault) {
            choice.fault = (*behaviour)->fault;
        } else if (!choice.behaviour && ((*behaviour)->answer || (*behaviour)->body)) {
            choice.behaviour = *behaviour;
        }
    }
    if (!choice.behaviour) {
        choice.behaviour = slot.base;
    }
    return choice;
}

// The DLL's GetProcAddress: what it finds leads through a slot as well.
FARPROC SystemCalls::resolve(HMODULE module, const char* name) {
    const auto asFunction = [](const void* code) {
        return reinterpret_cast<FARPROC>(const_cast<void*>(code));
    };
    const FARPROC function = GetProcAddress(module, name);
    const auto* real = reinterpret_cast<const void*>(function);
    if (IS_INTRESOURCE(name) || (real != nullptr && !isCode(real))) {
        return function;
    }
    const DWORD lastError = GetLastError();
    Slot& target = slot(name);
    const std::lock_guard lock(mutex_);
    if (real == nullptr && target.behaviours.empty()) {
        SetLastError(lastError);
        return nullptr;
    }
    if (target.real == nullptr) {
        target.real = real;
    }
    const void* code = leadTo(target);
    SetLastError(lastError);
    return asFunction(code);
}

const void* SystemCalls::leadTo(Slot& target) {
    const void*& trampoline = resolved_[target.name];
    if (trampoline == nullptr) {
        const std::vector<unsigned char> code = trampolineCode(&target);
        if (resolvedCode_.empty() || !resolvedCode_.back().hasRoomFor(code.size())) {
            resolvedCode_.push_back(CodeArea::anywhere(resolvedCodeSize));
        }
        trampoline = resolvedCode_.back().add(code);
    }
    return trampoline;
}

const void* SystemCalls::lead(const std::string& name, const void* real) {
    Slot& target = slot(name);
    const std::lock_guard lock(mutex_);
    target.real = real;
    return leadTo(target);
}

std::vector<std::string> SystemCalls::known() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> names;
    for (const auto& [name, slot] : slots_) {
        if (slot->real != nullptr) {
            names.push_back(name);
        }
    }
    return names;
}

const void* SystemCalls::realFunction(std::string_view name) {
    const void* function = slot(name).real;
    if (function == nullptr) {
        ADD_FAILURE() << "The library has not asked for " << name;
    }
    return function;
}

Replacement SystemCalls::place(std::string_view name, std::shared_ptr<Behaviour> behaviour) {
    Slot& target = slot(name);
    if (complete_ && target.real == nullptr) {
        ADD_FAILURE() << "The library does not call " << name;
    }
    const std::lock_guard lock(mutex_);
    target.behaviours.push_back(behaviour);
    return Replacement(*this, target, std::move(behaviour));
}

Replacement SystemCalls::answer(std::string_view name, std::uint64_t result, std::optional<DWORD> lastError) {
    auto behaviour = std::make_shared<Behaviour>();
    behaviour->answer = {result, lastError};
    return place(name, std::move(behaviour));
}

Replacement SystemCalls::failCall(std::string_view name, std::size_t k, DWORD lastError,
                                  std::uint64_t result) {
    auto behaviour = std::make_shared<Behaviour>();
    behaviour->first = behaviour->last = k;
    behaviour->answer = {result, lastError};
    return place(name, std::move(behaviour));
}

Replacement SystemCalls::failCall(std::string_view name, std::size_t k, const Fault& fault,
                                  std::size_t last) {
    auto behaviour = std::make_shared<Behaviour>();
    behaviour->first = k;
    behaviour->last = last;
    if (fault.way == Fault::Way::refused) {
        behaviour->answer = {fault.result, fault.lastError};
    } else {
        behaviour->fault = fault;
    }
    return place(name, std::move(behaviour));
}

Replacement SystemCalls::watch(std::string_view name) {
    return place(name, std::make_shared<Behaviour>());
}

Replacement SystemCalls::hide(std::initializer_list<std::string> names) {
    return replace<FARPROC(HMODULE, LPCSTR)>(
        "GetProcAddress",
        [this, hidden = std::vector<std::string>(names)](HMODULE module, LPCSTR name) -> FARPROC {
            if (!IS_INTRESOURCE(name) && std::ranges::find(hidden, name) != hidden.end()) {
                SetLastError(ERROR_PROC_NOT_FOUND);
                return nullptr;
            }
            return resolve(module, name);
        });
}

std::size_t SystemCalls::count(std::string_view name) const {
    const std::lock_guard lock(mutex_);
    const auto found = slots_.find(name);
    return found == slots_.end() ? 0 : found->second->count - found->second->countBefore;
}

std::map<std::string, std::size_t> SystemCalls::counts() const {
    const std::lock_guard lock(mutex_);
    std::map<std::string, std::size_t> counted;
    for (const auto& [name, slot] : slots_) {
        if (slot->count != slot->countBefore) {
            counted.emplace(name, slot->count - slot->countBefore);
        }
    }
    return counted;
}

std::set<const void*> SystemCalls::takeCallers() {
    const std::lock_guard lock(mutex_);
    return std::exchange(callers_, {});
}

void SystemCalls::start() {
    const std::lock_guard lock(mutex_);
    for (auto& [name, slot] : slots_) {
        slot->countBefore = slot->count;
    }
}

std::vector<std::string> SystemCalls::replaced() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> names;
    for (const auto& [name, slot] : slots_) {
        if (!slot->behaviours.empty()) {
            names.push_back(name);
        }
    }
    return names;
}

}  // namespace testbed
