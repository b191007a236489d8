// An in-memory Java environment that keeps account of all that a native method does with it. Its JNIEnv has
// exactly the functions that the library may call; any other fails the test by its name, and so does a call
// that a real virtual machine would not forgive. One belongs to the thread that made it.
#pragma once

#include <jni.h>

#include <concepts>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "java_values.h"

namespace testbed {

class JavaState;

// One Release...Elements that a native method made.
struct ArrayRelease {
    JavaObject array;
    jint mode;
};

// One Release...Chars of a string that a native method made, and whether it had wiped the characters.
struct StringRelease {
    JavaObject string;
    bool wiped;
};

class FakeJava {
public:
    FakeJava();
    FakeJava(const FakeJava&) = delete;
    FakeJava& operator=(const FakeJava&) = delete;
    // Fails the test when an exception is still pending.
    ~FakeJava();

    JNIEnv* env();

    // Objects. Any UTF-16 is a string, zeros and lone surrogates included.
    JavaObject string(std::wstring_view text);
    JavaObject byteArray(std::vector<jbyte> content);
    JavaObject stringArray(const std::vector<std::wstring>& texts);
    // A null address makes a buffer that has none, like one on the heap.
    JavaObject directBuffer(void* address, jlong capacity);
    JavaObject object(const std::string& className);
    Exception exception(const std::string& className, std::wstring_view message);
    // A java.util.ArrayList with add, get and size, and with these elements.
    JavaObject list(std::vector<JavaObject> elements = {});
    static std::vector<JavaObject>& listElements(const JavaObject& list);
    // The object that native methods are called on.
    JavaObject self();

    // Classes. The exceptions and records that the library makes are there from the start.
    void defineClass(const std::string& name);
    void defineException(const std::string& name);
    void removeClass(const std::string& name);
    // Makes the class when there is none. The body gets the decoded arguments, and throws JavaThrow to throw
    // in Java.
    template <std::invocable<const Arguments&> Function>
    void defineMethod(const std::string& className, const std::string& name, const std::string& signature,
                      Function body);
    void defineConstructor(const std::string& className, const std::string& signature);
    void removeMethod(const std::string& className, const std::string& name, const std::string& signature);

    // An object of a class of its own with that one method: a collector or a listener.
    template <std::invocable<const Arguments&> Function>
    JavaObject collector(const std::string& name, const std::string& signature, Function body) {
        const std::string className = newClassName();
        defineMethod(className, name, signature, std::move(body));
        return object(className);
    }

    // References of the kind that a native method gets as its arguments; they count for nobody.
    jobject reference(const JavaObject& object);
    JavaObject resolve(jobject reference);

    // The pending exception. Taking it clears it; with none pending the class name is empty.
    bool isPending() const;
    Thrown takeException();
    Exception takeExceptionObject();

    // From now on call number k of a JNI function fails: it returns null, and the exception is pending. What
    // hands out characters or elements leaves none, as in a virtual machine without memory.
    void failCall(const std::string& function, std::size_t k = 1,
                  const std::string& exceptionClass = "java/lang/OutOfMemoryError");

    // Declares that the native method that runs next keeps so many of the things that a function gave out: a
    // leak that is required.
    void expectUnreleased(const std::string& function, std::size_t count);

    // Declares the same of every native method from now on, however many it keeps.
    void keepUnreleased(const std::string& function);

    // Accounts.
    std::size_t count(const std::string& function) const;
    const std::map<std::string, std::size_t>& counts() const;
    std::size_t liveReferences() const;  // local references that native code made and has not deleted
    std::size_t peakReferences() const;  // the most of them at one time
    const std::vector<ArrayRelease>& arrayReleases() const;
    const std::vector<StringRelease>& stringReleases() const;

    // Begin and end of a native method: at the end nothing that it took may be left, but for its result.
    void enterNative(const std::string& name);
    JavaObject leaveNative(jobject result);

private:
    std::string newClassName();
    void addMethod(const std::string& className, const std::string& name, const std::string& signature,
                   Body body);

    std::unique_ptr<JavaState> state_;
};

template <std::invocable<const Arguments&> Function>
void FakeJava::defineMethod(const std::string& className, const std::string& name,
                            const std::string& signature, Function body) {
    if constexpr (std::is_void_v<std::invoke_result_t<Function&, const Arguments&>>) {
        addMethod(className, name, signature, [body = std::move(body)](const Arguments& arguments) mutable {
            body(arguments);
            return Value();
        });
    } else {
        addMethod(className, name, signature, std::move(body));
    }
}

}  // namespace testbed
