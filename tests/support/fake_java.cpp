#include "fake_java.h"

#include <gtest/gtest.h>

#include "java_state.h"

namespace testbed {

namespace {

constexpr const char* listClass = "java/util/ArrayList";

}  // namespace

FakeJava::FakeJava() : state_(std::make_unique<JavaState>()) {}

FakeJava::~FakeJava() {
    if (state_->pending) {
        const Thrown thrown = takeException();
        state_->fail("the test ended with an exception pending that it did not take: " +
                     ::testing::PrintToString(thrown));
    }
}

JNIEnv* FakeJava::env() {
    return state_.get();
}

JavaObject FakeJava::string(std::wstring_view text) {
    return state_->make("java/lang/String", std::wstring(text));
}

JavaObject FakeJava::byteArray(std::vector<jbyte> content) {
    return state_->make("[B", std::move(content));
}

JavaObject FakeJava::stringArray(const std::vector<std::wstring>& texts) {
    ObjectArray array{"java/lang/String", {}};
    for (const std::wstring& text : texts) {
        array.elements.push_back(string(text));
    }
    return state_->make("[Ljava/lang/String;", std::move(array));
}

JavaObject FakeJava::directBuffer(void* address, jlong capacity) {
    return state_->make("java/nio/ByteBuffer", Buffer{address, capacity});
}

JavaObject FakeJava::object(const std::string& className) {
    return state_->make(className);
}

Exception FakeJava::exception(const std::string& className, std::wstring_view message) {
    return state_->makeException(className, message);
}

// Each list has a class of its own, whose methods know its elements.
JavaObject FakeJava::list(std::vector<JavaObject> elements) {
    const JavaObject made = state_->make(listClass, ObjectArray{"java/lang/Object", std::move(elements)});
    auto type = std::make_shared<JavaClass>();
    type->name = listClass;
    type->mirror = state_->make("java/lang/Class", type.get());
    const auto add = [&](const char* name, const char* signature, Body body) {
        type->methods.push_back(
            std::make_unique<JavaMethod>(JavaMethod{name, signature, std::move(body), type.get()}));
    };
    JavaContent* content = made.content();
    const auto items = [content]() -> std::vector<JavaObject>& {
        return std::get<ObjectArray>(content->any).elements;
    };
    add("add", "(Ljava/lang/Object;)Z", [items](const Arguments& arguments) -> Value {
        items().push_back(arguments[0].object());
        return true;
    });
    add("get", "(I)Ljava/lang/Object;", [items, this](const Arguments& arguments) -> Value {
        const auto index = static_cast<std::size_t>(arguments[0].number());
        if (index >= items().size()) {
            throw JavaThrow{exception("java/lang/IndexOutOfBoundsException", L"")};
        }
        return items()[index];
    });
    add("size", "()I", [items](const Arguments&) -> Value { return static_cast<jint>(items().size()); });
    content->type = std::move(type);
    return made;
}

std::vector<JavaObject>& FakeJava::listElements(const JavaObject& list) {
    return list.elements();
}

JavaObject FakeJava::self() {
    return state_->self;
}

void FakeJava::defineClass(const std::string& name) {
    state_->makeClass(name);
}

void FakeJava::defineException(const std::string& name) {
    state_->makeClass(name)->isThrowable = true;
    defineConstructor(name, "(Ljava/lang/String;)V");
}

void FakeJava::removeClass(const std::string& name) {
    const auto found = state_->classes.find(name);
    if (found == state_->classes.end()) {
        state_->fail("the test removes a class that is not there: " + name);
        return;
    }
    state_->removed_.push_back(found->second);
    state_->classes.erase(found);
}

void FakeJava::addMethod(const std::string& className, const std::string& name, const std::string& signature,
                         Body body) {
    const auto type = state_->makeClass(className);
    type->methods.push_back(
        std::make_unique<JavaMethod>(JavaMethod{name, signature, std::move(body), type.get()}));
}

void FakeJava::defineConstructor(const std::string& className, const std::string& signature) {
    addMethod(className, "<init>", signature, [](const Arguments&) { return Value(); });
}

void FakeJava::removeMethod(const std::string& className, const std::string& name,
                            const std::string& signature) {
    const auto type = state_->findClass(className);
    const auto erased = type == nullptr ? 0 : std::erase_if(type->methods, [&](const auto& method) {
        return method->name == name && method->signature == signature;
    });
    if (erased == 0) {
        state_->fail("the test removes a method that is not there: " + className + "." + name + signature);
    }
}

std::string FakeJava::newClassName() {
    return "test/Collector" + std::to_string(++state_->classNumber);
}

jobject FakeJava::reference(const JavaObject& object) {
    return state_->refer(object, ReferenceKind::argument, "the test");
}

JavaObject FakeJava::resolve(jobject reference) {
    return state_->resolve(reference, "the test");
}

bool FakeJava::isPending() const {
    return static_cast<bool>(state_->pending);
}

Exception FakeJava::takeExceptionObject() {
    return std::exchange(state_->pending, {});
}

Thrown FakeJava::takeException() {
    const Exception taken = takeExceptionObject();
    if (!taken) {
        return {};
    }
    const Arguments& arguments = taken.arguments();
    const bool hasMessage = !arguments.empty() && arguments.front().object();
    return {taken.className(), hasMessage ? arguments.front().text() : L""};
}

void FakeJava::failCall(const std::string& function, std::size_t k, const std::string& exceptionClass) {
    state_->failures[function][state_->counts[function] + k] = exceptionClass;
}

void FakeJava::expectUnreleased(const std::string& function, std::size_t count) {
    state_->expectedPins[function] += count;
}

void FakeJava::keepUnreleased(const std::string& function) {
    state_->keptPins.insert(function);
}

std::size_t FakeJava::count(const std::string& function) const {
    const auto found = state_->counts.find(function);
    return found == state_->counts.end() ? 0 : found->second;
}

const std::map<std::string, std::size_t>& FakeJava::counts() const {
    return state_->counts;
}

std::size_t FakeJava::liveReferences() const {
    return state_->live;
}

std::size_t FakeJava::peakReferences() const {
    return state_->peak;
}

const std::vector<ArrayRelease>& FakeJava::arrayReleases() const {
    return state_->arrayReleases;
}

const std::vector<StringRelease>& FakeJava::stringReleases() const {
    return state_->stringReleases;
}

void FakeJava::enterNative(const std::string& name) {
    state_->enterNative(name);
}

JavaObject FakeJava::leaveNative(jobject result) {
    return state_->leaveNative(result);
}

}  // namespace testbed
