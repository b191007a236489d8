// The things that live in the in-memory Java: objects of a few kinds, and the values that calls pass.
#pragma once

#include <jni.h>

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace testbed {

struct JavaClass;
struct JavaContent;
class Value;

// Something on the Java heap, or null. Copies mean the same thing.
class JavaObject {
public:
    JavaObject() = default;
    JavaObject(std::nullptr_t) {}
    explicit JavaObject(std::shared_ptr<JavaContent> content) : content_(std::move(content)) {}

    explicit operator bool() const { return content_ != nullptr; }
    // Identity, as == in Java.
    bool operator==(const JavaObject&) const = default;

    std::string className() const;

    // The characters of a string; of an exception, its message.
    const std::wstring& text() const;

    // The content of a byte array.
    std::vector<jbyte>& bytes() const;

    // The elements of an object array.
    std::vector<JavaObject>& elements() const;
    // The elements of an array of strings.
    std::vector<std::wstring> texts() const;

    // What the native side passed to the constructor, and to which one.
    const std::vector<Value>& arguments() const;
    const std::string& constructor() const;

    JavaContent* content() const { return content_.get(); }

private:
    std::shared_ptr<JavaContent> content_;
};

using Exception = JavaObject;

// One value that crosses in a call; null and void are the empty object.
class Value {
public:
    using Any = std::variant<JavaObject, bool, jbyte, jchar, jshort, jint, jlong, float, double>;

    Value() = default;
    Value(std::nullptr_t) {}
    template <class T>
        requires std::is_constructible_v<Any, T>
    Value(T value) : any_(std::move(value)) {}

    const Any& any() const { return any_; }
    JavaObject object() const;
    bool boolean() const;
    // Any whole number.
    jlong number() const;
    std::wstring text() const { return object().text(); }

private:
    Any any_;
};

using Arguments = std::vector<Value>;
using Body = std::function<Value(const Arguments&)>;

struct JavaMethod {
    std::string name;
    std::string signature;
    Body body;
    const JavaClass* owner = nullptr;
};

struct JavaClass {
    std::string name;
    bool isThrowable = false;
    std::vector<std::unique_ptr<JavaMethod>> methods;  // "<init>" among them
    JavaObject mirror;                                 // the java.lang.Class object

    const JavaMethod* find(const std::string& methodName, const std::string& signature) const;
};

struct Buffer {
    void* address;
    jlong capacity;
};

struct ObjectArray {
    std::string elementClass;
    std::vector<JavaObject> elements;
};

// What an object holds besides its class.
struct JavaContent {
    // A plain object holds nothing; the mirror of a class holds the class.
    using Any =
        std::variant<std::monostate, std::wstring, std::vector<jbyte>, ObjectArray, Buffer, JavaClass*>;

    std::shared_ptr<JavaClass> type;
    Any any;
    std::string constructor;
    Arguments arguments;
};

// An exception as tests compare it.
struct Thrown {
    std::string className;
    std::wstring message;
    bool operator==(const Thrown&) const = default;
};
void PrintTo(const Thrown& thrown, std::ostream* stream);

// Thrown by the body of a Java method: the Java exception that the native side then finds pending.
struct JavaThrow {
    JavaObject exception;
};

// The parameter types of a method signature, each in descriptor form, and its result type.
struct Signature {
    std::vector<std::string> parameters;
    std::string result;
};
Signature parseSignature(const std::string& signature);

}  // namespace testbed
