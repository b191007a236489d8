// The functions of the in-memory Java environment, apart from those with variable arguments.
#include <cstddef>
#include <cstring>
#include <span>
#include <utility>

#include "java_state.h"
#include "jni_function_names.h"
#include "modified_utf8.h"

namespace testbed {

namespace {

constexpr std::size_t functionCount = sizeof(JNINativeInterface_) / sizeof(void*);

const char* functionName(std::size_t index) {
#define NAME_AT(function)                                                   \
    if (index == offsetof(JNINativeInterface_, function) / sizeof(void*)) { \
        return #function;                                                   \
    }
    JNI_FUNCTIONS(NAME_AT)
#undef NAME_AT
    return "a reserved function";
}

// Stands in the place of every function that the library has no business with.
template <std::size_t index>
void* JNICALL unlisted(JNIEnv* env) {
    JavaState::of(env).fail(std::string(functionName(index)) +
                            " is not among the functions that the library may call");
    return nullptr;
}

template <std::size_t... indexes>
void fillUnlisted(void** table, std::index_sequence<indexes...>) {
    ((table[indexes] = reinterpret_cast<void*>(&unlisted<indexes>)), ...);
}

std::wstring_view wide(const jchar* chars, jsize length) {
    static_assert(sizeof(wchar_t) == sizeof(jchar));
    return {reinterpret_cast<const wchar_t*>(chars), static_cast<std::size_t>(length)};
}

// Classes and references

jclass JNICALL findClass(JNIEnv* env, const char* name) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("FindClass")) {
        return nullptr;
    }
    const auto found = java.findClass(name);
    if (!found) {
        const std::string bytes = name;
        java.throwNew("java/lang/NoClassDefFoundError", fromModifiedUtf8(bytes));
        return nullptr;
    }
    return java.newLocal<jclass>(found->mirror, "FindClass");
}

jclass JNICALL getObjectClass(JNIEnv* env, jobject reference) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("GetObjectClass")) {
        return nullptr;
    }
    const JavaObject object = java.resolve(reference, "GetObjectClass");
    if (!object) {
        java.fail("GetObjectClass was given no object");
        return nullptr;
    }
    return java.newLocal<jclass>(object.content()->type->mirror, "GetObjectClass");
}

jmethodID JNICALL getMethodId(JNIEnv* env, jclass type, const char* name, const char* signature) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("GetMethodID")) {
        return nullptr;
    }
    JavaClass** found = java.resolveAs<JavaClass*>(type, "GetMethodID", "a class");
    if (found == nullptr) {
        return nullptr;
    }
    const JavaMethod* method = (*found)->find(name, signature);
    if (method == nullptr) {
        java.throwNew("java/lang/NoSuchMethodError", fromModifiedUtf8(name));
        return nullptr;
    }
    java.methodIds.insert(method);
    return reinterpret_cast<jmethodID>(const_cast<JavaMethod*>(method));
}

void JNICALL deleteLocalRef(JNIEnv* env, jobject reference) {
    JavaState& java = JavaState::of(env);
    java.enter("DeleteLocalRef", WhilePending::legal);
    java.deleteLocal(reference);
}

// Nothing makes global references, so nothing can have one to delete.
void JNICALL deleteGlobalRef(JNIEnv* env, jobject) {
    JavaState& java = JavaState::of(env);
    java.enter("DeleteGlobalRef", WhilePending::legal);
    java.fail("DeleteGlobalRef was given what is no global reference");
}

// Exceptions

jint JNICALL throwObject(JNIEnv* env, jthrowable reference) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("Throw")) {
        return JNI_ERR;
    }
    const JavaObject object = java.resolve(reference, "Throw");
    if (!object || !object.content()->type->isThrowable) {
        java.fail("Throw was given what is no exception: " + object.className());
        return JNI_ERR;
    }
    java.pending = object;
    return JNI_OK;
}

jthrowable JNICALL exceptionOccurred(JNIEnv* env) {
    JavaState& java = JavaState::of(env);
    java.enter("ExceptionOccurred", WhilePending::legal);
    return java.newLocal<jthrowable>(java.pending, "ExceptionOccurred");
}

void JNICALL exceptionClear(JNIEnv* env) {
    JavaState& java = JavaState::of(env);
    java.enter("ExceptionClear", WhilePending::legal);
    java.pending = {};
}

// Strings

jstring JNICALL newString(JNIEnv* env, const jchar* chars, jsize length) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("NewString")) {
        return nullptr;
    }
    if (length < 0 || chars == nullptr) {
        java.fail("NewString was given no characters");
        return nullptr;
    }
    return java.newLocal<jstring>(java.make("java/lang/String", std::wstring(wide(chars, length))),
                                  "NewString");
}

jsize JNICALL getStringLength(JNIEnv* env, jstring string) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("GetStringLength")) {
        return 0;
    }
    const auto* text = java.resolveAs<std::wstring>(string, "GetStringLength", "a string");
    return text == nullptr ? 0 : static_cast<jsize>(text->size());
}

