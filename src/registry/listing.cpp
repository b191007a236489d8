#include "registry/listing.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>

#include "bridge/errors.h"
#include "bridge/java_arrays.h"
#include "bridge/java_calls.h"
#include "registry/keys.h"
#include "registry/multi_string.h"

namespace winutil::registry {

namespace {

// How many characters of a text are kept; each buffer has one more, for the terminator.
constexpr int shortTextLimit = 255;
constexpr int longTextLimit = 16383;

// What RegEnumKeyExA is told of its buffer, which has one character more.
constexpr DWORD subkeyNameSize = 255;

// The texts of one listing, too large together for the stack of a Java thread.
struct LevelTexts {
    wchar_t rootName[shortTextLimit + 1];
    wchar_t keyPath[longTextLimit + 1];
    wchar_t subkeyName[shortTextLimit + 1];
    wchar_t valueName[longTextLimit + 1];
    wchar_t valueText[longTextLimit + 1];
    char narrowSubkeyName[subkeyNameSize + 1];
    char narrowValueName[16383];
    char keyClass[260];
};

// One open key on its way to a collector.
struct Level {
    JNIEnv* env;
    jobject collector;
    HKEY key;
    LevelTexts& texts;
};

// The data of a value; none when it could not be read. A block always has two zero bytes behind the data: no
// text or list runs out of it, whatever the registry holds.
struct ValueData {
    HeapMemory<char> block;
    std::size_t size = 0;

