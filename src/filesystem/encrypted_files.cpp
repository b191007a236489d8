#include "filesystem/encrypted_files.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <utility>

#include "bridge/java_classes.h"

namespace winutil::filesystem {

namespace {

// One word for the whole library, so an interrupt stops every export there is. It orders nothing else.
std::atomic<std::uint32_t> interrupted{0};

// What a callback is given: on the stack of the thread that streams, which is the one it is called on.
struct StreamBridge {
    JNIEnv* env;
    jobject stream;
    jmethodID method;               // write or read
    DWORD failure = ERROR_SUCCESS;  // what ended an import
};

// Raises what belongs to the code of a streaming call.
void throwStreamError(JNIEnv* env, const wchar_t* function, DWORD code) noexcept {
    // Required: an interrupted export raises nothing, because whoever interrupted it knows.
    if (code != ERROR_SUCCESS && code != exportInterrupted) {
        throwWin32Error(env, function, code);
    }
}

// Takes one block from the system. An exception that `write` throws is not looked at here but before the next
// block; any other way to lose a block ends the export at once.
DWORD WINAPI exportBlock(PBYTE data, PVOID context, ULONG length) noexcept {
    const auto& bridge = *static_cast<const StreamBridge*>(context);
    if (interrupted.load(std::memory_order_relaxed) != 0 || exceptionPending(bridge.env)) {
        return exportInterrupted;
    }
    // A length that no array has comes out negative, and the JVM says so.
    const auto count = static_cast<jsize>(length);
    const LocalRef block(bridge.env, bridge.env->NewByteArray(count));
    if (!block) {
        return exportInterrupted;
    }
    bridge.env->SetByteArrayRegion(block.get(), 0, count, reinterpret_cast<const jbyte*>(data));
    bridge.env->CallVoidMethod(bridge.stream, bridge.method, block.get(), jint{0}, count);
    return ERROR_SUCCESS;
}

// Fills a block from the stream and sets its length, which is 0 at the end of the stream. Returns the code
// that ends the import when there is nothing to fill it with.
DWORD fillBlock(const StreamBridge& bridge, PBYTE data, jint offered, ULONG& length) noexcept {
    JNIEnv* env = bridge.env;
    const LocalRef block(env, env->NewByteArray(offered));
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    const jint count = env->CallIntMethod(bridge.stream, bridge.method, block.get(), jint{0}, offered);
    if (exceptionPending(env)) {
        return ERROR_READ_FAULT;
    }
    if (count == -1) {
        return ERROR_SUCCESS;
    }
    if (count < 0 || count > offered) {
        return ERROR_INVALID_DATA;
    }
    // Required: the elements stay unreleased, because the method is known to keep every block of a stream.
    const jbyte* elements = env->GetByteArrayElements(block.get(), nullptr);
    if (elements == nullptr) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    std::memcpy(data, elements, static_cast<std::size_t>(count));
    length = static_cast<ULONG>(count);
    return ERROR_SUCCESS;
}

// Gives the system its next block. A failure is answered with its code, then and whenever more is asked for:
// at a success without a byte the system would take the file for complete.
DWORD WINAPI importBlock(PBYTE data, PVOID context, PULONG length) noexcept {
    auto& bridge = *static_cast<StreamBridge*>(context);
    const auto offered = static_cast<jint>(std::min<ULONG>(std::exchange(*length, 0), INT32_MAX));
    if (bridge.failure == ERROR_SUCCESS) {
        bridge.failure = fillBlock(bridge, data, offered, *length);
    }
    return bridge.failure;
}

}  // namespace

PVOID openEncryptedFile(const wchar_t* path, ULONG flags, ErrorBuffer& errorBuffer) noexcept {
    interrupted.store(0, std::memory_order_relaxed);
    PVOID context = nullptr;
    const DWORD code = OpenEncryptedFileRawW(path, flags, &context);
    if (code != ERROR_SUCCESS) {
        errorBuffer.format(openEncryptedTag, code);
    }
    return context;
}

DWORD exportEncryptedFile(JNIEnv* env, PVOID context, jobject stream) noexcept {
    if (stream == nullptr) {
        throwRuntimeException(env, L"[WindowsUtil.readEncryptFile] jPipeOutputStream cannot be null");
        return ERROR_SUCCESS;
    }
    const jmethodID write = findCollectorMethod(env, stream, java_method::write);
    if (write == nullptr) {
        throwIOException(env, L"[Ljava/io/PipedOutputStream;] Cannot get write() methodID");
        return ERROR_SUCCESS;
    }
    StreamBridge bridge{.env = env, .stream = stream, .method = write};
    const DWORD code = ReadEncryptedFileRaw(exportBlock, &bridge, context);
    throwStreamError(env, L"ReadEncryptedFileRaw", code);
    return code;
}

DWORD importEncryptedFile(JNIEnv* env, PVOID context, jobject stream) noexcept {
    const jmethodID read = findCollectorMethod(env, stream, java_method::read);
    if (read == nullptr) {
        throwIOException(env, L"[Ljava/io/InputStream;] Cannot get read() methodID");
        return ERROR_SUCCESS;
    }
    StreamBridge bridge{.env = env, .stream = stream, .method = read};
    const DWORD code = WriteEncryptedFileRaw(importBlock, &bridge, context);
    if (bridge.failure == ERROR_INVALID_DATA) {
        throwIOException(env, L"[WindowsUtil.writeEncryptFile] read() returned a length out of range");
    } else {
        // The failure counts also where the system made nothing of it.
        throwStreamError(env, L"WriteEncryptedFileRaw",
                         bridge.failure == ERROR_SUCCESS ? code : bridge.failure);
    }
    return code;
}

void interruptExports() noexcept {
    interrupted.store(1, std::memory_order_relaxed);
}

}  // namespace winutil::filesystem
