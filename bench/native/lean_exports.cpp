// The floor with Java: the leanest native methods that make the same system calls and give Java the same
// objects. They check nothing that can go wrong beyond what the benchmark needs; they mark how near a careful
// library can come, and are no way to write one.
#include <windows.h>

#include <com_qarvo_winutil_bench_Lean.h>
#include <sddl.h>

#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <string_view>

#include "bare.h"

using namespace bench;

namespace {

constexpr SECURITY_INFORMATION ownerGroupDacl =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

// A path on the stack, long enough for everything that the benchmark makes.
struct PathChars {
    static constexpr jsize capacity = 1024;
    wchar_t text[capacity];
    jsize length;

    PathChars(JNIEnv* env, jstring path) : length(env->GetStringLength(path)) {
        if (length >= capacity) {
            std::abort();
        }
        env->GetStringRegion(path, 0, length, reinterpret_cast<jchar*>(text));
        text[length] = L'\0';
    }
};

jstring newString(JNIEnv* env, const wchar_t* text, std::size_t length) {
    return env->NewString(reinterpret_cast<const jchar*>(text), static_cast<jsize>(length));
}

jstring readSecurity(JNIEnv* env, const wchar_t* path, bool directory) {
    wchar_t volume[512];
    wchar_t fileSystem[260];
    if (directory && (!GetVolumePathNameW(path, volume, static_cast<DWORD>(std::size(volume))) ||
                      !GetVolumeInformationW(volume, nullptr, 0, nullptr, nullptr, nullptr, fileSystem,
                                             static_cast<DWORD>(std::size(fileSystem))) ||
                      std::wcsstr(fileSystem, L"NTFS") == nullptr)) {
        return newString(env, L"", 0);
    }
    unsigned char descriptor[4096];
    DWORD needed = 0;
    wchar_t* text = nullptr;
    if (!GetFileSecurityW(path, ownerGroupDacl, descriptor, sizeof descriptor, &needed) ||
        !ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1, ownerGroupDacl,
                                                              &text, nullptr)) {
        return newString(env, L"", 0);
    }
    jstring result = newString(env, text, std::wcslen(text));
    LocalFree(text);
    return result;
}

void deliver(JNIEnv* env, jobject collector, jmethodID addFile, PathChars& path, bool withSecurity,
             jstring empty, const WIN32_FIND_DATAW& found) {
    const std::size_t nameLength = std::wcslen(found.cFileName);
    std::wmemcpy(path.text + path.length, found.cFileName, nameLength + 1);
    const bool directory = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    jstring security = empty;
    if (withSecurity) {
        WIN32_FILE_ATTRIBUTE_DATA data;
        GetFileAttributesExW(path.text, GetFileExInfoStandard, &data);
        security = readSecurity(env, path.text, directory);
    }
    jstring javaPath = newString(env, path.text, static_cast<std::size_t>(path.length) + nameLength);
    env->CallVoidMethod(collector, addFile, javaPath, static_cast<jboolean>(directory ? JNI_TRUE : JNI_FALSE),
                        static_cast<jlong>(std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow),
                        static_cast<jlong>(toJavaTime(found.ftLastWriteTime)),
                        static_cast<jint>(found.dwFileAttributes), security,
                        static_cast<jboolean>((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0));
    env->DeleteLocalRef(javaPath);
    if (withSecurity) {
        env->DeleteLocalRef(security);
    }
}

bool query(JNIEnv* env, jstring path, WIN32_FILE_ATTRIBUTE_DATA& data) {
    return GetFileAttributesExW(PathChars(env, path).text, GetFileExInfoStandard, &data) != FALSE;
}

HANDLE toHandle(jlong file) {
    return reinterpret_cast<HANDLE>(file);
}

// A buffer that is kept from call to call.
char* scratch(jint capacity) {
    static char* memory = nullptr;
    static jint size = 0;
    if (size < capacity) {
        std::free(memory);
        memory = static_cast<char*>(std::malloc(static_cast<std::size_t>(capacity)));
        size = memory == nullptr ? 0 : capacity;
    }
    return memory;
}

}  // namespace