// One unit more than the string has, and not a zero: native code that writes the terminator there may do so,
// and native code that relies on finding one is wrong. Whatever lies behind that unit faults.
constexpr wchar_t unitBehindString = 0x5A5A;

const jchar* JNICALL getStringChars(JNIEnv* env, jstring string, jboolean* isCopy) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("GetStringChars")) {
        return nullptr;
    }
    const auto* text = java.resolveAs<std::wstring>(string, "GetStringChars", "a string");
    if (text == nullptr) {
        return nullptr;
    }
    if (isCopy != nullptr) {
        *isCopy = JNI_TRUE;
    }
    const std::wstring units = *text + unitBehindString;
    GuardedBuffer buffer(std::as_bytes(std::span(units)), "the characters of a Java string");
    return static_cast<const jchar*>(
        java.pin(java.resolve(string, "GetStringChars"), std::move(buffer), "GetStringChars"));
}

void JNICALL releaseStringChars(JNIEnv* env, jstring string, const jchar* chars) {
    JavaState& java = JavaState::of(env);
    java.enter("ReleaseStringChars", WhilePending::legal);
    if (const auto pin = java.unpin(string, chars, "GetStringChars", "ReleaseStringChars")) {
        java.noteRelease(*pin, std::as_bytes(std::span(pin->object.text())));
    }
}

jstring JNICALL newStringUtf(JNIEnv* env, const char* bytes) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("NewStringUTF") || bytes == nullptr) {
        return nullptr;
    }
    return java.newLocal<jstring>(java.make("java/lang/String", fromModifiedUtf8(bytes)), "NewStringUTF");
}

const char* JNICALL getStringUtfChars(JNIEnv* env, jstring string, jboolean* isCopy) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("GetStringUTFChars")) {
        return nullptr;
    }
    const auto* text = java.resolveAs<std::wstring>(string, "GetStringUTFChars", "a string");
    if (text == nullptr) {
        return nullptr;
    }
    if (isCopy != nullptr) {
        *isCopy = JNI_TRUE;
    }
    const std::string bytes = toModifiedUtf8(*text);
    const std::span withTerminator(bytes.c_str(), bytes.size() + 1);
    GuardedBuffer buffer(std::as_bytes(withTerminator), "the narrow characters of a Java string");
    return static_cast<const char*>(
        java.pin(java.resolve(string, "GetStringUTFChars"), std::move(buffer), "GetStringUTFChars"));
}

void JNICALL releaseStringUtfChars(JNIEnv* env, jstring string, const char* bytes) {
    JavaState& java = JavaState::of(env);
    java.enter("ReleaseStringUTFChars", WhilePending::legal);
    if (const auto pin = java.unpin(string, bytes, "GetStringUTFChars", "ReleaseStringUTFChars")) {
        const std::string given = toModifiedUtf8(pin->object.text());
        java.noteRelease(*pin, std::as_bytes(std::span(given)));
    }
}

// Arrays

jobjectArray JNICALL newObjectArray(JNIEnv* env, jsize length, jclass elementType, jobject initial) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("NewObjectArray")) {
        return nullptr;
    }
    JavaClass** type = java.resolveAs<JavaClass*>(elementType, "NewObjectArray", "a class");
    if (type == nullptr || length < 0) {
        java.fail("NewObjectArray was given no class or a negative length");
        return nullptr;
    }
    const JavaObject element = java.resolve(initial, "NewObjectArray");
    ObjectArray array{(*type)->name, std::vector<JavaObject>(static_cast<std::size_t>(length), element)};
    return java.newLocal<jobjectArray>(java.make("[L" + (*type)->name + ";", std::move(array)),
                                       "NewObjectArray");
}

void JNICALL setObjectArrayElement(JNIEnv* env, jobjectArray reference, jsize index, jobject value) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("SetObjectArrayElement")) {
        return;
    }
    auto* array = java.resolveAs<ObjectArray>(reference, "SetObjectArrayElement", "an object array");
    const JavaObject element = java.resolve(value, "SetObjectArrayElement");
    if (array == nullptr) {
        return;
    }
    if (index < 0 || static_cast<std::size_t>(index) >= array->elements.size()) {
        java.throwNew("java/lang/ArrayIndexOutOfBoundsException", std::to_wstring(index));
    } else if (element && array->elementClass != "java/lang/Object" &&
               element.className() != array->elementClass) {
        java.throwNew("java/lang/ArrayStoreException", fromModifiedUtf8(element.className()));
    } else {
        array->elements[static_cast<std::size_t>(index)] = element;
    }
}

