// Everything that the DLL under test took from the system and has not given back.
#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace testbed {

// What is taken with one family of functions and given back with another.
enum class Kind {
    memory,
    heapBlock,
    localBlock,
    globalBlock,
    comMemory,
    comLibrary,
    comReference,
    text,  // a BSTR
    handle,
    search,
    volumeSearch,
    module,
    registryKey,
    service,
    eventSource,
    impersonation,
    encryptedFile,
    environmentBlock,
    networkEnumeration,
    networkBuffer,
    icon,
    graphicsObject,
    deviceContext,
    criticalSection,
    lock,
};
const char* nameOf(Kind kind);

struct Holding {
    Kind kind;
    std::uint64_t value;
    std::string takenBy;  // the function, as in "CreateFileW"
    std::string caller;   // where in the DLL, as in "WinUtil64.dll+0x1234"
    DWORD thread;
};
std::string describe(const Holding& holding);

class Ledger {
public:
    void take(Kind kind, std::uint64_t value, const std::string& function, const std::string& caller);

    // What came of giving something back.
    enum class Given { held, unknown, twice };
    struct GivenBack {
        Given what;
        unsigned round;
        Holding holding;
    };
    GivenBack give(Kind kind, std::uint64_t value, const std::string& function, const std::string& caller);

    // The call that was to give it back failed.
    void undo(const GivenBack& given);

    // Forgets every holding of that value without a word.
    void drop(Kind kind, std::uint64_t value);

    // Only what is taken from here on counts as left at the end.
    void start();

    // What was taken since the start and not given back.
    std::vector<Holding> left() const;
    bool isEmpty() const { return left().empty(); }

    // What was given back without having been taken, or twice.
    std::vector<std::string> complaints() const;

    // Declares a leak that is required behaviour: so many holdings of that function stay.
    void expectLeft(const std::string& function, std::size_t count = 1);

    // Declares that the function is called with something that was never taken.
    void allowUnknown(const std::string& function);

    // Every difference between what is left and what was declared, as one text for each; empty when all is
    // well.
    std::vector<std::string> differences() const;

    // A handle value that the system never hands out: for replaced calls that pretend to open something.
    // Giving it back is recorded and goes no further.
    static HANDLE fakeHandle();
    static bool isFake(std::uint64_t value);

private:
    using Key = std::pair<Kind, std::uint64_t>;
    struct Entry {
        Holding holding;
        unsigned round;
    };
    struct Complaint {
        std::string function;
        std::string text;
    };

    mutable std::mutex mutex_;
    std::multimap<Key, Entry> held_;
    std::set<Key> given_;
    std::vector<Complaint> complaints_;
    std::map<std::string, std::size_t> expected_;
    std::set<std::string> allowed_;
    unsigned round_ = 0;
};

}  // namespace testbed
