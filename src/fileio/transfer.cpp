#include "fileio/transfer.h"

#include <cstdio>

#include "bridge/errors.h"
#include "bridge/java_arrays.h"

namespace winutil::fileio {

namespace {

// The message and the code of a failed call; code 0 and an empty message as long as nothing failed.
struct Failure {
    DWORD code = 0;
    ErrorBuffer message;

    void format(const wchar_t* tag) noexcept {
        code = GetLastError();
        formatWin32Error(tag, code, message.text(), ErrorBuffer::capacity);
    }
};

void throwInvalidRecord(JNIEnv* env, const wchar_t* tag) noexcept {
    ErrorBuffer message;
    formatWin32Error(tag, ERROR_INVALID_HANDLE, message.text(), ErrorBuffer::capacity);
    throwIOException(env, message.text());
}

// The tests of a sector size being a power of two, as the callers' contract says: no division.
bool isSectorMultiple(std::uintptr_t value, jint sectorSize) noexcept {
    // Java may pass any number, the smallest too, from which 1 can be taken only without a sign.
    const auto mask = static_cast<jint>(static_cast<std::uint32_t>(sectorSize) - 1);
    return (value & static_cast<std::uintptr_t>(mask)) == 0;
}

bool isUnbuffered(const OpenFileRecord* record) noexcept {
    return (record->flags & FILE_FLAG_NO_BUFFERING) != 0;
}

// A buffer without an address stays null, offset or not: the system then says what is wrong with it.
char* bufferAddress(JNIEnv* env, jobject buffer, jint offset) noexcept {
    auto* address = static_cast<char*>(env->GetDirectBufferAddress(buffer));
    return address == nullptr ? nullptr : address + offset;
}

// That fewer bytes were written than asked for is not looked at; neither is the position changed.
void writeBytes(const OpenFileRecord* record, const void* bytes, jint length, Failure& failure) noexcept {
    DWORD written = 0;
    if (!WriteFile(record->handle(), bytes, static_cast<DWORD>(length), &written, nullptr)) {
        failure.format(L"WriteFile");
    }
}

void throwWriteFailure(JNIEnv* env, Failure& failure) noexcept {
    if (failure.code == ERROR_DISK_FULL) {
        throwDiskFullException(env, failure.message.text());
    } else if (!failure.message.empty()) {
        throwIOException(env, failure.message.text());
    }
}

jint readBytes(OpenFileRecord* record, void* bytes, jint length, Failure& failure) noexcept {
    DWORD count = 0;
    if (!ReadFile(record->handle(), bytes, static_cast<DWORD>(length), &count, nullptr)) {
        failure.format(L"ReadFile");
        if (failure.message.empty()) {
            _snwprintf_s(failure.message.text(), ErrorBuffer::capacity, _TRUNCATE,
                         L"ReadFile failed with LastError code = %u", static_cast<unsigned>(failure.code));
        }
        return readFailed;
    }
    if (count == 0) {
        return endOfFile;
    }
    record->position += count;
    return static_cast<jint>(count);
}

std::int64_t movePointer(JNIEnv* env, const OpenFileRecord* record, std::int64_t distance,
                         DWORD method) noexcept {
    constexpr wchar_t tag[] = L"SetFilePointerEx";
    if (record == nullptr) {
        throwInvalidRecord(env, tag);
        return -1;
    }
    LARGE_INTEGER move;
    move.QuadPart = distance;
    LARGE_INTEGER position;
    if (!SetFilePointerEx(record->handle(), move, &position, method)) {
        Failure failure;
        failure.format(tag);
        throwIOException(env, failure.message.text());
        return -1;
    }
    return position.QuadPart;
}

}  // namespace

void writeArray(JNIEnv* env, const OpenFileRecord* record, jbyteArray data, jint offset,
                jint length) noexcept {
    if (record == nullptr) {
        return throwInvalidRecord(env, L"WriteFile");
    }
    ByteElements elements(env, data, JNI_ABORT);
    if (!elements) {
        return;
    }
    Failure failure;
    writeBytes(record, elements.get() + offset, length, failure);
    elements.release();
    throwWriteFailure(env, failure);
}

void writeBuffer(JNIEnv* env, const OpenFileRecord* record, jobject buffer, jint offset, jint length,
                 jint sectorSize) noexcept {
    if (record == nullptr) {
        return throwInvalidRecord(env, L"WriteFile");
    }
    Failure failure;
    const char* bytes = bufferAddress(env, buffer, offset);
    if (isUnbuffered(record) && !isSectorMultiple(static_cast<std::uintptr_t>(length), sectorSize)) {
        _snwprintf_s(failure.message.text(), ErrorBuffer::capacity, _TRUNCATE,
                     L"[WindowsUtil.write] Must write in multiple of disk sector size when opening in "
                     L"FILE_FLAG_NO_BUFFERING, incorrect write size %d",
                     static_cast<int>(length));
    } else {
        writeBytes(record, bytes, length, failure);
    }
    throwWriteFailure(env, failure);
}

jint readArray(JNIEnv* env, OpenFileRecord* record, jbyteArray data, jint offset, jint length) noexcept {
    if (record == nullptr) {
        throwInvalidRecord(env, L"ReadFile");
        return readFailed;
    }
    ByteElements elements(env, data, 0);
    if (!elements) {
        return readFailed;
    }
    Failure failure;
    const jint result = readBytes(record, elements.get() + offset, length, failure);
    elements.release();
    if (!failure.message.empty()) {
        throwIOException(env, failure.message.text());
    }
    return result;
}

jint readBuffer(JNIEnv* env, OpenFileRecord* record, jobject buffer, jint offset, jint length,
                jint sectorSize) noexcept {
    if (record == nullptr) {
        throwInvalidRecord(env, L"ReadFile");
        return readFailed;
    }
    Failure failure;
    char* bytes = bufferAddress(env, buffer, offset);
    const jint result = readBytes(record, bytes, length, failure);
    if (failure.message.empty()) {
        return result;
    }
    // The last error is asked for again, behind the formatting of the message, and not taken from the
    // failure.
    if (GetLastError() == ERROR_INVALID_PARAMETER &&
        isSectorMultiple(reinterpret_cast<std::uintptr_t>(bytes), sectorSize) &&
        isSectorMultiple(static_cast<std::uintptr_t>(length), sectorSize) &&
        record->position == record->fileSize) {
        return endOfFile;
    }
    throwIOException(env, failure.message.text());
    return result;
}

std::int64_t seek(JNIEnv* env, const OpenFileRecord* record, std::int64_t position) noexcept {
    return movePointer(env, record, position, FILE_BEGIN);
}

std::int64_t filePosition(JNIEnv* env, const OpenFileRecord* record) noexcept {
    return movePointer(env, record, 0, FILE_CURRENT);
}

std::int64_t skip(JNIEnv* env, const OpenFileRecord* record, std::int64_t distance) noexcept {
    constexpr wchar_t tag[] = L"SetFilePointer";
    if (record == nullptr) {
        throwInvalidRecord(env, tag);
        return -1;
    }
    LARGE_INTEGER position;
    position.QuadPart = distance;
    // 0xFFFFFFFF is a failure only with an error beside it; one of an earlier call must not be taken for it.
    SetLastError(ERROR_SUCCESS);
    position.LowPart = SetFilePointer(record->handle(), static_cast<LONG>(position.LowPart),
                                      &position.HighPart, FILE_CURRENT);
    if (position.LowPart == INVALID_SET_FILE_POINTER && GetLastError() != ERROR_SUCCESS) {
        Failure failure;
        failure.format(tag);
        throwIOException(env, failure.message.text());
        return -1;
    }
    return position.QuadPart;
}

std::int64_t fileSize(JNIEnv* env, const OpenFileRecord* record) noexcept {
    if (record == nullptr) {
        throwInvalidRecord(env, L"GetFileSizeEx");
        return 0;
    }
    LARGE_INTEGER size;
    if (!GetFileSizeEx(record->handle(), &size)) {
        // The message stays empty, and is meant to: callers know this failure by it.
        throwIOException(env, L"");
        return 0;
    }
    return size.QuadPart;
}

}  // namespace winutil::fileio
