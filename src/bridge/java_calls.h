// Calls into Java: a collector's methods, and the records that are made for it.
//
// Texts among the arguments become Java strings for the length of the call; the first that there is no memory
// for ends it. Numbers go as jint, jlong and jbyte, flags as bool, references as they are or with their
// owner.
#pragma once

#include <jni.h>

#include <concepts>
#include <string_view>
#include <tuple>

#include "bridge/java_classes.h"
#include "bridge/java_refs.h"
#include "bridge/java_strings.h"

namespace winutil {

namespace java_call {

// A number or a reference.
template <class T>
class Value {
public:
    Value(JNIEnv*, T value) noexcept : value_(value) {}
    bool make() noexcept { return true; }
    T get() const noexcept { return value_; }

private:
    T value_;
};

// A text, whose string is made when its turn comes.
class Text {
public:
    Text(JNIEnv* env, std::wstring_view text) noexcept : env_(env), text_(text) {}
    bool make() noexcept {
        string_ = LocalRef(env_, newJavaString(env_, text_));
        return static_cast<bool>(string_);
    }
    jstring get() const noexcept { return string_.get(); }

private:
    JNIEnv* env_;
    std::wstring_view text_;
    LocalRef<jstring> string_;
};

template <class T>
concept Passable = std::same_as<T, jint> || std::same_as<T, jlong> || std::same_as<T, jbyte> ||
                   std::convertible_to<T, jobject>;

template <Passable T>
Value<T> argument(JNIEnv* env, T value) noexcept {
    return {env, value};
}
template <class T>
Value<T> argument(JNIEnv* env, const LocalRef<T>& reference) noexcept {
    return {env, reference.get()};
}
inline Value<jboolean> argument(JNIEnv* env, std::same_as<bool> auto flag) noexcept {
    return {env, static_cast<jboolean>(flag ? JNI_TRUE : JNI_FALSE)};
}
inline Text argument(JNIEnv* env, std::wstring_view text) noexcept {
    return {env, text};
}

// Makes the arguments in their order and calls `call` with them. Returns false when one could not be made.
template <class Call, class... Values>
bool withArguments([[maybe_unused]] JNIEnv* env, Call call, const Values&... values) noexcept {
    auto arguments = std::make_tuple(argument(env, values)...);
    const bool made = std::apply([](auto&... each) noexcept { return (each.make() && ...); }, arguments);
    if (made) {
        std::apply([&](const auto&... each) noexcept { call(each.get()...); }, arguments);
    }
    return made;
}

}  // namespace java_call

// Calls a void method. Returns false when a Java exception is pending.
template <class... Values>
bool callVoid(JNIEnv* env, jobject object, jmethodID method, const Values&... values) noexcept {
    return java_call::withArguments(
               env, [&](auto... arguments) noexcept { env->CallVoidMethod(object, method, arguments...); },
               values...) &&
           !exceptionPending(env);
}

// Hands an item to a collector by its method of that name; one without it is passed over. Returns false when
// a Java exception is pending.
template <class... Values>
bool callCollector(JNIEnv* env, jobject collector, const JavaMethod& method,
                   const Values&... values) noexcept {
    const jmethodID found = findCollectorMethod(env, collector, method);
    return found == nullptr || callVoid(env, collector, found, values...);
}

// Adds an item, a text or an object, to a Java collection; what `add` answers is not looked at. Returns false
// when a Java exception is pending.
template <class Item>
bool addItem(JNIEnv* env, jobject collection, jmethodID add, const Item& item) noexcept {
    return java_call::withArguments(
               env, [&](auto argument) noexcept { env->CallBooleanMethod(collection, add, argument); },
               item) &&
           !exceptionPending(env);
}

// Returns a new object; none with a Java exception pending.
template <class... Values>
LocalRef<> newObject(JNIEnv* env, jclass type, jmethodID constructor, const Values&... values) noexcept {
    LocalRef<> object;
    java_call::withArguments(
        env,
        [&](auto... arguments) noexcept {
            object = LocalRef(env, env->NewObject(type, constructor, arguments...));
        },
        values...);
    return object;
}

}  // namespace winutil
