// The C runtime for texts of 16-bit characters. Those of the system that the fuzz targets run on have 32
// bits, so that its own functions, which the definitions here stand in front of, would read twice too far.
#include "runtime.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "finding.h"

namespace {

// Writes a text of limited size, and whether all of it fitted.
class Writer {
public:
    Writer(wchar_t* buffer, size_t capacity) : next_(buffer), last_(buffer + capacity - 1) {
        fuzz::require(capacity > 0, "a text is written into a buffer of no size");
    }
    void put(wchar_t character) {
        if (next_ == last_) {
            cut_ = true;
        } else {
            *next_++ = character;
        }
    }
    // Ends the text; returns what the functions do.
    int end(const wchar_t* begin) {
        *next_ = L'\0';
        return cut_ ? -1 : static_cast<int>(next_ - begin);
    }

private:
    wchar_t* next_;
    wchar_t* last_;
    bool cut_ = false;
};

// One conversion of a format, as far as the library uses them.
struct Conversion {
    char text[16];  // as a narrow format
    bool hasPrecision;
    bool isNarrow;
    char kind;
};

Conversion readConversion(const wchar_t*& format) {
    Conversion conversion = {};
    size_t length = 0;
    do {
        fuzz::require(length + 1 < std::size(conversion.text), "a conversion that is not known here");
        const auto character = static_cast<char>(*format++);
        conversion.text[length++] = character;
        conversion.hasPrecision |= character == '*';
        conversion.isNarrow |= character == 'h';
    } while (std::strchr("sduxXlhc%", conversion.text[length - 1]) == nullptr ||
             std::strchr("lh", conversion.text[length - 1]) != nullptr);
    conversion.kind = conversion.text[length - 1];
    return conversion;
}

template <class Char>
void putText(Writer& writer, const Char* text, size_t limit) {
    for (size_t i = 0; i < limit && text[i] != 0; ++i) {
        writer.put(static_cast<wchar_t>(text[i]));
    }
}

void putConversion(Writer& writer, const Conversion& conversion, va_list& arguments) {
    const size_t limit = conversion.hasPrecision ? static_cast<size_t>(va_arg(arguments, int)) : SIZE_MAX;
    if (conversion.kind == '%') {
        writer.put(L'%');
    } else if (conversion.kind == 's' && conversion.isNarrow) {
        putText(writer, va_arg(arguments, const char*), limit);
    } else if (conversion.kind == 's') {
        putText(writer, va_arg(arguments, const wchar_t*), limit);
    } else {
        // A number has a place of the same size among the arguments, whatever its kind.
        va_list number;
        va_copy(number, arguments);
        char text[64];
        std::vsnprintf(text, sizeof(text), conversion.text, number);
        va_end(number);
        static_cast<void>(va_arg(arguments, long long));
        putText(writer, text, SIZE_MAX);
    }
}

template <class Char>
Char lower(Char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<Char>(character - 'A' + 'a') : character;
}

template <class Char>
int compareIgnoringCase(const Char* left, const Char* right, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (lower(left[i]) != lower(right[i])) {
            return lower(left[i]) < lower(right[i]) ? -1 : 1;
        }
        if (left[i] == 0) {
            break;
        }
    }
    return 0;
}

}  // namespace

extern "C" {

size_t wcsnlen(const wchar_t* text, size_t limit) {
    size_t length = 0;
    while (length < limit && text[length] != L'\0') {
        ++length;
    }
    return length;
}

size_t wcslen(const wchar_t* text) {
    return wcsnlen(text, SIZE_MAX);
}

wchar_t* wmemchr(const wchar_t* text, wchar_t wanted, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (text[i] == wanted) {
            return const_cast<wchar_t*>(text + i);
        }
    }
    return nullptr;
}

int wmemcmp(const wchar_t* left, const wchar_t* right, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (left[i] != right[i]) {
            return left[i] < right[i] ? -1 : 1;
        }
    }
    return 0;
}

wchar_t* wmemcpy(wchar_t* destination, const wchar_t* source, size_t count) {
    std::memcpy(destination, source, count * sizeof(wchar_t));
    return destination;
}

wchar_t* wmemset(wchar_t* destination, wchar_t character, size_t count) {
    std::fill_n(destination, count, character);
    return destination;
}

int wcsncmp(const wchar_t* left, const wchar_t* right, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (left[i] != right[i]) {
            return left[i] < right[i] ? -1 : 1;
        }
        if (left[i] == L'\0') {
            break;
        }
    }
    return 0;
}

int wcscmp(const wchar_t* left, const wchar_t* right) {
    return wcsncmp(left, right, SIZE_MAX);
}

int _snprintf_s(char* buffer, size_t capacity, size_t, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, capacity, format, arguments);
    va_end(arguments);
    return static_cast<size_t>(length) < capacity ? length : -1;
}

int _snwprintf_s(wchar_t* buffer, size_t capacity, size_t, const wchar_t* format, ...) {
    Writer writer(buffer, capacity);
    va_list arguments;
    va_start(arguments, format);
    while (*format != L'\0') {
        if (*format == L'%') {
            putConversion(writer, readConversion(format), arguments);
        } else {
            writer.put(*format++);
        }
    }
    va_end(arguments);
    return writer.end(buffer);
}

int _stricmp(const char* left, const char* right) {
    return compareIgnoringCase(left, right, SIZE_MAX);
}

int _strnicmp(const char* left, const char* right, size_t count) {
    return compareIgnoringCase(left, right, count);
}

int _wcsicmp(const wchar_t* left, const wchar_t* right) {
    return compareIgnoringCase(left, right, SIZE_MAX);
}

int _wcsnicmp(const wchar_t* left, const wchar_t* right, size_t count) {
    return compareIgnoringCase(left, right, count);
}

int wcsncpy_s(wchar_t* destination, size_t capacity, const wchar_t* source, size_t count) {
    const size_t length = wcsnlen(source, count);
    // Where Windows ends the process.
    fuzz::require(length < capacity, "a text is copied into a buffer that it does not fit into");
    wmemcpy(destination, source, length);
    destination[length] = L'\0';
    return 0;
}

int wcscpy_s(wchar_t* destination, size_t capacity, const wchar_t* source) {
    return wcsncpy_s(destination, capacity, source, SIZE_MAX);
}

int wcscat_s(wchar_t* destination, size_t capacity, const wchar_t* source) {
    const size_t length = wcsnlen(destination, capacity);
    return wcscpy_s(destination + length, capacity - length, source);
}
}
