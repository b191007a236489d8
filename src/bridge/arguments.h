// The text arguments of a native method: taken together, asked once whether they could be had, and given back
// together.
//
//     const Arguments arguments(env, wide(rootName), wide(keyName), wide(hiveFile));
//     return toJava(arguments && arguments.pass(registry::loadHive));
//
// A null string is no failure: its text is then a null pointer (or the empty text, where that is asked for).
// That there is no memory for one is: nothing more is taken behind it, and the object is false.
#pragma once

#include <jni.h>
#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <tuple>

#include "bridge/errors.h"
#include "bridge/java_strings.h"

namespace winutil {

// How a text is asked for.
enum class OfNull : std::uint8_t { null, empty };
template <class Text>
struct TextRequest {
    jstring text;
    Secrecy secrecy = Secrecy::open;
    OfNull ofNull = OfNull::null;
};

// A copy of the library's own. That of a password is wiped as well.
class WideText {
public:
    WideText() noexcept = default;
    WideText(const WideText&) = delete;
    WideText& operator=(const WideText&) = delete;
    ~WideText();

    bool take(JNIEnv* env, const TextRequest<WideText>& request) noexcept;
    const wchar_t* get() const noexcept { return text_; }

private:
    WideString copy_;
    const wchar_t* text_ = nullptr;
    std::size_t secretLength_ = 0;  // characters, those behind a zero in the middle included
};

// The characters in the buffer that the JVM handed out. Its buffer has room for a terminator, which is
// written there: that saves the copy.
class InPlaceText {
public:
    bool take(JNIEnv* env, const TextRequest<InPlaceText>& request) noexcept;
    wchar_t* get() const noexcept { return chars_.get(); }

private:
    JavaChars chars_;
};

// The modified UTF-8 bytes for an ANSI call, as they are: right for ASCII names only, which is what the
// callers of those methods pass.
class NarrowText {
public:
    NarrowText() noexcept = default;
    NarrowText(const NarrowText&) = delete;
    NarrowText& operator=(const NarrowText&) = delete;
    ~NarrowText();

    bool take(JNIEnv* env, const TextRequest<NarrowText>& request) noexcept;
    const char* get() const noexcept { return chars_; }

private:
    JNIEnv* env_ = nullptr;
    jstring text_ = nullptr;
    const char* chars_ = nullptr;
    bool wipe_ = false;
};

inline TextRequest<WideText> wide(jstring text) noexcept {
    return {.text = text};
}
inline TextRequest<WideText> wideOrEmpty(jstring text) noexcept {
    return {.text = text, .ofNull = OfNull::empty};
}
inline TextRequest<WideText> wideSecret(jstring text) noexcept {
    return {.text = text, .secrecy = Secrecy::secret, .ofNull = OfNull::empty};
}
inline TextRequest<InPlaceText> inPlace(jstring text) noexcept {
    return {.text = text};
}
inline TextRequest<InPlaceText> inPlaceSecret(jstring text) noexcept {
    return {.text = text, .secrecy = Secrecy::secret};
}
inline TextRequest<NarrowText> narrow(jstring text) noexcept {
    return {.text = text};
}
inline TextRequest<NarrowText> narrowSecret(jstring text) noexcept {
    return {.text = text, .secrecy = Secrecy::secret};
}

template <class... Texts>
class Arguments {
public:
    explicit Arguments(JNIEnv* env, const TextRequest<Texts>&... requests) noexcept : env_(env) {
        complete_ =
            std::apply([&](Texts&... texts) noexcept { return (texts.take(env, requests) && ...); }, texts_);
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;
    ~Arguments() = default;

    // False when there was no memory for one of them.
    explicit operator bool() const noexcept { return complete_; }

    // The same, with an OutOfMemoryError pending then: for a method whose failure value would be an answer.
    bool orOutOfMemory() const noexcept {
        if (!complete_) {
            throwOutOfMemoryError(env_);
        }
        return complete_;
    }

    // The same, with an IOException pending then: for a method whose failures raise one with this tag.
    bool orThrow(const wchar_t* tag) const noexcept {
        if (!complete_) {
            throwWin32Error(env_, tag, ERROR_NOT_ENOUGH_MEMORY);
        }
        return complete_;
    }

    template <std::size_t index>
    auto get() const noexcept {
        return std::get<index>(texts_).get();
    }

    // Calls `work` with the texts, in their order.
    template <class Work>
    auto pass(Work work) const noexcept {
        return std::apply([&](const Texts&... texts) noexcept { return work(texts.get()...); }, texts_);
    }

private:
    JNIEnv* env_;
    std::tuple<Texts...> texts_;
    bool complete_ = false;
};

}  // namespace winutil
