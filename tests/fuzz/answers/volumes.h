// A mount manager that answers with anything.
#pragma once

#include <windows.h>

#include <cwchar>

#include "answers/input.h"

namespace hostile {

class Volumes {
public:
    explicit Volumes(Input& input) : input_(input) {}

    // FindFirstVolumeW and FindNextVolumeW. A name ends within its room, whatever it is.
    bool giveName(LPWSTR name, DWORD room) {
        constexpr DWORD results[] = {ERROR_NO_MORE_FILES, ERROR_SUCCESS, ERROR_FILENAME_EXCED_RANGE};
        const DWORD result = chooseCode(input_, results);
        const auto length = std::min<DWORD>(input_.value<BYTE>(), room - 1);
        std::wmemset(name, L'\0', length + 1);
        input_.copyTo(name, length * sizeof(wchar_t));
        SetLastError(result);
        return result == ERROR_SUCCESS;
    }

    // GetVolumePathNamesForVolumeNameW. Nothing ends the list but what comes.
    BOOL giveMountPoints(LPCWSTR, LPWSTR list, DWORD room, PDWORD required) {
        constexpr DWORD results[] = {ERROR_SUCCESS, ERROR_MORE_DATA, ERROR_FILE_NOT_FOUND};
        const DWORD result = chooseCode(input_, results);
        *required = input_.value<WORD>();
        if (result == ERROR_SUCCESS) {
            input_.copyTo(list, std::size_t{input_.value<WORD>() % (room + 1)} * sizeof(wchar_t));
        }
        SetLastError(result);
        return result == ERROR_SUCCESS ? TRUE : FALSE;
    }

private:
    Input& input_;
};

}  // namespace hostile
