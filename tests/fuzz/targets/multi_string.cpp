// The list of strings of a registry value.
#include "registry/multi_string.h"
#include "target.h"

void fuzz::examine(hostile::Input& input) {
    const ExactCopy data(input.rest());
    std::string_view list(data.as<char>(), data.bytes().size());
    const std::size_t count = winutil::registry::countStrings(list);
    std::size_t taken = 0;
    std::size_t size = 0;
    for (;; ++taken) {
        const std::string_view text = winutil::registry::takeString(list);
        if (text.empty()) {
            break;
        }
        require(text.find('\0') == std::string_view::npos, "a string of a list goes on behind its end");
        size += text.size();
    }
    require(taken == count, "a list has another number of strings than were counted");
    require(size + count <= data.bytes().size() + 1, "the strings of a list are larger than the list");
}
