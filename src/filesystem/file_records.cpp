#include "filesystem/file_records.h"

#include <cstdint>
#include <cstdio>
#include <cwchar>

#include "bridge/java_classes.h"
#include "bridge/java_strings.h"
#include "bridge/java_times.h"
#include "bridge/optional_functions.h"
#include "bridge/paths.h"
#include "filesystem/reparse_points.h"
#include "filesystem/security_text.h"

namespace winutil::filesystem {

namespace {

constexpr std::wstring_view volumeNamePrefix = L"\\\\?\\Volume";

// The fields of a record beside its path, in the order of the Java constructors.
struct RecordFields {
    bool directory;
    std::int64_t size;          // bytes
    std::int64_t lastModified;  // Java time
    DWORD attributes;
    WideString securityDescriptor;
    DWORD linkKind;
    LinkTarget linkTarget;
};

// A record without a descriptor is still a record: the reason is put into words and goes no further.
void noteUnreadablePermission(const wchar_t* path, DWORD code) noexcept {
    wchar_t note[8192];
    const SystemText reason(code);
    _snwprintf_s(note, std::size(note), _TRUNCATE, L"Path \"%s\" cannot get File Permission. Reason=%s", path,
                 reason.get());
}

void readSecurity(const wchar_t* path, const wchar_t* readablePath, bool securityOnFiles,
                  RecordFields& fields) noexcept {
    const bool enabled = fields.directory ? isNtfsVolume(path) : securityOnFiles;
    fields.securityDescriptor = getSecurityDescriptorText(readablePath, recordSecurity, false, enabled);
    if (!fields.securityDescriptor) {
        noteUnreadablePermission(path, GetLastError());
    }
}

void readLink(const wchar_t* path, RecordFields& fields) noexcept {
    fields.linkKind = readReparseKind(path, fields.linkTarget, fields.attributes);
    if ((fields.linkKind & 0xFF) == linkKindNone) {
        fields.linkKind = fields.directory ? linkKindDirectory : linkKindFile;
    } else if (fields.directory &&
               _wcsnicmp(fields.linkTarget, volumeNamePrefix.data(), volumeNamePrefix.size()) == 0) {
        // A mounted volume is a directory with content of its own, not a link.
        fields.linkKind = linkKindDirectory;
        fields.linkTarget[0] = L'\0';
    }
}

jobject buildWinFileRecord(JNIEnv* env, const wchar_t* path, const RecordFields& fields) noexcept {
    const LocalRef type(env, env->FindClass(java_class::winFile));
    if (!type) {
        env->ExceptionClear();
        return nullptr;
    }
    jmethodID constructor = findMethod(env, type.get(), java_method::newWinFile);
    const bool older = constructor == nullptr;
    if (older) {
        env->ExceptionClear();
        constructor = findMethod(env, type.get(), java_method::newOlderWinFile);
    }
    if (constructor == nullptr) {
        env->ExceptionClear();
        return nullptr;
    }
    const LocalRef javaPath(env, newJavaString(env, path));
    if (!javaPath) {
        return nullptr;
    }
    const wchar_t* descriptor = fields.securityDescriptor ? fields.securityDescriptor.get() : L"";
    const LocalRef javaDescriptor(env, newJavaString(env, descriptor));
    if (!javaDescriptor) {
        return nullptr;
    }
    const LocalRef javaTarget(env, newJavaString(env, fields.linkTarget));
    if (!javaTarget) {
        return nullptr;
    }
    const auto directory = static_cast<jboolean>(fields.directory ? JNI_TRUE : JNI_FALSE);
    const auto size = static_cast<jlong>(fields.size);
    const auto lastModified = static_cast<jlong>(fields.lastModified);
    const auto attributes = static_cast<jint>(fields.attributes);
    if (older) {
        const bool reparsePoint = (fields.attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        return env->NewObject(type.get(), constructor, javaPath.get(), directory, size, lastModified,
                              attributes, javaDescriptor.get(),
                              static_cast<jboolean>(reparsePoint ? JNI_TRUE : JNI_FALSE));
    }
    return env->NewObject(type.get(), constructor, javaPath.get(), directory, size, lastModified, attributes,
                          javaDescriptor.get(), static_cast<jbyte>(fields.linkKind), javaTarget.get());
}

}  // namespace

std::int64_t fileSize(DWORD high, DWORD low) noexcept {
    return static_cast<std::int64_t>(std::uint64_t{high} << 32 | low);
}

DWORD getFileAttr(const wchar_t* path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (readAttributeData(path, &data)) {
        return data.dwFileAttributes;
    }
    const WideString longForm = toLongPath(path);
    return longForm ? GetFileAttributesW(longForm.get()) : INVALID_FILE_ATTRIBUTES;
}

jobject makeWinFile(JNIEnv* env, const wchar_t* path, bool withSecurity, bool securityOnFiles,
                    ErrorBuffer& errorBuffer) noexcept {
    if (std::wstring_view(path) == L"\\\\") {
        return nullptr;
    }
    WIN32_FILE_ATTRIBUTE_DATA data;
    WideString longForm;
    const wchar_t* readablePath = path;
    bool readable = readAttributeData(path, &data);
    if (!readable && !hasLongPrefix(path)) {
        longForm = toLongPath(path);
        readablePath = longForm.get();
        readable = readAttributeData(readablePath, &data);
    }
    if (!readable) {
        formatWin32Error(L"GetFileAttributesExW", GetLastError(), errorBuffer.text(), ErrorBuffer::capacity);
        return nullptr;
    }
    RecordFields fields = {};
    fields.directory = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    fields.size = fileSize(data.nFileSizeHigh, data.nFileSizeLow);
    fields.lastModified = toJavaTime(data.ftLastWriteTime);
    fields.attributes = data.dwFileAttributes;
    if (withSecurity) {
        readSecurity(path, readablePath, securityOnFiles, fields);
    }
    readLink(path, fields);
    return buildWinFileRecord(env, path, fields);
}

}  // namespace winutil::filesystem
