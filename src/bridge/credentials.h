#pragma once

namespace winutil {

// An account's name and password on their way into a call. Each may be null where the call takes null.
template <class Char>
struct BasicCredentials {
    const Char* domain;
    const Char* user;
    const Char* password;
};

// For the Unicode calls, and as the ANSI logon takes them, as they are.
using Credentials = BasicCredentials<wchar_t>;
using NarrowCredentials = BasicCredentials<char>;

}  // namespace winutil
