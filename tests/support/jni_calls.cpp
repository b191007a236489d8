// The functions of the in-memory Java environment that call methods and constructors, each in its three
// forms: with variable arguments, with a va_list, and with an array.
#include <cstdarg>
#include <optional>
#include <type_traits>

#include "java_state.h"

namespace testbed {

namespace {

// Where the arguments of a call come from: promoted, as variable arguments are, or in an array of unions.
class VariableSource {
public:
    explicit VariableSource(va_list list) { va_copy(list_, list); }
    VariableSource(const VariableSource&) = delete;
    VariableSource& operator=(const VariableSource&) = delete;
    ~VariableSource() { va_end(list_); }

    jint narrow(char) { return va_arg(list_, int); }
    jlong wide() { return va_arg(list_, jlong); }
    double real(char) { return va_arg(list_, double); }
    jobject object() { return va_arg(list_, jobject); }

private:
    va_list list_;
};

class ArraySource {
public:
    explicit ArraySource(const jvalue* values) : next_(values) {}

    jint narrow(char type) {
        const jvalue value = *next_++;
        switch (type) {
            case 'Z':
                return value.z;
            case 'B':
                return value.b;
            case 'C':
                return value.c;
            case 'S':
                return value.s;
            default:
                return value.i;
        }
    }
    jlong wide() { return next_++->j; }
    double real(char type) {
        const jvalue value = *next_++;
        return type == 'F' ? static_cast<double>(value.f) : value.d;
    }
    jobject object() { return next_++->l; }

private:
    const jvalue* next_;
};

bool mayBePassedAs(const JavaObject& object, const std::string& descriptor) {
    if (!object || descriptor == "Ljava/lang/Object;") {
        return true;
    }
    const std::string name = object.className();
    return descriptor == (name.front() == '[' ? name : "L" + name + ";") ||
           (descriptor == "[Ljava/lang/Object;" && name.starts_with("[L"));
}

template <class Source>
Value decodeOne(JavaState& java, const std::string& descriptor, Source& source, const char* function) {
    const char type = descriptor.front();
    switch (type) {
        case 'Z': {
            const jint value = source.narrow(type);
            if (value != JNI_TRUE && value != JNI_FALSE) {
                java.fail(std::string(function) + " was given a boolean of " + std::to_string(value));
            }
            return value != JNI_FALSE;
        }
        case 'B':
            return static_cast<jbyte>(source.narrow(type));
        case 'C':
            return static_cast<jchar>(source.narrow(type));
        case 'S':
            return static_cast<jshort>(source.narrow(type));
        case 'I':
            return source.narrow(type);
        case 'J':
            return source.wide();
        case 'F':
            return static_cast<float>(source.real(type));
        case 'D':
            return source.real(type);
        default: {
            const JavaObject object = java.resolve(source.object(), function);
            if (!mayBePassedAs(object, descriptor)) {
                java.fail(std::string(function) + " was given an object of " + object.className() +
                          " where the signature says " + descriptor);
            }
            return object;
        }
    }
}

template <class Source>
Arguments decode(JavaState& java, const JavaMethod& method, Source& source, const char* function) {
    Arguments arguments;
    for (const std::string& descriptor : parseSignature(method.signature).parameters) {
        arguments.push_back(decodeOne(java, descriptor, source, function));
    }
    return arguments;
}

const JavaMethod* methodOf(JavaState& java, jmethodID identifier, const char* function) {
    const auto* method = reinterpret_cast<const JavaMethod*>(identifier);
    if (!java.methodIds.contains(method)) {
        java.fail(std::string(function) + " was given what is no method");
        return nullptr;
    }
    return method;
}

template <class Source>
jobject newObject(JNIEnv* env, jclass type, jmethodID identifier, Source&& source) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("NewObject")) {
        return nullptr;
    }
    JavaClass** found = java.resolveAs<JavaClass*>(type, "NewObject", "a class");
    const JavaMethod* constructor = methodOf(java, identifier, "NewObject");
    if (found == nullptr || constructor == nullptr) {
        return nullptr;
    }
    if (constructor->owner != *found || constructor->name != "<init>") {
        java.fail("NewObject was given what is no constructor of " + (*found)->name);
        return nullptr;
    }
    const Arguments arguments = decode(java, *constructor, source, "NewObject");
    java.invoke(*constructor, arguments);
    if (java.pending) {
        return nullptr;
    }
    const JavaObject made = java.make((*found)->name);
    made.content()->constructor = constructor->signature;
    made.content()->arguments = arguments;
    return java.newLocal<jobject>(made, "NewObject");
}

