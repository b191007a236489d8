// Single registry values: texts of any size, numbers, small values of any type.
#include "registry/values.h"
#include "target.h"
#include "windows/answered_calls.h"

void fuzz::examine(hostile::Input& input) {
    namespace registry = winutil::registry;
    hostile::Registry answers(input);
    registryAnswers = &answers;
    switch (input.value<BYTE>() % 4) {
        case 0:
            if (const auto text = registry::readText("HKEY_USERS\\key\\value")) {
                require(std::wcslen(text.get()) <= 512, "a short text is longer than its room");
            }
            break;
        case 1:
            if (const auto text = registry::readText(L"HKEY_USERS\\key\\value", 0, REG_SZ)) {
                require(std::wcslen(text.get()) <= 0x8000, "a long text is longer than any that was given");
            }
            break;
        case 2:
            registry::readDword("HKEY_USERS\\key\\value");
            break;
        default: {
            const registry::SmallValue value("HKEY_USERS\\key\\value");
            const ExactCopy copy(std::as_bytes(value.bytes()));
        }
    }
}
