// Native methods called with arguments made for their signatures, and their answers as texts.
#pragma once

#include <string>
#include <tuple>
#include <type_traits>

#include "winutil_fixture.h"

namespace testbed {

inline const std::string nativePrefix = "Java_com_qarvo_kel_util_WindowsUtil_";

inline std::wstring describe(bool value) {
    return value ? L"true" : L"false";
}
inline std::wstring describe(jint value) {
    return std::to_wstring(value);
}
inline std::wstring describe(jlong value) {
    return std::to_wstring(value);
}
inline std::wstring describe(const JavaObject& value) {
    if (!value) {
        return L"null";
    }
    if (value.className() == "java/lang/String") {
        return L'"' + value.text() + L'"';
    }
    const std::size_t count = value.className() == "[B" ? value.bytes().size() : value.elements().size();
    return std::to_wstring(count) + L" elements";
}

class AnyMethodTest : public WinUtilTest {
protected:
    // Calls a method with `text` for each string, an array for each array, `object` for each object and
    // `number` for each long; the rest is 0. Returns what it answers, as text.
    template <class Function>
    std::wstring call(const char* name) {
        return callNative(native<Function>((nativePrefix + name).c_str()), static_cast<Function*>(nullptr));
    }

    std::wstring text = L"C:\\refused";
    JavaObject object;
    jlong number = 0;

private:
    template <class Native, class R, class Self, class... Parameters>
    std::wstring callNative(const Native& method, R (*)(JNIEnv*, Self, Parameters...)) {
        const auto arguments = std::make_tuple(argument<Parameters>()...);
        if constexpr (std::is_void_v<R>) {
            std::apply(method, arguments);
            return L"";
        } else {
            return describe(std::apply(method, arguments));
        }
    }

    template <class Parameter>
    auto argument() {
        if constexpr (std::is_same_v<Parameter, jstring>) {
            return text;
        } else if constexpr (std::is_same_v<Parameter, jbyteArray>) {
            return java.byteArray(std::vector<jbyte>(16));
        } else if constexpr (std::is_same_v<Parameter, jobject>) {
            return object;
        } else if constexpr (std::is_same_v<Parameter, jlong>) {
            return number;
        } else {
            return Parameter{};
        }
    }
};

}  // namespace testbed
