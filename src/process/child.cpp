#include "process/child.h"

#include <userenv.h>

#include <optional>

#include "bridge/errors.h"
#include "bridge/java_arrays.h"
#include "process/handle_cell.h"

namespace winutil::process {

namespace {

constexpr jint endOfStream = -1;

// The message begins with a blank: in front of it is the place of a text that these methods do not have.
void throwFailure(JNIEnv* env, const wchar_t* tag, DWORD code) noexcept {
    ErrorBuffer message;
    formatWin32Error(L"", tag, code, message.text(), ErrorBuffer::capacity);
    throwIOException(env, message.text());
}

struct ReadResult {
    jint count = 0;
    std::optional<DWORD> failure = std::nullopt;  // its code, which can be 0
};

ReadResult readBytes(HANDLE pipe, jbyte* bytes, jint length) noexcept {
    DWORD count = 0;
    if (ReadFile(pipe, bytes, static_cast<DWORD>(length), &count, nullptr)) {
        return {.count = count == 0 ? endOfStream : static_cast<jint>(count)};
    }
    const DWORD code = GetLastError();
    if (code == ERROR_HANDLE_EOF || code == ERROR_BROKEN_PIPE) {
        return {.count = endOfStream};
    }
    return {.failure = code};
}

}  // namespace

void closeCell(HANDLE* cell) noexcept {
    const HandleCell closed(cell);
}

void unloadProfile(HANDLE* tokenCell, HANDLE* profileCell) noexcept {
    const HeapMemory<HANDLE> profile(profileCell);
    const HandleCell token(tokenCell);
    if (token && profile) {
        // Whether it succeeds is not looked at.
        UnloadUserProfile(*token.get(), *profile.get());
    }
}

DWORD waitForEnd(const HANDLE* cell) noexcept {
    return cell == nullptr ? WAIT_FAILED : WaitForSingleObject(*cell, INFINITE);
}

DWORD exitCode(JNIEnv* env, const HANDLE* cell) noexcept {
    constexpr wchar_t tag[] = L"[WindowsUtil:exitValue]";
    if (cell == nullptr) {
        throwFailure(env, tag, ERROR_INVALID_HANDLE);
        return 0;
    }
    DWORD code = 0;
    if (!GetExitCodeProcess(*cell, &code)) {
        throwFailure(env, tag, GetLastError());
        return 0;
    }
    return code;
}

void endChild(JNIEnv* env, const HANDLE* cell) noexcept {
    // Not the class's name, unlike the other tags, deliberately.
    constexpr wchar_t tag[] = L"[WinUtil:endProcess]";
    if (cell == nullptr) {
        throwFailure(env, tag, ERROR_INVALID_HANDLE);
    } else if (!TerminateProcess(*cell, 0)) {
        throwFailure(env, tag, GetLastError());
    }
}

jint readOutput(JNIEnv* env, const HANDLE* cell, jbyteArray buffer, jint offset, jint length) noexcept {
    constexpr wchar_t tag[] = L"[WindowsUtil:readHandle]";
    if (cell == nullptr) {
        throwFailure(env, tag, ERROR_INVALID_HANDLE);
        return 0;
    }
    ByteElements elements(env, buffer, 0);
    if (!elements) {
        return 0;
    }
    const ReadResult result = readBytes(*cell, elements.get() + offset, length);
    elements.release();
    if (result.failure) {
        throwFailure(env, tag, *result.failure);
    }
    return result.count;
}

}  // namespace winutil::process
