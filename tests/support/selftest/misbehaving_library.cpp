// A DLL that does on request what the test bed must notice.
#include <windows.h>

#include <float.h>
#include <objidl.h>

#include <cstdlib>
#include <cstring>

namespace {

using TickCount = ULONGLONG WINAPI();

// By way of void*: compilers warn of a cast straight from one function type to another.
TickCount* findTickCount() {
    return reinterpret_cast<TickCount*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32"), "GetTickCount64")));
}

// Both before the entry point runs.
TickCount* const tickCount = findTickCount();
void* const memoryOfTheLibrary = std::malloc(24);

HANDLE eventOfTheLibrary = nullptr;
bool eventIsLost = false;

}  // namespace

#define EXPORTED extern "C" __declspec(dllexport)

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        eventOfTheLibrary = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    } else if (reason == DLL_PROCESS_DETACH) {
        std::free(memoryOfTheLibrary);
        if (!eventIsLost) {
            CloseHandle(eventOfTheLibrary);
        }
    }
    return TRUE;
}

extern "C" {
__declspec(dllexport) int exportedVariable = 1;
}

EXPORTED bool hasTickCount() {
    return tickCount != nullptr;
}

EXPORTED ULONGLONG callTickCount() {
    return tickCount();
}

EXPORTED void loseTheEvent() {
    eventIsLost = true;
}

EXPORTED void leakMemory(std::size_t size) {
    std::memset(std::malloc(size), 1, size);
}

// The first byte of fresh memory.
EXPORTED int readFreshMemory() {
    auto* block = static_cast<unsigned char*>(std::malloc(1));
    const int first = *block;
    std::free(block);
    return first;
}

EXPORTED void writeBehind(std::size_t size) {
    auto* block = static_cast<volatile char*>(std::malloc(size));
    block[size] = 1;
    std::free(const_cast<char*>(block));
}

EXPORTED void releaseIt(IUnknown* object) {
    object->Release();
}

EXPORTED HRESULT loadIt(IPersistFile* file) {
    return file->Load(L"file", 0);
}

EXPORTED void growAndFree() {
    std::free(std::realloc(std::malloc(8), 4096));
}

EXPORTED void openFile(const wchar_t* path) {
    CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
}

EXPORTED BOOL openAndClose(const wchar_t* path) {
    const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    return CloseHandle(file);
}

EXPORTED void openAndCloseTwice(const wchar_t* path) {
    const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    CloseHandle(file);
    CloseHandle(file);
}

EXPORTED BOOL closeIt(HANDLE handle) {
    return CloseHandle(handle);
}

EXPORTED HANDLE openWithEverything(const wchar_t* path, DWORD access, DWORD share, DWORD disposition,
                                   DWORD flags, HANDLE model) {
    return CreateFileW(path, access, share, nullptr, disposition, flags, model);
}

EXPORTED double withSignOf(double value, double sign) {
    return _copysign(value, sign);
}

EXPORTED void sleepFor(DWORD milliseconds) {
    Sleep(milliseconds);
}

// What the last error is after a call that does not touch it.
EXPORTED DWORD lastErrorAfterAllocation(DWORD before) {
    SetLastError(before);
    void* block = std::malloc(16);
    const DWORD after = GetLastError();
    std::free(block);
    return after;
}

// And behind a clean-up that succeeds.
EXPORTED DWORD lastErrorAfterClose(DWORD before) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    SetLastError(before);
    CloseHandle(event);
    return GetLastError();
}

EXPORTED DWORD lastErrorOfAttributes(const wchar_t* path) {
    SetLastError(0);
    return GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES ? GetLastError() : 0;
}

EXPORTED DWORD lastErrorOfComputerName(DWORD size) {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1];
    return GetComputerNameW(name, &size) ? 0 : GetLastError();
}

EXPORTED void leaveTextAllocated() {
    wchar_t* text = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, ERROR_FILE_NOT_FOUND,
                   0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
}

EXPORTED HMODULE loadAgain(const char* name) {
    return LoadLibraryA(name);
}
