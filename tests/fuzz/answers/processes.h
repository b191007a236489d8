// A process whose memory says anything.
#pragma once

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winternl.h>

#include <cstring>

#include "answers/input.h"

namespace hostile {

class Processes {
public:
    explicit Processes(Input& input) : input_(input) {}

    // NtQueryInformationProcess
    NTSTATUS query(void* information, ULONG size) {
        input_.copyTo(information, size);
        return input_.value<BYTE>() == 0xFF ? static_cast<NTSTATUS>(0xC0000008) : 0;
    }

    // ReadProcessMemory, which reads all of it or fails: what the input has not got is no zero.
    BOOL read(HANDLE, LPCVOID, LPVOID buffer, SIZE_T size, SIZE_T*) {
        if (input_.value<BYTE>() == 0xFF) {
            SetLastError(ERROR_PARTIAL_COPY);
            return FALSE;
        }
        std::memset(buffer, 'x', size);
        input_.copyTo(buffer, size);
        return TRUE;
    }

private:
    Input& input_;
};

}  // namespace hostile
