#pragma once

#include "account/logon.h"
#include "bridge/java_strings.h"
#include "bridge/legacy.h"

namespace winutil {

// The three strings of an account for the ANSI logon, held for the length of a call.
class AccountChars {
public:
    // Nothing more is taken behind a string that the JVM had no memory for.
    AccountChars(JNIEnv* env, jstring domain, jstring user, jstring password) noexcept
        : domain_(env, domain),
          user_(env, domain_ ? user : nullptr),
          password_(env, domain_ && user_ ? password : nullptr) {}

    // False when the JVM had no memory for them; its error is then pending.
    explicit operator bool() const noexcept { return domain_ && user_ && password_; }

    account::NarrowCredentials get() const noexcept {
        return {.domain = domain_.get(), .user = user_.get(), .password = password_.get()};
    }

private:
    NarrowChars domain_;
    NarrowChars user_;
    NarrowChars password_;
};

}  // namespace winutil
