// The encoding of narrow strings in JNI: zero takes two bytes, and each half of a surrogate pair three.
#pragma once

#include <string>
#include <string_view>

namespace testbed {

std::string toModifiedUtf8(std::wstring_view text);

// As a virtual machine decodes it: a byte that starts no character stands for itself.
std::wstring fromModifiedUtf8(std::string_view bytes);

}  // namespace testbed