JNIEXPORT void JNICALL Java_com_qarvo_winutil_bench_Lean_list(JNIEnv* env, jclass, jobject collector,
                                                              jstring directory, jboolean withSecurity) {
    PathChars path(env, directory);
    wchar_t pattern[PathChars::capacity] = L"\\\\?\\";
    std::wmemcpy(pattern + 4, path.text, static_cast<std::size_t>(path.length));
    std::wmemcpy(pattern + 4 + path.length, L"\\*.*", 5);
    path.text[path.length++] = L'\\';
    jclass type = env->GetObjectClass(collector);
    const jmethodID addFile =
        env->GetMethodID(type, "addFile", "(Ljava/lang/String;ZJJILjava/lang/String;Z)V");
    jstring empty = newString(env, L"", 0);
    WIN32_FIND_DATAW found;
    GetFileAttributesExW(pattern + 4, GetFileExInfoStandard, &found);
    const HANDLE search = FindFirstFileW(pattern, &found);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        const std::wstring_view name(found.cFileName);
        if (name != L"." && name != L"..") {
            deliver(env, collector, addFile, path, withSecurity != JNI_FALSE, empty, found);
        }
    } while (FindNextFileW(search, &found));
    FindClose(search);
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Lean_open(JNIEnv* env, jclass, jstring path,
                                                               jint access) {
    const HANDLE file =
        CreateFileW(PathChars(env, path).text, static_cast<DWORD>(access), FILE_SHARE_READ | FILE_SHARE_WRITE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_ATTRIBUTE_READONLY, nullptr);
    LARGE_INTEGER size;
    return GetFileSizeEx(file, &size) ? reinterpret_cast<jlong>(file) : 0;
}

JNIEXPORT void JNICALL Java_com_qarvo_winutil_bench_Lean_close(JNIEnv*, jclass, jlong file) {
    CloseHandle(toHandle(file));
}

JNIEXPORT jint JNICALL Java_com_qarvo_winutil_bench_Lean_read__JLjava_nio_ByteBuffer_2I(JNIEnv* env, jclass,
                                                                                        jlong file,
                                                                                        jobject buffer,
                                                                                        jint length) {
    DWORD count = 0;
    ReadFile(toHandle(file), env->GetDirectBufferAddress(buffer), static_cast<DWORD>(length), &count,
             nullptr);
    return static_cast<jint>(count);
}

JNIEXPORT jint JNICALL Java_com_qarvo_winutil_bench_Lean_write__JLjava_nio_ByteBuffer_2I(JNIEnv* env, jclass,
                                                                                         jlong file,
                                                                                         jobject buffer,
                                                                                         jint length) {
    DWORD count = 0;
    WriteFile(toHandle(file), env->GetDirectBufferAddress(buffer), static_cast<DWORD>(length), &count,
              nullptr);
    return static_cast<jint>(count);
}

JNIEXPORT jint JNICALL Java_com_qarvo_winutil_bench_Lean_read__J_3BI(JNIEnv* env, jclass, jlong file,
                                                                     jbyteArray data, jint length) {
    char* bytes = scratch(length);
    DWORD count = 0;
    ReadFile(toHandle(file), bytes, static_cast<DWORD>(length), &count, nullptr);
    env->SetByteArrayRegion(data, 0, static_cast<jsize>(count), reinterpret_cast<jbyte*>(bytes));
    return static_cast<jint>(count);
}

JNIEXPORT jint JNICALL Java_com_qarvo_winutil_bench_Lean_write__J_3BI(JNIEnv* env, jclass, jlong file,
                                                                      jbyteArray data, jint length) {
    char* bytes = scratch(length);
    env->GetByteArrayRegion(data, 0, length, reinterpret_cast<jbyte*>(bytes));
    DWORD count = 0;
    WriteFile(toHandle(file), bytes, static_cast<DWORD>(length), &count, nullptr);
    return static_cast<jint>(count);
}

JNIEXPORT jboolean JNICALL Java_com_qarvo_winutil_bench_Lean_exists(JNIEnv* env, jclass, jstring path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return query(env, path, data) ? JNI_TRUE : JNI_FALSE;
}

JNIEXPORT jint JNICALL Java_com_qarvo_winutil_bench_Lean_attributes(JNIEnv* env, jclass, jstring path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return query(env, path, data) ? static_cast<jint>(data.dwFileAttributes) : -1;
}

JNIEXPORT jlong JNICALL Java_com_qarvo_winutil_bench_Lean_lastModified(JNIEnv* env, jclass, jstring path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return query(env, path, data) ? toJavaTime(data.ftLastWriteTime) : 0;
}
