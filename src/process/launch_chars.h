// The strings of a launch.
#pragma once

#include <optional>

#include "bridge/java_strings.h"
#include "bridge/legacy.h"
#include "process/child_start.h"
#include "process/launch.h"

namespace winutil::process {

// The characters of a Java string that may be null.
class OptionalChars {
public:
    OptionalChars(JNIEnv* env, jstring text) noexcept {
        if (text != nullptr) {
            chars_.emplace(env, text);
        }
    }

    // False when the JVM had no memory for them; its error is then pending.
    explicit operator bool() const noexcept { return !chars_ || *chars_; }
    wchar_t* get() const noexcept { return chars_ ? chars_->get() : nullptr; }

private:
    std::optional<TerminatedChars> chars_;
};

struct AccountTexts {
    const wchar_t* domain;
    const wchar_t* user;
    const wchar_t* password;
};

// Of these two no more is taken behind a string that the JVM had no memory for.
class AccountChars {
public:
    AccountChars(JNIEnv* env, const Account& account) noexcept
        : domain_(env, account.domain),
          user_(env, domain_ ? account.user : nullptr),
          password_(env, domain_ && user_ ? account.password : nullptr) {}

    explicit operator bool() const noexcept { return domain_ && user_ && password_; }
    AccountTexts get() const noexcept {
        return {.domain = domain_.get(), .user = user_.get(), .password = password_.get()};
    }

private:
    OptionalChars domain_;
    OptionalChars user_;
    OptionalChars password_;
};

class ProgramChars {
public:
    ProgramChars(JNIEnv* env, const Program& program) noexcept
        : application_(env, program.application),
          commandLine_(env, application_ ? program.commandLine : nullptr),
          workingDirectory_(env, application_ && commandLine_ ? program.workingDirectory : nullptr) {}

    explicit operator bool() const noexcept { return application_ && commandLine_ && workingDirectory_; }
    ProgramTexts get() const noexcept {
        return {.application = application_.get(),
                .commandLine = commandLine_.get(),
                .workingDirectory = workingDirectory_.get()};
    }

private:
    OptionalChars application_;
    OptionalChars commandLine_;
    OptionalChars workingDirectory_;
};

}  // namespace winutil::process
