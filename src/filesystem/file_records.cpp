#include "filesystem/file_records.h"

#include <cstdio>
#include <cwchar>
#include <iterator>

#include "bridge/errors.h"
#include "bridge/java_calls.h"
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

// Required: the reason is put into words and goes no further, because a record without a descriptor is still
// a record.
void noteUnreadablePermission(const wchar_t* path, DWORD code) noexcept {
    wchar_t note[8192];
    const SystemText reason(code);
    _snwprintf_s(note, std::size(note), _TRUNCATE, L"Path \"%s\" cannot get File Permission. Reason=%s", path,
                 reason.get());
}

// Required: this reason goes no further either, because callers know a missing file by the class alone.
void noteUnreadablePath(DWORD code) noexcept {
    ErrorBuffer note;
    note.format(L"GetFileAttributesExW", code);
}

// Reads the descriptor of `path`, which `readPath` was readable as. Returns false when memory is exhausted.
bool readSecurity(const wchar_t* path, const wchar_t* readPath, bool securityOnFiles,
                  RecordFields& fields) noexcept {
    const bool enabled = fields.directory ? isNtfsVolume(path) : securityOnFiles;
    std::optional<WideString> descriptor =
        getSecurityDescriptorText(readPath, recordSecurity, false, enabled);
    if (!descriptor) {
        return false;
    }
    if (!*descriptor) {
        noteUnreadablePermission(path, GetLastError());
    }
    fields.securityDescriptor = std::move(*descriptor);
    return true;
}

// Returns false when memory is exhausted.
bool readLink(const wchar_t* path, RecordFields& fields) noexcept {
    const std::optional<DWORD> kind = readReparseKind(path, fields.linkTarget, fields.attributes);
    if (!kind) {
        return false;
    }
    fields.linkKind = *kind;
    if ((fields.linkKind & 0xFF) == linkKindNone) {
        fields.linkKind = fields.directory ? linkKindDirectory : linkKindFile;
    } else if (fields.directory &&
               _wcsnicmp(fields.linkTarget, volumeNamePrefix.data(), volumeNamePrefix.size()) == 0) {
        // A mounted volume is a directory with content of its own, not a link.
        fields.linkKind = linkKindDirectory;
        fields.linkTarget[0] = L'\0';
    }
    return true;
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
    const auto size = static_cast<jlong>(fields.size);
    const auto lastModified = static_cast<jlong>(fields.lastModified);
    const auto attributes = static_cast<jint>(fields.attributes);
    const wchar_t* descriptor = fields.securityDescriptor ? fields.securityDescriptor.get() : L"";
    if (older) {
        const bool reparsePoint = (fields.attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        return newObject(env, type.get(), constructor, path, fields.directory, size, lastModified, attributes,
                         descriptor, reparsePoint)
            .release();
    }
    return newObject(env, type.get(), constructor, path, fields.directory, size, lastModified, attributes,
                     descriptor, static_cast<jbyte>(fields.linkKind), fields.linkTarget)
        .release();
}

}  // namespace

std::int64_t joinSize(DWORD high, DWORD low) noexcept {
    return static_cast<std::int64_t>(std::uint64_t{high} << 32 | low);
}

std::optional<DWORD> getFileAttr(const wchar_t* path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (readAttributeData(path, &data)) {
        return data.dwFileAttributes;
    }
    const WideString longForm = toLongPath(path);
    if (!longForm) {
        return std::nullopt;
    }
    return GetFileAttributesW(longForm.get());
}

jobject makeWinFile(JNIEnv* env, const wchar_t* path, bool withSecurity, bool securityOnFiles) noexcept {
    if (std::wstring_view(path) == L"\\\\") {
        return nullptr;
    }
    WIN32_FILE_ATTRIBUTE_DATA data;
    WideString longForm;
    const wchar_t* readPath = path;
    bool readable = readAttributeData(path, &data);
    if (!readable && !hasLongPrefix(path)) {
        longForm = toLongPath(path);
        readPath = longForm.get();
        readable = longForm && readAttributeData(readPath, &data);
    }
    if (!readable) {
        noteUnreadablePath(GetLastError());
        return nullptr;
    }
    RecordFields fields = {};
    fields.directory = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    fields.size = joinSize(data.nFileSizeHigh, data.nFileSizeLow);
    fields.lastModified = toJavaTime(data.ftLastWriteTime);
    fields.attributes = data.dwFileAttributes;
    if ((withSecurity && !readSecurity(path, readPath, securityOnFiles, fields)) || !readLink(path, fields)) {
        return nullptr;
    }
    return buildWinFileRecord(env, path, fields);
}

}  // namespace winutil::filesystem
