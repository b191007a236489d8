#include "java.h"

#include <cstdarg>
#include <cstring>

#include "finding.h"

namespace fuzz {

// The functions of the table.
struct Java::Functions {
    static jclass JNICALL findClass(JNIEnv* env, const char*) { return of(env).make<jclass>(); }
    static jclass JNICALL getObjectClass(JNIEnv* env, jobject) { return of(env).make<jclass>(); }
    // A method is known by its signature.
    static jmethodID JNICALL getMethod(JNIEnv*, jclass, const char*, const char* signature) {
        return reinterpret_cast<jmethodID>(const_cast<char*>(signature));
    }
    static jstring JNICALL newString(JNIEnv* env, const jchar* characters, jsize length) {
        return of(env).make<jstring>(std::as_bytes(std::span(characters, static_cast<std::size_t>(length))));
    }
    static jstring JNICALL newStringUtf(JNIEnv* env, const char* text) {
        return of(env).make<jstring>(std::as_bytes(std::span(text, std::strlen(text))));
    }
    static jbyteArray JNICALL newByteArray(JNIEnv* env, jsize length) {
        const std::vector<std::byte> zeros(static_cast<std::size_t>(length));
        return of(env).make<jbyteArray>(zeros);
    }
    static void JNICALL setBytes(JNIEnv*, jbyteArray array, jsize start, jsize length, const jbyte* bytes) {
        std::vector<std::byte>& elements = reinterpret_cast<Object*>(array)->bytes;
        require(start == 0 && static_cast<std::size_t>(length) == elements.size(),
                "not all of an array is written");
        if (length > 0) {
            std::memcpy(elements.data(), bytes, elements.size());
        }
    }
    static jobjectArray JNICALL newArray(JNIEnv* env, jsize length, jclass, jobject) {
        const std::vector<std::byte> zeros(static_cast<std::size_t>(length));
        return of(env).make<jobjectArray>(zeros);
    }
    static void JNICALL setElement(JNIEnv* env, jobjectArray array, jsize index, jobject element) {
        require(static_cast<std::size_t>(index) < reinterpret_cast<Object*>(array)->bytes.size(),
                "an element is written outside its array");
        of(env).add(reinterpret_cast<Object*>(element)->bytes);
    }
    static void JNICALL callVoid(JNIEnv* env, jobject, jmethodID method, va_list arguments) {
        va_list copy;
        va_copy(copy, arguments);
        of(env).addArguments(reinterpret_cast<const char*>(method), copy);
        va_end(copy);
    }
    static jboolean JNICALL callBoolean(JNIEnv* env, jobject object, jmethodID method, va_list arguments) {
        callVoid(env, object, method, arguments);
        return JNI_TRUE;
    }
    static jthrowable JNICALL exceptionOccurred(JNIEnv*) { return nullptr; }
    static void JNICALL exceptionClear(JNIEnv*) {}
    static void JNICALL deleteReference(JNIEnv* env, jobject reference) {
        delete reinterpret_cast<Object*>(reference);
        --of(env).references_;
    }
};

Java::Java() {
    table_.FindClass = Functions::findClass;
    table_.GetObjectClass = Functions::getObjectClass;
    table_.GetMethodID = Functions::getMethod;
    table_.NewString = Functions::newString;
    table_.NewStringUTF = Functions::newStringUtf;
    table_.NewByteArray = Functions::newByteArray;
    table_.SetByteArrayRegion = Functions::setBytes;
    table_.NewObjectArray = Functions::newArray;
    table_.SetObjectArrayElement = Functions::setElement;
    table_.CallVoidMethodV = Functions::callVoid;
    table_.CallBooleanMethodV = Functions::callBoolean;
    table_.ExceptionOccurred = Functions::exceptionOccurred;
    table_.ExceptionClear = Functions::exceptionClear;
    table_.DeleteLocalRef = Functions::deleteReference;
    environment_.functions = &table_;
    environment_.java = this;
}

Java::~Java() {
    require(references_ == 0, "a local reference is left behind");
}

jobject Java::collector() {
    static Object collector;
    return reinterpret_cast<jobject>(&collector);
}

template <class Reference>
Reference Java::make(std::span<const std::byte> bytes) {
    ++references_;
    return reinterpret_cast<Reference>(new Object{{bytes.begin(), bytes.end()}});
}

void Java::add(std::span<const std::byte> bytes) {
    for (const std::byte byte : bytes) {
        digest_ = (digest_ ^ static_cast<std::uint64_t>(byte)) * 0x100000001B3;
    }
    digest_ = (digest_ ^ bytes.size()) * 0x100000001B3;
}

void Java::addArguments(const char* signature, va_list& arguments) {
    for (const char* type = signature + 1; *type != ')'; ++type) {
        if (*type == 'J') {
            const auto number = va_arg(arguments, jlong);
            add(std::as_bytes(std::span(&number, 1)));
        } else if (*type != 'L' && *type != '[') {
            const auto number = va_arg(arguments, jint);
            add(std::as_bytes(std::span(&number, 1)));
        } else {
            const auto* object = reinterpret_cast<Object*>(va_arg(arguments, jobject));
            require(object != nullptr, "null is handed to a collector");
            add(object->bytes);
            type += std::strspn(type, "[");
            type = *type == 'L' ? std::strchr(type, ';') : type;
        }
    }
}

}  // namespace fuzz
