#include "process/child.h"

#include <userenv.h>

#include "bridge/handle_cell.h"
#include "bridge/java_arrays.h"

namespace winutil::process {

namespace {

constexpr jint endOfStream = -1;

}  // namespace

// The messages here begin with a blank: in front of it is the place of a text that these methods do not have.

void closeCell(HANDLE* cell) noexcept {
    const KernelCell closed(cell);
}

void unloadProfile(HANDLE* tokenCell, HANDLE* profileCell) noexcept {
    const HeapMemory<HANDLE> profile(profileCell);
    const KernelCell token(tokenCell);
    if (token && profile) {
        // Whether it succeeds is not looked at.
        UnloadUserProfile(*token.get(), *profile.get());
    }
}

DWORD waitForEnd(const HANDLE* cell) noexcept {
    return cell == nullptr ? WAIT_FAILED : WaitForSingleObject(*cell, INFINITE);
}

DWORD exitCode(const HANDLE* cell, ErrorBuffer& errorBuffer) noexcept {
    constexpr wchar_t tag[] = L"[WindowsUtil:exitValue]";
    if (cell == nullptr) {
        errorBuffer.format(L"", tag, ERROR_INVALID_HANDLE);
        return 0;
    }
    DWORD code = 0;
    if (!GetExitCodeProcess(*cell, &code)) {
        errorBuffer.format(L"", tag, GetLastError());
        return 0;
    }
    return code;
}

void endChild(const HANDLE* cell, ErrorBuffer& errorBuffer) noexcept {
    // Required: not the class's name, unlike the other tags, because callers know this failure by it.
    constexpr wchar_t tag[] = L"[WinUtil:endProcess]";
    if (cell == nullptr) {
        errorBuffer.format(L"", tag, ERROR_INVALID_HANDLE);
    } else if (!TerminateProcess(*cell, 0)) {
        errorBuffer.format(L"", tag, GetLastError());
    }
}

jint readOutput(JNIEnv* env, const HANDLE* cell, jbyteArray buffer, jint offset, jint length,
                ErrorBuffer& errorBuffer) noexcept {
    constexpr wchar_t tag[] = L"[WindowsUtil:readHandle]";
    if (cell == nullptr) {
        errorBuffer.format(L"", tag, ERROR_INVALID_HANDLE);
        return 0;
    }
    const ByteElements elements(env, buffer, 0);
    if (!elements) {
        errorBuffer.format(L"", tag, ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    DWORD count = 0;
    if (ReadFile(*cell, elements.get() + offset, static_cast<DWORD>(length), &count, nullptr)) {
        return count == 0 ? endOfStream : static_cast<jint>(count);
    }
    const DWORD code = GetLastError();
    if (code == ERROR_HANDLE_EOF || code == ERROR_BROKEN_PIPE) {
        return endOfStream;
    }
    errorBuffer.format(L"", tag, code);
    return 0;
}

}  // namespace winutil::process
