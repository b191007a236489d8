#include "ledger.h"

#include <atomic>
#include <iterator>

#include "text.h"

namespace testbed {

namespace {

// Beyond every handle and below every address that the system would hand out.
constexpr std::uint64_t fakeHandles = 0x0FA0'0000;
constexpr std::uint64_t fakeHandlesEnd = 0x0FA1'0000;
constexpr std::uint64_t handleStep = 4;

}  // namespace

const char* nameOf(Kind kind) {
    static constexpr const char* names[] = {"memory",
                                            "heap block",
                                            "local block",
                                            "global block",
                                            "COM memory",
                                            "COM library",
                                            "COM reference",
                                            "BSTR",
                                            "handle",
                                            "search",
                                            "volume search",
                                            "module",
                                            "registry key",
                                            "service handle",
                                            "event source",
                                            "impersonation",
                                            "encrypted file",
                                            "environment block",
                                            "network enumeration",
                                            "network buffer",
                                            "icon",
                                            "graphics object",
                                            "device context",
                                            "critical section",
                                            "lock"};
    static_assert(std::size(names) == static_cast<std::size_t>(Kind::lock) + 1);
    return names[static_cast<std::size_t>(kind)];
}

std::string describe(const Holding& holding) {
    return nameOf(holding.kind) + (" " + hex(holding.value)) + " taken by " + holding.takenBy + " at " +
           holding.caller;
}

void Ledger::take(Kind kind, std::uint64_t value, const std::string& function, const std::string& caller) {
    const std::lock_guard lock(mutex_);
    given_.erase({kind, value});
    held_.insert({{kind, value}, {{kind, value, function, caller, GetCurrentThreadId()}, round_}});
}

Ledger::GivenBack Ledger::give(Kind kind, std::uint64_t value, const std::string& function,
                               const std::string& caller) {
    const std::lock_guard lock(mutex_);
    const auto [first, last] = held_.equal_range({kind, value});
    if (first != last) {
        const auto newest = std::prev(last);
        GivenBack given{Given::held, newest->second.round, newest->second.holding};
        held_.erase(newest);
        given_.insert({kind, value});
        return given;
    }
    const std::string what =
        nameOf(kind) + (" " + hex(value)) + " given back by " + function + " at " + caller;
    if (given_.contains({kind, value})) {
        complaints_.push_back({function, what + " a second time"});
        return {Given::twice, round_, {}};
    }
    complaints_.push_back({function, what + ", but no call took it"});
    return {Given::unknown, round_, {}};
}

void Ledger::undo(const GivenBack& given) {
    if (given.what == Given::held) {
        const std::lock_guard lock(mutex_);
        const Key key(given.holding.kind, given.holding.value);
        given_.erase(key);
        held_.insert({key, {given.holding, given.round}});
    }
}

void Ledger::drop(Kind kind, std::uint64_t value) {
    const std::lock_guard lock(mutex_);
    held_.erase({kind, value});
}

void Ledger::start() {
    const std::lock_guard lock(mutex_);
    ++round_;
    complaints_.clear();
    expected_.clear();
    allowed_.clear();
}

std::vector<Holding> Ledger::left() const {
    const std::lock_guard lock(mutex_);
    std::vector<Holding> found;
    for (const auto& [key, entry] : held_) {
        if (entry.round == round_) {
            found.push_back(entry.holding);
        }
    }
    return found;
}

std::vector<std::string> Ledger::complaints() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> found;
    for (const Complaint& complaint : complaints_) {
        if (!allowed_.contains(complaint.function)) {
            found.push_back(complaint.text);
        }
    }
    return found;
}

void Ledger::expectLeft(const std::string& function, std::size_t count) {
    const std::lock_guard lock(mutex_);
    expected_[function] += count;
}

void Ledger::allowUnknown(const std::string& function) {
    const std::lock_guard lock(mutex_);
    allowed_.insert(function);
}

std::vector<std::string> Ledger::differences() const {
    std::vector<std::string> found = complaints();
    std::map<std::string, std::size_t> expected;
    {
        const std::lock_guard lock(mutex_);
        expected = expected_;
    }
    for (const Holding& holding : left()) {
        auto declared = expected.find(holding.takenBy);
        if (declared != expected.end() && declared->second > 0) {
            --declared->second;
        } else {
            found.push_back("not given back: " + describe(holding));
        }
    }
    for (const auto& [function, missing] : expected) {
        if (missing > 0) {
            found.push_back("expected " + std::to_string(missing) + " more left by " + function);
        }
    }
    return found;
}

HANDLE Ledger::fakeHandle() {
    // After the last comes the first again, which nobody holds any more.
    constexpr std::uint64_t count = (fakeHandlesEnd - fakeHandles) / handleStep;
    static std::atomic<std::uint64_t> next = 0;
    return reinterpret_cast<HANDLE>(fakeHandles + next.fetch_add(1) % count * handleStep);
}

bool Ledger::isFake(std::uint64_t value) {
    return value >= fakeHandles && value < fakeHandlesEnd;
}

}  // namespace testbed