    explicit operator bool() const noexcept { return static_cast<bool>(block); }
};

// Converts a text, cut at `limit`, into a buffer with room for one character more. As much as the conversion
// can reach is zero before it.
void convert(wchar_t* destination, const char* source, int limit) noexcept {
    const std::size_t length = std::min(std::strlen(source), static_cast<std::size_t>(limit));
    std::wmemset(destination, L'\0', length + 1);
    ansiToWide(destination, source, limit);
}

// Required: the names of REG_SZ values are cut much earlier than those of all other types, because the Java
// side knows those values by such names.
void convertValueName(const Level& level, DWORD type) noexcept {
    convert(level.texts.valueName, level.texts.narrowValueName,
            type == REG_SZ ? shortTextLimit : longTextLimit);
}

// Calls a method of the collector with the names of root, key and item, and with the item's value where it
// has one. Returns false when a Java exception ends the listing.
template <class... Value>
bool report(const Level& level, const JavaMethod& method, const wchar_t* item,
            const Value&... value) noexcept {
    return level.env == nullptr || callCollector(level.env, level.collector, method, level.texts.rootName,
                                                 level.texts.keyPath, item, value...);
}

LSTATUS queryValue(const Level& level, void* data, DWORD& size) noexcept {
    return RegQueryValueExA(level.key, level.texts.narrowValueName, nullptr, nullptr,
                            static_cast<BYTE*>(data), &size);
}

// Returns the data of a value of about that size; no answer when memory is exhausted.
std::optional<ValueData> readData(const Level& level, DWORD size) noexcept {
    constexpr std::size_t terminator = 2;
    // Once more at the size that the system asks for; a value that has grown again by then is passed over.
    for (int attempt = 0; attempt < 2 && size <= MAXLONG; ++attempt) {
        ValueData data{.block = allocate<char>(size + terminator)};
        if (!data) {
            return std::nullopt;
        }
        DWORD count = size;
        const LSTATUS status = queryValue(level, data.block.get(), count);
        if (status == ERROR_SUCCESS) {
            data.size = std::min(count, size);
            std::memset(data.block.get() + data.size, 0, terminator);
            return data;
        }
        if (status != ERROR_MORE_DATA) {
            break;
        }
        size = count;
    }
    return ValueData();
}

bool reportText(const Level& level, DWORD type, const ValueData& data) noexcept {
    convertValueName(level, type);
    convert(level.texts.valueText, data.block.get(), longTextLimit);
    return report(level, java_method::addStringNode, level.texts.valueName, level.texts.valueText);
}

bool reportDword(const Level& level) noexcept {
    // Zero to begin with: a value may have fewer bytes than its type says.
    DWORD value = 0;
    DWORD size = sizeof(value);
    if (queryValue(level, &value, size) != ERROR_SUCCESS) {
        return true;
    }
    convertValueName(level, REG_DWORD);
    return report(level, java_method::addDwordNode, level.texts.valueName, static_cast<jlong>(value));
}

bool reportBytes(const Level& level, DWORD type, const ValueData& data) noexcept {
    convertValueName(level, type);
    const LocalRef bytes(level.env,
                         newByteArray(level.env, std::as_bytes(std::span(data.block.get(), data.size))));
    return bytes && report(level, java_method::addByteNode, level.texts.valueName, bytes);
}

// Returns a new array of the strings of a list, or none with a Java exception pending. The list must have a
// zero behind its data.
LocalRef<jobjectArray> newStringArray(const Level& level, std::string_view list) noexcept {
    JNIEnv* env = level.env;
    const LocalRef type(env, env->FindClass(java_class::string));
    if (!type) {
        return {};
    }
    const LocalRef empty(env, newJavaString(env, L""));
    if (!empty) {
        return {};
    }
    const auto count = static_cast<jsize>(countStrings(list));
    LocalRef array(env, env->NewObjectArray(count, type.get(), empty.get()));
    if (!array) {
        return {};
    }
    for (jsize index = 0; index < count; ++index) {
        convert(level.texts.valueText, takeString(list).data(), longTextLimit);
        const LocalRef text(env, newJavaString(env, level.texts.valueText));
        if (!text) {
            return {};
        }
        env->SetObjectArrayElement(array.get(), index, text.get());
    }
    return array;
}

bool reportTextList(const Level& level, const ValueData& data) noexcept {
    const LocalRef texts = newStringArray(level, {data.block.get(), data.size});
    if (!texts) {
        return false;
    }
    convertValueName(level, REG_MULTI_SZ);
    return report(level, java_method::addMultiStringNode, level.texts.valueName, texts);
}

// Reports a value of a type that comes in any size.
bool reportData(const Level& level, DWORD type, DWORD size) noexcept {
    const std::optional<ValueData> data = readData(level, size);
    if (!data) {
        throwOutOfMemoryError(level.env);
        return false;
    }
    if (!*data) {
        return true;
    }
    switch (type) {
        case REG_SZ:
        case REG_EXPAND_SZ:
            return reportText(level, type, *data);
        case REG_MULTI_SZ:
            return reportTextList(level, *data);
        default:
            return reportBytes(level, type, *data);
    }
}

// Required: 64-bit numbers are read and dropped, because the Java side has no method for them.
void readQword(const Level& level) noexcept {
    ULONGLONG value = 0;
    DWORD size = sizeof(value);
    queryValue(level, &value, size);
}

// Reports the value whose name is in the narrow buffer. Returns false when a Java exception ends the listing.
bool reportValue(const Level& level, DWORD type, DWORD size) noexcept {
    switch (type) {
        case REG_SZ:
        case REG_EXPAND_SZ:
        case REG_BINARY:
        case REG_FULL_RESOURCE_DESCRIPTOR:
        case REG_MULTI_SZ:
            return reportData(level, type, size);
        case REG_DWORD:
            return reportDword(level);
        case REG_QWORD:
            readQword(level);
            return true;
        default:
            return true;
    }
}

bool reportSubkeys(const Level& level, DWORD count) noexcept {
    LevelTexts& texts = level.texts;
    for (DWORD index = 0; index < count; ++index) {
        DWORD nameSize = subkeyNameSize;
        if (RegEnumKeyExA(level.key, index, texts.narrowSubkeyName, &nameSize, nullptr, nullptr, nullptr,
                          nullptr) != ERROR_SUCCESS) {
            continue;
        }
        convert(texts.subkeyName, texts.narrowSubkeyName, shortTextLimit);
        if (!report(level, java_method::addNode, texts.subkeyName)) {
            return false;
        }
    }
    return true;
}

void reportValues(const Level& level, DWORD count) noexcept {
    LevelTexts& texts = level.texts;
    for (DWORD index = 0; index < count; ++index) {
        // The result is not looked at: where there is no type, there is nothing to report.
        texts.narrowValueName[0] = '\0';
        DWORD nameSize = sizeof(texts.narrowValueName);
        DWORD type = REG_NONE;
        DWORD size = 0;
        RegEnumValueA(level.key, index, texts.narrowValueName, &nameSize, nullptr, &type, nullptr, &size);
        // Behind a failure that gave a type nevertheless, the name need not have an end.
        *std::rbegin(texts.narrowValueName) = '\0';
        if (!reportValue(level, type, size)) {
            return;
        }
    }
}

void reportRegistryLevel(const Level& level) noexcept {
    // Nor is this result: without counts there is nothing to report either.
    DWORD classSize = sizeof(level.texts.keyClass);
    DWORD subkeys = 0;
    DWORD values = 0;
    RegQueryInfoKeyA(level.key, level.texts.keyClass, &classSize, nullptr, &subkeys, nullptr, nullptr,
                     &values, nullptr, nullptr, nullptr, nullptr);
    if (reportSubkeys(level, subkeys)) {
        reportValues(level, values);
    }
}

}  // namespace

void listRegistry(JNIEnv* env, jobject collector, const char* rootName, const char* keyPath) noexcept {
    if (rootName == nullptr || keyPath == nullptr) {
        return;
    }
    const RegistryKey key = openForReading(rootKeyFromName(rootName), keyPath);
    if (!key) {
        return;
    }
    const HeapMemory<LevelTexts> texts = allocate<LevelTexts>(1);
    if (!texts) {
        throwOutOfMemoryError(env);
        return;
    }
    convert(texts.get()->keyPath, keyPath, longTextLimit);
    convert(texts.get()->rootName, rootName, shortTextLimit);
    reportRegistryLevel({env, collector, key.get(), *texts.get()});
}

}  // namespace winutil::registry
