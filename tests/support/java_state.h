// The inside of the in-memory Java environment, shared by the files that implement its functions.
#pragma once

#include <windows.h>

#include <jni.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "fake_java.h"
#include "guard_pages.h"
#include "java_values.h"

namespace testbed {

enum class ReferenceKind { local, argument };

struct Reference {
    JavaObject object;
    ReferenceKind kind;
    const char* madeBy;
    std::size_t frame;
};

// Characters or elements that native code holds.
struct Pin {
    JavaObject object;
    GuardedBuffer buffer;
    const char* madeBy;
    std::size_t frame;
};

// Whether a JNI function may be called while an exception is pending.
enum class WhilePending { illegal, legal };

class JavaState : public JNIEnv {
public:
    JavaState();

    static JavaState& of(JNIEnv* env) { return *static_cast<JavaState*>(env); }

    // To be called first by each JNI function; false when a test wants this call to fail.
    bool enter(const char* function, WhilePending whilePending = WhilePending::illegal);
    void fail(const std::string& what) const;

    // Classes
    std::shared_ptr<JavaClass> findClass(const std::string& name) const;
    std::shared_ptr<JavaClass> makeClass(const std::string& name);
    void defineLibraryClasses();
    JavaObject make(const std::string& className, JavaContent::Any content = {});
    Exception makeException(const std::string& className, std::wstring_view message);

    // References
    jobject refer(const JavaObject& object, ReferenceKind kind, const char* madeBy);
    template <class Reference>
    Reference newLocal(const JavaObject& object, const char* madeBy) {
        return static_cast<Reference>(refer(object, ReferenceKind::local, madeBy));
    }
    // The object behind a reference that must be alive; null for null and, after failing the test, for a bad
    // one.
    JavaObject resolve(jobject reference, const char* function) const;
    // The same for one that must not be null and must lead to content of that type.
    template <class Content>
    Content* resolveAs(jobject reference, const char* function, const char* wanted) const;
    void deleteLocal(jobject reference);

    // Exceptions
    void throwNew(const std::string& className, std::wstring_view message);

    // Pins
    void* pin(const JavaObject& object, GuardedBuffer buffer, const char* madeBy);
    // Takes a pin out, if the pointer came from that function for that object.
    std::optional<Pin> unpin(jobject reference, const void* pointer, const char* madeBy,
                             const char* releasedBy);
    // Puts down how the characters of a string came back: as they were, or wiped. Any other change is wrong.
    void noteRelease(const Pin& pin, std::span<const std::byte> given);
    // Looks at a pin without taking it out.
    const Pin* findPin(const void* pointer) const;

    // Runs a Java method on decoded arguments; a Java exception that it throws is pending afterwards.
    Value invoke(const JavaMethod& method, const Arguments& arguments);

    void enterNative(const std::string& name);
    JavaObject leaveNative(jobject result);

    std::map<std::string, std::shared_ptr<JavaClass>> classes;
    std::set<const JavaMethod*> methodIds;  // given out by GetMethodID
    std::map<std::string, std::size_t> counts;
    std::map<std::string, std::map<std::size_t, std::string>>
        failures;  // function, call number, exception class
    std::vector<ArrayRelease> arrayReleases;
    std::vector<StringRelease> stringReleases;
    std::map<std::string, std::size_t> expectedPins;  // function, how many of its things stay
    std::set<std::string> keptPins;                   // functions whose things may all stay
    Exception pending;
    JavaObject self;
    std::size_t live = 0;
    std::size_t peak = 0;
    std::size_t classNumber = 0;

private:
    void reportLeftovers();

    JNINativeInterface_ table_;
    std::map<std::uintptr_t, Reference> references_;
    std::uintptr_t nextReference_;
    std::unordered_map<const void*, Pin> pins_;
    std::vector<std::string> frames_;                  // the native methods that run, the innermost last
    std::vector<std::shared_ptr<JavaClass>> removed_;  // their methods may still be named by an identifier
    DWORD thread_ = GetCurrentThreadId();

    friend class FakeJava;
};

// The table with every function of ours in its place, and in every other place one that fails the test by
// name.
JNINativeInterface_ jniTable();

// Fills in the functions that take variable arguments.
void addCallFunctions(JNINativeInterface_& table);

template <class Content>
Content* JavaState::resolveAs(jobject reference, const char* function, const char* wanted) const {
    const JavaObject object = resolve(reference, function);
    if (!object) {
        if (reference == nullptr) {
            fail(std::string(function) + " was given null instead of " + wanted);
        }
        return nullptr;
    }
    Content* content = std::get_if<Content>(&object.content()->any);
    if (content == nullptr) {
        fail(std::string(function) + " was given an object of " + object.className() + " instead of " +
             wanted);
    }
    return content;
}

}  // namespace testbed