jbyteArray JNICALL newByteArray(JNIEnv* env, jsize length) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("NewByteArray")) {
        return nullptr;
    }
    if (length < 0) {
        java.throwNew("java/lang/NegativeArraySizeException", std::to_wstring(length));
        return nullptr;
    }
    std::vector<jbyte> content(static_cast<std::size_t>(length));
    return java.newLocal<jbyteArray>(java.make("[B", std::move(content)), "NewByteArray");
}

void JNICALL setByteArrayRegion(JNIEnv* env, jbyteArray reference, jsize start, jsize length,
                                const jbyte* source) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("SetByteArrayRegion")) {
        return;
    }
    auto* content = java.resolveAs<std::vector<jbyte>>(reference, "SetByteArrayRegion", "a byte array");
    if (content == nullptr) {
        return;
    }
    const auto size = static_cast<jlong>(content->size());
    if (start < 0 || length < 0 || static_cast<jlong>(start) + length > size) {
        java.throwNew("java/lang/ArrayIndexOutOfBoundsException", L"region beyond the array");
    } else if (length > 0) {
        std::memcpy(content->data() + start, source, static_cast<std::size_t>(length));
    }
}

jbyte* JNICALL getByteArrayElements(JNIEnv* env, jbyteArray reference, jboolean* isCopy) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("GetByteArrayElements")) {
        return nullptr;
    }
    const auto* content =
        java.resolveAs<std::vector<jbyte>>(reference, "GetByteArrayElements", "a byte array");
    if (content == nullptr) {
        return nullptr;
    }
    if (isCopy != nullptr) {
        *isCopy = JNI_TRUE;
    }
    GuardedBuffer buffer(std::as_bytes(std::span(*content)), "the elements of a Java byte array");
    return static_cast<jbyte*>(
        java.pin(java.resolve(reference, "GetByteArrayElements"), std::move(buffer), "GetByteArrayElements"));
}

void JNICALL releaseByteArrayElements(JNIEnv* env, jbyteArray reference, jbyte* elements, jint mode) {
    JavaState& java = JavaState::of(env);
    java.enter("ReleaseByteArrayElements", WhilePending::legal);
    if (mode != 0 && mode != JNI_COMMIT && mode != JNI_ABORT) {
        java.fail("ReleaseByteArrayElements was given mode " + std::to_string(mode));
        mode = 0;
    }
    auto pin = java.unpin(reference, elements, "GetByteArrayElements", "ReleaseByteArrayElements");
    if (!pin) {
        return;
    }
    java.arrayReleases.push_back({pin->object, mode});
    // A virtual machine leaves whatever it likes as the thread's last error.
    SetLastError(ERROR_INVALID_FUNCTION);
    std::vector<jbyte>& content = pin->object.bytes();
    if (mode != JNI_ABORT && !content.empty()) {
        std::memcpy(content.data(), pin->buffer.data(), content.size());
    }
    if (mode == JNI_COMMIT) {
        const JavaObject object = pin->object;
        java.pin(object, std::move(pin->buffer), "GetByteArrayElements");
    }
}

void* JNICALL getDirectBufferAddress(JNIEnv* env, jobject reference) {
    JavaState& java = JavaState::of(env);
    if (!java.enter("GetDirectBufferAddress")) {
        return nullptr;
    }
    const JavaObject object = java.resolve(reference, "GetDirectBufferAddress");
    // No mistake: any object that is no direct buffer has no address.
    const auto* buffer = object ? std::get_if<Buffer>(&object.content()->any) : nullptr;
    return buffer == nullptr ? nullptr : buffer->address;
}

}  // namespace

JNINativeInterface_ jniTable() {
    JNINativeInterface_ table = {};
    void* functions[functionCount];
    fillUnlisted(functions, std::make_index_sequence<functionCount>());
    std::memcpy(&table, functions, sizeof table);
    table.FindClass = findClass;
    table.GetObjectClass = getObjectClass;
    table.GetMethodID = getMethodId;
    table.DeleteLocalRef = deleteLocalRef;
    table.DeleteGlobalRef = deleteGlobalRef;
    table.Throw = throwObject;
    table.ExceptionOccurred = exceptionOccurred;
    table.ExceptionClear = exceptionClear;
    table.NewString = newString;
    table.GetStringLength = getStringLength;
    table.GetStringChars = getStringChars;
    table.ReleaseStringChars = releaseStringChars;
    table.NewStringUTF = newStringUtf;
    table.GetStringUTFChars = getStringUtfChars;
    table.ReleaseStringUTFChars = releaseStringUtfChars;
    table.NewObjectArray = newObjectArray;
    table.SetObjectArrayElement = setObjectArrayElement;
    table.NewByteArray = newByteArray;
    table.SetByteArrayRegion = setByteArrayRegion;
    table.GetByteArrayElements = getByteArrayElements;
    table.ReleaseByteArrayElements = releaseByteArrayElements;
    table.GetDirectBufferAddress = getDirectBufferAddress;
    addCallFunctions(table);
    return table;
}

}  // namespace testbed
