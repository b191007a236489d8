// Messages and answers that strangers write into a pipe.
#include <windows.h>

#include "answers/pipes.h"
#include "host/pipes.h"
#include "target.h"
#include "windows/system.h"

namespace {

hostile::Pipe* otherEnd = nullptr;

}  // namespace

extern "C" {
HANDLE WINAPI CreateFileW(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
    return fuzz::fakeHandle();
}
HANDLE WINAPI CreateNamedPipeW(LPCWSTR, DWORD, DWORD, DWORD, DWORD, DWORD, DWORD, LPSECURITY_ATTRIBUTES) {
    return fuzz::fakeHandle();
}
WINBOOL WINAPI WaitNamedPipeW(LPCWSTR, DWORD) {
    return FALSE;
}
WINBOOL WINAPI ConnectNamedPipe(HANDLE, LPOVERLAPPED) {
    return TRUE;
}
WINBOOL WINAPI DisconnectNamedPipe(HANDLE) {
    return TRUE;
}
WINBOOL WINAPI FlushFileBuffers(HANDLE) {
    return TRUE;
}
WINBOOL WINAPI SetNamedPipeHandleState(HANDLE, LPDWORD, LPDWORD, LPDWORD) {
    return TRUE;
}
WINBOOL WINAPI WriteFile(HANDLE, LPCVOID, DWORD size, LPDWORD written, LPOVERLAPPED) {
    *written = size;
    return TRUE;
}
WINBOOL WINAPI ReadFile(HANDLE, LPVOID buffer, DWORD size, LPDWORD count, LPOVERLAPPED) {
    return otherEnd->read(buffer, size, count);
}
}

void fuzz::examine(hostile::Input& input) {
    hostile::Pipe answers(input);
    otherEnd = &answers;
    if (input.value<BYTE>() % 2 == 0) {
        winutil::host::MessageBytes message;
        winutil::host::serveClient(winutil::host::messagePipeName, message);
        require(strnlen(message, sizeof(message)) < sizeof(message), "a message has no end");
    } else {
        winutil::host::sendMessage(winutil::host::messagePipeName, L"text");
    }
}
