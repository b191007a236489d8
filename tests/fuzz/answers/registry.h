// A registry that holds anything, such as a hive from another machine.
#pragma once

#include <windows.h>

#include <cstring>

#include "answers/input.h"

namespace hostile {

class Registry {
public:
    explicit Registry(Input& input) : input_(input) {}

    // RegQueryInfoKeyA. Neither count is that of what follows.
    LSTATUS giveCounts(LPDWORD subkeys, LPDWORD values) {
        *subkeys = input_.value<BYTE>() % 16;
        *values = input_.value<BYTE>() % 16;
        return ERROR_SUCCESS;
    }

    // RegEnumKeyExA and the name that RegEnumValueA gives. Behind a failure the name need not have an end.
    LSTATUS giveName(LPSTR name, LPDWORD size) {
        const LSTATUS result = chooseCode(input_, results);
        if (result == ERROR_SUCCESS) {
            std::memset(name, poison, *size);
            *size = static_cast<DWORD>(input_.copyTo(name, std::min<DWORD>(input_.value<BYTE>(), *size - 1)));
            name[*size] = '\0';
        } else {
            std::memset(name, 'x', *size);
        }
        return result;
    }

    LSTATUS giveValue(LPSTR name, LPDWORD nameSize, LPDWORD type, LPDWORD size) {
        const LSTATUS result = giveName(name, nameSize);
        *type = input_.value<BYTE>() % (REG_QWORD + 2);
        *size = input_.value<WORD>();
        return result;
    }

    // RegQueryValueExA and RegQueryValueExW. The size may be any number; the data fit their room.
    LSTATUS giveData(LPDWORD type, void* data, LPDWORD size) {
        const LSTATUS result = chooseCode(input_, results);
        if (type != nullptr) {
            *type = input_.value<BYTE>() % (REG_QWORD + 2);
        }
        const auto claimed = DWORD{input_.value<WORD>()};
        if (result == ERROR_SUCCESS) {
            std::memset(data, 'x', *size);
            input_.copyTo(data, std::min(claimed, *size));
        }
        *size = claimed;
        return result;
    }

private:
    static constexpr LSTATUS results[] = {ERROR_SUCCESS, ERROR_MORE_DATA, ERROR_FILE_NOT_FOUND,
                                          ERROR_NO_MORE_ITEMS};

    Input& input_;
};

}  // namespace hostile
