#include "fileio/transfer.h"

#include "bridge/java_arrays.h"

namespace winutil::fileio {

namespace {

constexpr wchar_t writeTag[] = L"WriteFile";
constexpr wchar_t readTag[] = L"ReadFile";

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
void writeBytes(const OpenFileRecord* record, const void* bytes, jint length,
                ErrorBuffer& errorBuffer) noexcept {
    DWORD written = 0;
    if (!WriteFile(record->handle(), bytes, static_cast<DWORD>(length), &written, nullptr)) {
        errorBuffer.format(writeTag, GetLastError());
    }
}

jint cannotRead(DWORD code, ErrorBuffer& errorBuffer) noexcept {
    errorBuffer.format(readTag, code);
    if (errorBuffer.empty()) {
        errorBuffer.print(L"ReadFile failed with LastError code = %u", static_cast<unsigned>(code));
    }
    return readFailed;
}

jint readBytes(OpenFileRecord* record, void* bytes, jint length, ErrorBuffer& errorBuffer) noexcept {
    DWORD count = 0;
    if (!ReadFile(record->handle(), bytes, static_cast<DWORD>(length), &count, nullptr)) {
        return cannotRead(GetLastError(), errorBuffer);
    }
    if (count == 0) {
        return endOfFile;
    }
    record->position += count;
    return static_cast<jint>(count);
}

std::optional<std::int64_t> movePointer(const OpenFileRecord* record, std::int64_t distance, DWORD method,
                                        ErrorBuffer& errorBuffer) noexcept {
    constexpr wchar_t tag[] = L"SetFilePointerEx";
    if (record == nullptr) {
        errorBuffer.format(tag, ERROR_INVALID_HANDLE);
        return std::nullopt;
    }
    LARGE_INTEGER move;
    move.QuadPart = distance;
    LARGE_INTEGER position;
    if (!SetFilePointerEx(record->handle(), move, &position, method)) {
        errorBuffer.format(tag, GetLastError());
        return std::nullopt;
    }
    return position.QuadPart;
}

}  // namespace

void writeArray(JNIEnv* env, const OpenFileRecord* record, jbyteArray data, jint offset, jint length,
                ErrorBuffer& errorBuffer) noexcept {
    if (record == nullptr) {
        return errorBuffer.format(writeTag, ERROR_INVALID_HANDLE);
    }
    const ByteElements elements(env, data, JNI_ABORT);
    if (!elements) {
        return errorBuffer.format(writeTag, ERROR_NOT_ENOUGH_MEMORY);
    }
    writeBytes(record, elements.get() + offset, length, errorBuffer);
}

void writeBuffer(JNIEnv* env, const OpenFileRecord* record, jobject buffer, jint offset, jint length,
                 jint sectorSize, ErrorBuffer& errorBuffer) noexcept {
    if (record == nullptr) {
        return errorBuffer.format(writeTag, ERROR_INVALID_HANDLE);
    }
    const char* bytes = bufferAddress(env, buffer, offset);
    if (isUnbuffered(record) && !isSectorMultiple(static_cast<std::uintptr_t>(length), sectorSize)) {
        errorBuffer.print(
            L"[WindowsUtil.write] Must write in multiple of disk sector size when opening in "
            L"FILE_FLAG_NO_BUFFERING, incorrect write size %d",
            static_cast<int>(length));
    } else {
        writeBytes(record, bytes, length, errorBuffer);
    }
}

jint readArray(JNIEnv* env, OpenFileRecord* record, jbyteArray data, jint offset, jint length,
               ErrorBuffer& errorBuffer) noexcept {
    if (record == nullptr) {
        return cannotRead(ERROR_INVALID_HANDLE, errorBuffer);
    }
    const ByteElements elements(env, data, 0);
    if (!elements) {
        return cannotRead(ERROR_NOT_ENOUGH_MEMORY, errorBuffer);
    }
    return readBytes(record, elements.get() + offset, length, errorBuffer);
}

jint readBuffer(JNIEnv* env, OpenFileRecord* record, jobject buffer, jint offset, jint length,
                jint sectorSize, ErrorBuffer& errorBuffer) noexcept {
    if (record == nullptr) {
        return cannotRead(ERROR_INVALID_HANDLE, errorBuffer);
    }
    char* bytes = bufferAddress(env, buffer, offset);
    const jint result = readBytes(record, bytes, length, errorBuffer);
    // Required: the last error is asked for again, behind the formatting of the message, because the end is
    // told by the code that is left then, and not by that of the read.
    if (result == readFailed && GetLastError() == ERROR_INVALID_PARAMETER &&
        isSectorMultiple(reinterpret_cast<std::uintptr_t>(bytes), sectorSize) &&
        isSectorMultiple(static_cast<std::uintptr_t>(length), sectorSize) &&
        record->position == record->fileSize) {
        return endOfFile;
    }
    return result;
}

std::optional<std::int64_t> seek(const OpenFileRecord* record, std::int64_t position,
                                 ErrorBuffer& errorBuffer) noexcept {
    return movePointer(record, position, FILE_BEGIN, errorBuffer);
}

std::optional<std::int64_t> filePosition(const OpenFileRecord* record, ErrorBuffer& errorBuffer) noexcept {
    return movePointer(record, 0, FILE_CURRENT, errorBuffer);
}

std::optional<std::int64_t> skip(const OpenFileRecord* record, std::int64_t distance,
                                 ErrorBuffer& errorBuffer) noexcept {
    constexpr wchar_t tag[] = L"SetFilePointer";
    if (record == nullptr) {
        errorBuffer.format(tag, ERROR_INVALID_HANDLE);
        return std::nullopt;
    }
    LARGE_INTEGER position;
    position.QuadPart = distance;
    // 0xFFFFFFFF is a failure only with an error beside it; one of an earlier call must not be taken for it.
    SetLastError(ERROR_SUCCESS);
    position.LowPart = SetFilePointer(record->handle(), static_cast<LONG>(position.LowPart),
                                      &position.HighPart, FILE_CURRENT);
    if (position.LowPart == INVALID_SET_FILE_POINTER && GetLastError() != ERROR_SUCCESS) {
        errorBuffer.format(tag, GetLastError());
        return std::nullopt;
    }
    return position.QuadPart;
}

std::optional<std::int64_t> fileSize(const OpenFileRecord* record, ErrorBuffer& errorBuffer) noexcept {
    if (record == nullptr) {
        errorBuffer.format(L"GetFileSizeEx", ERROR_INVALID_HANDLE);
        return std::nullopt;
    }
    LARGE_INTEGER size;
    if (!GetFileSizeEx(record->handle(), &size)) {
        // Required: the message stays empty, because callers know this failure by it.
        return std::nullopt;
    }
    return size.QuadPart;
}

}  // namespace winutil::fileio
