#include "filesystem/encrypted_files.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <utility>

#include "bridge/errors.h"
#include "bridge/java_classes.h"
#include "bridge/java_refs.h"

namespace winutil::filesystem {

namespace {

// One word for the whole library, so an interrupt stops every export there is. It orders nothing else.
std::atomic<std::uint32_t> interrupted{0};

// What a callback is given: on the stack of the thread that streams, which is the one it is called on.
struct StreamBridge {
    JNIEnv* env;
    jobject stream;
    jmethodID method;  // write or read
    DWORD wrongLength = 0;
};

void throwCode(JNIEnv* env, const wchar_t* function, DWORD code) noexcept {
    ErrorBuffer message;
    formatWin32Error(function, code, message.text(), ErrorBuffer::capacity);
    throwIOException(env, message.text());
}

// Raises what belongs to the code of a streaming call, except over an exception that is there already.
void throwStreamError(JNIEnv* env, const wchar_t* function, DWORD code) noexcept {
    // An interrupted export ends quietly: whoever interrupted it knows.
    if (!exceptionPending(env) && code != ERROR_SUCCESS && code != exportInterrupted) {
        throwCode(env, function, code);
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

// Gives the system its next block. A length of 0 ends the import, at the end of the stream as on a failure.
DWORD WINAPI importBlock(PBYTE data, PVOID context, PULONG length) noexcept {
    auto& bridge = *static_cast<StreamBridge*>(context);
    const auto offered = static_cast<jint>(std::min<ULONG>(std::exchange(*length, 0), INT32_MAX));
    if (bridge.wrongLength != 0 || exceptionPending(bridge.env)) {
        return ERROR_SUCCESS;
    }
    const LocalRef block(bridge.env, bridge.env->NewByteArray(offered));
    if (!block) {
        return ERROR_SUCCESS;
    }
    const jint count = bridge.env->CallIntMethod(bridge.stream, bridge.method, block.get(), jint{0}, offered);
    if (exceptionPending(bridge.env) || count == -1) {
        return ERROR_SUCCESS;
    }
    if (count < 0 || count > offered) {
        bridge.wrongLength = 1;
        return ERROR_SUCCESS;
    }
    // Not released afterwards, deliberately kept so, at the price of the copy that the JVM may have made.
    const jbyte* elements = bridge.env->GetByteArrayElements(block.get(), nullptr);
    if (elements != nullptr) {
        std::memcpy(data, elements, static_cast<std::size_t>(count));
        *length = static_cast<ULONG>(count);
    }
    return ERROR_SUCCESS;
}

}  // namespace

PVOID openEncryptedFile(JNIEnv* env, const wchar_t* path, ULONG flags) noexcept {
    interrupted.store(0, std::memory_order_relaxed);
    PVOID context = nullptr;
    const DWORD code = OpenEncryptedFileRawW(path, flags, &context);
    if (code != ERROR_SUCCESS) {
        throwCode(env, L"OpenEncryptedFileRawW", code);
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
    if (bridge.wrongLength != 0) {
        throwIOException(env, L"[WindowsUtil.writeEncryptFile] read() returned a length out of range");
        return code;
    }
    throwStreamError(env, L"WriteEncryptedFileRaw", code);
    return code;
}

void interruptExports() noexcept {
    interrupted.store(1, std::memory_order_relaxed);
}

}  // namespace winutil::filesystem
