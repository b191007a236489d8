// What the tests of reading and writing share: an open file, and a buffer outside the heap of Java.
#pragma once

#include <string>
#include <string_view>

#include "winutil_fixture.h"

namespace testbed {

inline constexpr jint noBuffering = static_cast<jint>(FILE_FLAG_NO_BUFFERING);
inline constexpr jint sector = 512;

class ReadWriteTest : public WinUtilTest {
protected:
    // Opens a new file with that content for reading and writing, and closes it at the end of the test.
    jlong open(std::string_view content = {}, jint flags = 0) {
        writeFile(folder() / L"file", content);
        record = NATIVE(createFileNC__Ljava_lang_String_2III)(
            folder() / L"file", static_cast<jint>(GENERIC_READ | GENERIC_WRITE), OPEN_EXISTING, flags);
        return record;
    }

    void TearDown() override { NATIVE(closeFile)(record); }

    std::string content() { return readFile(folder() / L"file"); }

    jlong record = 0;
};

class DirectBufferTest : public ReadWriteTest {
protected:
    // A buffer whose last byte lies right before a page that faults.
    explicit DirectBufferTest() : memory(4096, "direct buffer") {}

    JavaObject buffer() { return java.directBuffer(memory.data(), static_cast<jlong>(memory.size())); }
    void write(jint offset, jint length, jint sectorSize = sector) {
        NATIVE(write__JLjava_nio_ByteBuffer_2III)(record, buffer(), offset, length, sectorSize);
    }
    jint read(jint offset, jint length, jint sectorSize = sector) {
        return NATIVE(read__JLjava_nio_ByteBuffer_2III)(record, buffer(), offset, length, sectorSize);
    }

    GuardedBuffer memory;
};

}  // namespace testbed