// The result, or nothing when the call could not be made or threw.
template <class Source>
std::optional<Value> callMethod(JNIEnv* env, const char* function, jobject reference, jmethodID identifier,
                                const std::string& resultType, Source& source) {
    JavaState& java = JavaState::of(env);
    if (!java.enter(function)) {
        return std::nullopt;
    }
    const JavaObject object = java.resolve(reference, function);
    const JavaMethod* method = methodOf(java, identifier, function);
    if (!object || method == nullptr) {
        java.fail(std::string(function) + " was given no object or no method");
        return std::nullopt;
    }
    if (method->owner != object.content()->type.get()) {
        java.fail(std::string(function) + " was given a method of " + method->owner->name +
                  " for an object of " + object.className());
        return std::nullopt;
    }
    const std::string declared = parseSignature(method->signature).result;
    if (declared.substr(0, 1) != resultType && !(resultType == "L" && declared.front() == '[')) {
        java.fail(std::string(function) + " calls " + method->name + ", whose result is " + declared);
    }
    const Value result = java.invoke(*method, decode(java, *method, source, function));
    if (java.pending) {
        return std::nullopt;
    }
    return result;
}

template <class Result>
Result convert(JNIEnv* env, const char* function, const Value& value) {
    if constexpr (std::is_same_v<Result, jboolean>) {
        return value.boolean() ? JNI_TRUE : JNI_FALSE;
    } else if constexpr (std::is_same_v<Result, jint>) {
        return static_cast<jint>(value.number());
    } else if constexpr (std::is_same_v<Result, jobject>) {
        return JavaState::of(env).newLocal<jobject>(value.object(), function);
    }
}

// Names of one family of functions: the type of the result in a signature, and the function itself.
struct VoidCall {
    using Result = void;
    static constexpr const char* function = "CallVoidMethod";
    static constexpr const char* resultType = "V";
};
struct BooleanCall {
    using Result = jboolean;
    static constexpr const char* function = "CallBooleanMethod";
    static constexpr const char* resultType = "Z";
};
struct IntCall {
    using Result = jint;
    static constexpr const char* function = "CallIntMethod";
    static constexpr const char* resultType = "I";
};
struct ObjectCall {
    using Result = jobject;
    static constexpr const char* function = "CallObjectMethod";
    static constexpr const char* resultType = "L";
};

template <class Call, class Source>
typename Call::Result run(JNIEnv* env, jobject object, jmethodID method, Source&& source) {
    using Result = typename Call::Result;
    const auto value = callMethod(env, Call::function, object, method, Call::resultType, source);
    if constexpr (!std::is_void_v<Result>) {
        return value ? convert<Result>(env, Call::function, *value) : Result();
    }
}

template <class Call>
typename Call::Result JNICALL plainForm(JNIEnv* env, jobject object, jmethodID method, ...) {
    va_list list;
    va_start(list, method);
    VariableSource source(list);
    va_end(list);
    return run<Call>(env, object, method, source);
}

template <class Call>
typename Call::Result JNICALL listForm(JNIEnv* env, jobject object, jmethodID method, va_list list) {
    return run<Call>(env, object, method, VariableSource(list));
}

template <class Call>
typename Call::Result JNICALL arrayForm(JNIEnv* env, jobject object, jmethodID method, const jvalue* values) {
    return run<Call>(env, object, method, ArraySource(values));
}

jobject JNICALL newObjectPlain(JNIEnv* env, jclass type, jmethodID constructor, ...) {
    va_list list;
    va_start(list, constructor);
    VariableSource source(list);
    va_end(list);
    return newObject(env, type, constructor, source);
}

jobject JNICALL newObjectList(JNIEnv* env, jclass type, jmethodID constructor, va_list list) {
    return newObject(env, type, constructor, VariableSource(list));
}

jobject JNICALL newObjectArray(JNIEnv* env, jclass type, jmethodID constructor, const jvalue* values) {
    return newObject(env, type, constructor, ArraySource(values));
}

}  // namespace

void addCallFunctions(JNINativeInterface_& table) {
    table.NewObject = newObjectPlain;
    table.NewObjectV = newObjectList;
    table.NewObjectA = newObjectArray;
    table.CallVoidMethod = plainForm<VoidCall>;
    table.CallVoidMethodV = listForm<VoidCall>;
    table.CallVoidMethodA = arrayForm<VoidCall>;
    table.CallBooleanMethod = plainForm<BooleanCall>;
    table.CallBooleanMethodV = listForm<BooleanCall>;
    table.CallBooleanMethodA = arrayForm<BooleanCall>;
    table.CallIntMethod = plainForm<IntCall>;
    table.CallIntMethodV = listForm<IntCall>;
    table.CallIntMethodA = arrayForm<IntCall>;
    table.CallObjectMethod = plainForm<ObjectCall>;
    table.CallObjectMethodV = listForm<ObjectCall>;
    table.CallObjectMethodA = arrayForm<ObjectCall>;
}

}  // namespace testbed
