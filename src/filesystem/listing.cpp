#include "filesystem/listing.h"

#include <cstddef>
#include <cwchar>
#include <string_view>

#include "bridge/errors.h"
#include "bridge/java_calls.h"
#include "bridge/java_times.h"
#include "bridge/optional_functions.h"
#include "bridge/paths.h"
#include "filesystem/file_records.h"
#include "filesystem/security_text.h"

namespace winutil::filesystem {

namespace {

constexpr std::wstring_view everything = L"*.*";
constexpr std::size_t patternRoom = 15;  // the long prefix, "\*.*" and the terminator

// The search fills a find buffer; the probe in front of it only its beginning, which has the same layout.
static_assert(offsetof(WIN32_FIND_DATAW, nFileSizeLow) == offsetof(WIN32_FILE_ATTRIBUTE_DATA, nFileSizeLow));

struct Walk {
    JNIEnv* env;
    jobject collector;
    std::wstring_view directory;
    const ListingOptions& options;
    CExCallback& events;
    // One buffer for the paths of all entries: the directory and a backslash, and behind them the entry's
    // name.
    WideString path;
    std::size_t nameStart = 0;
    // The error of a listener without the method: set aside while the entries are delivered, raised when all
    // of them were.
    LocalRef<jthrowable> listenerError;
};

bool endsInBackslash(std::wstring_view path) noexcept {
    return !path.empty() && path.back() == L'\\';
}

// Appends `name` to the path in a buffer that has room for it, behind exactly one backslash.
void appendName(wchar_t* path, std::size_t capacity, const wchar_t* name) noexcept {
    if (!endsInBackslash(path)) {
        wcscat_s(path, capacity, L"\\");
    }
    wcscat_s(path, capacity, name);
}

// Makes the buffer of the entries' paths. Returns false when memory is exhausted.
bool startPaths(Walk& walk) noexcept {
    walk.path = copyText(walk.directory.data(), walk.directory.size(), 1 + MAX_PATH);
    if (!walk.path) {
        return false;
    }
    walk.nameStart = walk.directory.size();
    if (!endsInBackslash(walk.directory)) {
        walk.path.get()[walk.nameStart++] = L'\\';
    }
    return true;
}

// Returns the path of an entry, terminated, until the next one is asked for.
std::wstring_view entryPath(Walk& walk, const WIN32_FIND_DATAW& found) noexcept {
    const std::size_t length = wcsnlen(found.cFileName, MAX_PATH);
    std::wmemcpy(walk.path.get() + walk.nameStart, found.cFileName, length);
    walk.path.get()[walk.nameStart + length] = L'\0';
    return {walk.path.get(), walk.nameStart + length};
}

bool isDotName(const wchar_t* name) noexcept {
    return name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'));
}

// Reports an entry through the listener. Returns false when a Java exception ends the listing.
bool reportEntry(Walk& walk, const wchar_t* path, DWORD code) noexcept {
    const bool called = walk.events.fireFileErrorEvent(path, SystemText(code).get());
    LocalRef<jthrowable> error(walk.env, walk.env->ExceptionOccurred());
    if (!error) {
        return true;
    }
    if (called) {
        return false;
    }
    walk.env->ExceptionClear();
    if (!walk.listenerError) {
        walk.listenerError = std::move(error);
    }
    return true;
}

// Reads an entry's security descriptor; none where it is not asked for or cannot be read. Returns false when
// a Java exception ends the listing.
bool readEntrySecurity(Walk& walk, const wchar_t* path, WideString& text) noexcept {
    if (!walk.options.withSecurity) {
        return true;
    }
    if (const std::optional<bool> directory = isDirectoryPath(path)) {
        const bool enabled = *directory ? isNtfsVolume(path) : walk.options.securityOnFiles;
        text = getSecurityDescriptorText(path, recordSecurity, false, enabled).value_or(WideString());
    }
    return text || reportEntry(walk, path, GetLastError());
}

// Delivers one entry. Returns false when a Java exception ends the listing.
bool deliverEntry(Walk& walk, const WIN32_FIND_DATAW& found) noexcept {
    JNIEnv* env = walk.env;
    const std::wstring_view path = entryPath(walk, found);
    WideString security;
    if (!readEntrySecurity(walk, path.data(), security)) {
        return false;
    }
    const LocalRef javaPath(env, newJavaString(env, path));
    if (!javaPath) {
        return false;
    }
    const LocalRef javaSecurity(env, newJavaString(env, security ? security.get() : L""));
    if (!javaSecurity) {
        return false;
    }
    const bool directory = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    // Required: without attributes nothing is a reparse point either, because the flag is one of them.
    const DWORD attributes = walk.options.withAttributes ? found.dwFileAttributes : 0;
    const bool reparsePoint = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return callCollector(env, walk.collector, java_method::addFile, javaPath, directory,
                         static_cast<jlong>(joinSize(found.nFileSizeHigh, found.nFileSizeLow)),
                         static_cast<jlong>(toJavaTime(found.ftLastWriteTime)), static_cast<jint>(attributes),
                         javaSecurity, reparsePoint);
}

// Delivers what the buffer holds and what the search finds behind it.
void deliverAll(Walk& walk, const SearchHandle& search, WIN32_FIND_DATAW& found) noexcept {
    if (!startPaths(walk)) {
        return throwSystemText(walk.env, ERROR_NOT_ENOUGH_MEMORY);
    }
    do {
        if (!isDotName(found.cFileName) && !deliverEntry(walk, found)) {
            return;
        }
    } while (FindNextFileW(search.get(), &found));
    const DWORD code = GetLastError();
    if (code != ERROR_NO_MORE_FILES) {
        throwSystemText(walk.env, code);
    } else if (walk.listenerError) {
        walk.env->Throw(walk.listenerError.get());
    }
}

}  // namespace

void listWinFiles(JNIEnv* env, jobject collector, const wchar_t* directory, const ListingOptions& options,
                  CExCallback& events) noexcept {
    Walk walk{env, collector, directory, options, events, {}, 0, {}};
    WIN32_FIND_DATAW found = {};
    SearchHandle search;
    WideString pattern = copyText(directory, walk.directory.size(), patternRoom);
    if (!pattern) {
        return throwSystemText(env, ERROR_NOT_ENOUGH_MEMORY);
    }
    appendName(pattern.get(), walk.directory.size() + patternRoom + 1, everything.data());
    // Required: a probe for a name with wildcards, and the walk without a search that would follow its
    // success, because the Java side relies on how it fails for every real directory, those in long form
    // included.
    if (!readAttributeData(pattern.get(), &found)) {
        if (hasLongPrefix(directory)) {
            return throwSystemText(env, GetLastError());
        }
        pattern = toLongPath(directory, patternRoom);
        if (!pattern) {
            return throwSystemText(env, ERROR_NOT_ENOUGH_MEMORY);
        }
        appendName(pattern.get(), walk.directory.size() + 2 * patternRoom, everything.data());
        search = SearchHandle(FindFirstFileW(pattern.get(), &found));
        if (!search) {
            return throwSystemText(env, GetLastError());
        }
    }
    deliverAll(walk, search, found);
}

}  // namespace winutil::filesystem
