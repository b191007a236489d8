// The inputs of the fuzz targets once more, through the shipped DLL: what the system hands out comes from a
// file of the corpus, and every block that the DLL has for it ends at a guard page.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "answers/input.h"
#include "guarded_heap.h"
#include "winutil_fixture.h"

namespace testbed {

// One file of a corpus.
struct CorpusFile {
    std::string name;  // TARGET/FILE
    std::vector<char> bytes;
};
std::vector<CorpusFile> corpusOf(const std::string& target);

// Everything that the library handed out or raised for an input, in order.
using Outcome = std::vector<std::wstring>;
std::wstring describe(const Value& value);

// Blocks of the system's heaps, which end at guard pages too.
class GuardedSystemMemory {
public:
    explicit GuardedSystemMemory(SystemCalls& system);

    // A block that a call hands out, for the DLL to give back with one of the functions below.
    void* give(std::size_t size);

private:
    bool release(void* block);

    std::map<void*, GuardedBuffer> blocks_;
    std::vector<Replacement> replacements_;
};

// Tests on a fixture of the room whose system they replace.
template <class Base>
class HostileTest : public Base {
protected:
    // Plays every input of a target twice, with another filling of fresh memory at the second time: nothing
    // may be read that nobody wrote, and nothing may be left behind.
    void forEachInput(const std::string& target, const std::function<void(hostile::Input&)>& play) {
        const std::vector<CorpusFile> files = corpusOf(target);
        ASSERT_FALSE(files.empty()) << "no inputs of " << target;
        for (const CorpusFile& played : files) {
            SCOPED_TRACE(played.name);
            nameCase(played.name.c_str());
            EXPECT_EQ(outcomeOf(played, 0xCD, play), outcomeOf(played, 0x3C, play));
            EXPECT_TRUE(this->ledger().isEmpty());
        }
        nameCase(nullptr);
    }

    // A collector with every method that the played listings call.
    JavaObject collector() {
        for (const auto& [name, signature] : methods) {
            this->java.defineMethod("Collector", name, signature,
                                    [this](const Arguments& arguments) -> Value {
                                        for (const Value& argument : arguments) {
                                            note(argument);
                                        }
                                        return true;
                                    });
        }
        return this->java.object("Collector");
    }

    void note(const Value& value) { outcome_.push_back(describe(value)); }

    GuardedSystemMemory& memory() { return *memory_; }

private:
    static constexpr std::pair<const char*, const char*> methods[] = {
        {"add", "(Ljava/lang/Object;)Z"},
        {"addNode", "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V"},
        {"addStringNode", "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;)V"},
        {"addDwordNode", "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;J)V"},
        {"addByteNode", "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;[B)V"},
        {"addMultiStringNode",
         "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;[Ljava/lang/String;)V"},
        {"addCpuInfo",
         "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;JLjava/lang/String;II)V"},
        {"addEntry",
         "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;"
         "Ljava/lang/String;Ljava/lang/String;)V"},
        {"addDiskInfo", "(Ljava/lang/String;Ljava/lang/String;Z)V"},
    };

    Outcome outcomeOf(const CorpusFile& played, int filling,
                      const std::function<void(hostile::Input&)>& play) {
        outcome_.clear();
        hostile::poison = filling;
        hostile::Input input(std::as_bytes(std::span(played.bytes)));
        {
            const GuardedHeap heap(this->system(), static_cast<std::byte>(filling));
            memory_.emplace(this->system());
            play(input);
            memory_.reset();
        }
        const Thrown thrown = this->java.takeException();
        EXPECT_TRUE(thrown == nothingThrown() || thrown.className == "java/io/IOException")
            << thrown.className;
        outcome_.push_back(thrown.message);
        return outcome_;
    }

    Outcome outcome_;
    std::optional<GuardedSystemMemory> memory_;
};

}  // namespace testbed
