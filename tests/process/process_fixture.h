// What the tests of processes share: handle cells, and the lines that a method prints.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "winutil_fixture.h"

namespace testbed {

class ProcessTest : public WinUtilTest {
protected:
    // A cell as a launch makes it, put down in the ledger together with its handle: the native method that
    // takes it is to give both back. An entry of null is no handle.
    jlong ownedCell(HANDLE handle);

    // A cell that stays the test's own.
    static jlong borrowedCell(HANDLE& handle) { return reinterpret_cast<jlong>(&handle); }

    // What the library printed on the standard output, a text for each that it let out.
    const std::vector<std::wstring>& printed() const { return printed_; }

private:
    void print(std::string_view bytes, FILE* stream) {
        EXPECT_EQ(_fileno(stream), 1);
        printing_ += bytes;
    }

    std::string printing_;
    std::vector<std::wstring> printed_;
    Replacement codePage_ = system().answer("GetConsoleOutputCP", CP_UTF8);
    Replacement printedBytes_ =
        REPLACE(fwrite, [this](const void* bytes, std::size_t size, std::size_t count, FILE* stream) {
            print({static_cast<const char*>(bytes), size * count}, stream);
            return count;
        });
    Replacement flushing_ = REPLACE(fflush, [this](FILE* stream) {
        EXPECT_EQ(_fileno(stream), 1);
        printed_.push_back(toWide(std::exchange(printing_, {})));
        return 0;
    });
};

// "message  (code) text of the system".
std::wstring stepMessage(const std::wstring& message, DWORD code);

// " tag (code) text of the system".
std::wstring tagMessage(const std::wstring& tag, DWORD code);

// Kernel objects of a test, closed at its end.
struct TestHandle {
    explicit TestHandle(HANDLE given) : handle(given) {}
    TestHandle(TestHandle&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
    ~TestHandle() {
        if (handle != nullptr) {
            CloseHandle(handle);
        }
    }

    HANDLE handle;
};

// A child of the test program itself; one that waits has begun to, and is ended at the latest with this.
struct RunningChild {
    // The job is one of those in child_program.h.
    explicit RunningChild(const std::wstring& job = L"wait");
    ~RunningChild();

    DWORD exitCode() const;

    TestHandle process{nullptr};
    DWORD id = 0;
    std::wstring commandLine;
};

}  // namespace testbed
