#include "java_values.h"

#include <ostream>
#include <stdexcept>
#include <type_traits>

#include "text.h"

namespace testbed {

namespace {

// Tests look into what natives made; a wrong kind ends the test with a sentence, not with a crash.
template <class T>
T& contentAs(const JavaObject& object, const char* wanted) {
    if (!object) {
        throw std::logic_error(std::string("null where ") + wanted + " is expected");
    }
    T* content = std::get_if<T>(&object.content()->any);
    if (content == nullptr) {
        throw std::logic_error("an object of " + object.className() + " where " + wanted + " is expected");
    }
    return *content;
}

}  // namespace

std::string JavaObject::className() const {
    return content_ ? content_->type->name : "null";
}

const std::wstring& JavaObject::text() const {
    if (content_ && content_->type->isThrowable && !content_->arguments.empty()) {
        return content_->arguments.front().object().text();
    }
    return contentAs<std::wstring>(*this, "a string");
}

std::vector<jbyte>& JavaObject::bytes() const {
    return contentAs<std::vector<jbyte>>(*this, "a byte array");
}

std::vector<JavaObject>& JavaObject::elements() const {
    return contentAs<ObjectArray>(*this, "an object array").elements;
}

std::vector<std::wstring> JavaObject::texts() const {
    std::vector<std::wstring> found;
    for (const JavaObject& element : elements()) {
        found.push_back(element.text());
    }
    return found;
}

const std::vector<Value>& JavaObject::arguments() const {
    if (!content_) {
        throw std::logic_error("null where a record is expected");
    }
    return content_->arguments;
}

const std::string& JavaObject::constructor() const {
    if (!content_) {
        throw std::logic_error("null where a record is expected");
    }
    return content_->constructor;
}

JavaObject Value::object() const {
    if (const auto* object = std::get_if<JavaObject>(&any_)) {
        return *object;
    }
    throw std::logic_error("a number where an object is expected");
}

bool Value::boolean() const {
    if (const bool* value = std::get_if<bool>(&any_)) {
        return *value;
    }
    throw std::logic_error("no boolean where one is expected");
}

jlong Value::number() const {
    return std::visit(
        [](const auto& value) -> jlong {
            using T = std::decay_t<decltype(value)>;
            if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
                return value;
            } else {
                throw std::logic_error("no whole number where one is expected");
            }
        },
        any_);
}

const JavaMethod* JavaClass::find(const std::string& methodName, const std::string& signature) const {
    for (const auto& method : methods) {
        if (method->name == methodName && method->signature == signature) {
            return method.get();
        }
    }
    return nullptr;
}

void PrintTo(const Thrown& thrown, std::ostream* stream) {
    *stream << thrown.className << ": \"" << toUtf8(thrown.message) << '"';
}

Signature parseSignature(const std::string& signature) {
    Signature parsed;
    if (signature.empty() || signature.front() != '(') {
        throw std::invalid_argument("not a method signature: " + signature);
    }
    std::size_t position = 1;
    const auto next = [&] {
        const std::size_t start = position;
        while (signature.at(position) == '[') {
            ++position;
        }
        position = signature.at(position) == 'L' ? signature.find(';', position) + 1 : position + 1;
        return signature.substr(start, position - start);
    };
    while (signature.at(position) != ')') {
        parsed.parameters.push_back(next());
    }
    ++position;
    parsed.result = next();
    return parsed;
}

}  // namespace testbed
