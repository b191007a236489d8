#include "bare.h"

#include <sddl.h>
#include <tlhelp32.h>

#include <cstddef>
#include <cwchar>
#include <iterator>

#include "digest.h"

namespace bench {

namespace {

constexpr SECURITY_INFORMATION ownerGroupDacl =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

bool isDirectory(const wchar_t* path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    return GetFileAttributesExW(path, GetFileExInfoStandard, &data) &&
           (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool isNtfs(const wchar_t* path) {
    wchar_t volume[512];
    wchar_t fileSystem[260];
    return GetVolumePathNameW(path, volume, static_cast<DWORD>(std::size(volume))) &&
           GetVolumeInformationW(volume, nullptr, 0, nullptr, nullptr, nullptr, fileSystem,
                                 static_cast<DWORD>(std::size(fileSystem))) &&
           std::wcsstr(fileSystem, L"NTFS") != nullptr;
}

// Returns the text of a descriptor that the caller frees with LocalFree, or null.
wchar_t* readSecurity(const wchar_t* path) {
    if (isDirectory(path) && !isNtfs(path)) {
        return nullptr;
    }
    std::byte descriptor[4096];
    DWORD needed = 0;
    wchar_t* text = nullptr;
    if (!GetFileSecurityW(path, ownerGroupDacl, descriptor, sizeof descriptor, &needed) ||
        !ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1, ownerGroupDacl,
                                                              &text, nullptr)) {
        return nullptr;
    }
    return text;
}

std::uint64_t digestOf(const WIN32_FIND_DATAW& found, const wchar_t* security, int fields) {
    EntryDigest digest(found.cFileName);
    if ((fields & fieldDirectory) != 0) {
        digest.add((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? 1U : 0U);
    }
    if ((fields & fieldSize) != 0) {
        digest.add(std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow);
    }
    if ((fields & fieldTime) != 0) {
        digest.add(static_cast<std::uint64_t>(toJavaTime(found.ftLastWriteTime)));
    }
    if ((fields & fieldAttributes) != 0) {
        digest.add(std::uint64_t{found.dwFileAttributes});
    }
    if ((fields & fieldSecurity) != 0 && security != nullptr) {
        digest.add(std::wstring_view(security));
    }
    return digest.get();
}

bool isDotName(const wchar_t* name) {
    return std::wcscmp(name, L".") == 0 || std::wcscmp(name, L"..") == 0;
}

template <class Query>
std::int64_t sumOver(const Paths& paths, Query query) {
    std::int64_t sum = 0;
    for (const std::wstring& path : paths) {
        WIN32_FILE_ATTRIBUTE_DATA data;
        if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
            sum += query(data);
        }
    }
    return sum;
}

// Whether the process has an account with a name.
bool hasOwner(DWORD processId) {
    const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, processId);
    HANDLE token = nullptr;
    std::byte user[256];
    DWORD size = 0;
    bool found = process != nullptr && OpenProcessToken(process, TOKEN_QUERY, &token) &&
                 GetTokenInformation(token, TokenUser, user, sizeof user, &size);
    if (found) {
        wchar_t account[1024];
        wchar_t domain[1024];
        DWORD accountSize = static_cast<DWORD>(std::size(account));
        DWORD domainSize = static_cast<DWORD>(std::size(domain));
        SID_NAME_USE use = SidTypeUnknown;
        DWORD session = 0;
        found = LookupAccountSidW(nullptr, reinterpret_cast<const TOKEN_USER*>(user)->User.Sid, account,
                                  &accountSize, domain, &domainSize, &use) &&
                ProcessIdToSessionId(processId, &session);
    }
    CloseHandle(token);
    CloseHandle(process);
    return found;
}

}  // namespace

std::int64_t toJavaTime(const FILETIME& time) noexcept {
    constexpr std::int64_t unitsPerMillisecond = 10000;
    constexpr std::int64_t epochs = 11644473600000;
    const std::uint64_t units = std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    return static_cast<std::int64_t>(units) / unitsPerMillisecond - epochs;
}

ListingResult listDirectory(const std::wstring& directory, bool withSecurity, int digestFields,
                            Sampler sampler, void* context) {
    std::wstring path = directory + L"\\*.*";
    WIN32_FIND_DATAW found;
    // The library asks this first, whatever comes of it.
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &found);
    const HANDLE search = FindFirstFileW((L"\\\\?\\" + path).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return {-1, 0};
    }
    ListingResult result = {};
    do {
        if (isDotName(found.cFileName)) {
            continue;
        }
        wchar_t* security = nullptr;
        if (withSecurity) {
            path.replace(directory.size() + 1, std::wstring::npos, found.cFileName);
            security = readSecurity(path.c_str());
        }
        if (digestFields >= 0) {
            result.digest += digestOf(found, security, digestFields);
        }
        LocalFree(security);
        if (++result.entries % sampleInterval == 0 && sampler != nullptr) {
            sampler(context);
        }
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return result;
}

std::int64_t readFile(const std::wstring& path, char* buffer, DWORD block) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                    FILE_FLAG_BACKUP_SEMANTICS | FILE_ATTRIBUTE_READONLY, nullptr);
    LARGE_INTEGER size;
    if (file == INVALID_HANDLE_VALUE || !GetFileSizeEx(file, &size)) {
        return -1;
    }
    std::int64_t total = 0;
    DWORD count = 0;
    while (ReadFile(file, buffer, block, &count, nullptr) && count > 0) {
        total += count;
    }
    CloseHandle(file);
    return total;
}

std::int64_t overwriteFile(const std::wstring& path, const char* buffer, DWORD block, std::int64_t total) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    LARGE_INTEGER size;
    if (file == INVALID_HANDLE_VALUE || !GetFileSizeEx(file, &size)) {
        return -1;
    }
    std::int64_t done = 0;
    DWORD count = 0;
    while (done < total && WriteFile(file, buffer, block, &count, nullptr)) {
        done += count;
    }
    CloseHandle(file);
    return done;
}

std::int64_t readFiles(const Paths& paths, char* buffer, DWORD capacity) {
    std::int64_t total = 0;
    for (const std::wstring& path : paths) {
        const HANDLE file =
            CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                        OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_ATTRIBUTE_READONLY, nullptr);
        LARGE_INTEGER size;
        DWORD count = 0;
        if (file == INVALID_HANDLE_VALUE || !GetFileSizeEx(file, &size) ||
            !ReadFile(file, buffer, capacity, &count, nullptr)) {
            return -1;
        }
        CloseHandle(file);
        total += count;
    }
    return total;
}

std::int64_t countNumbers(const std::wstring& key) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) {
        return -1;
    }
    std::int64_t count = 0;
    char name[1024];
    DWORD nameSize = sizeof name;
    DWORD type = REG_NONE;
    for (DWORD index = 0;
         RegEnumValueA(opened, index, name, &nameSize, nullptr, &type, nullptr, nullptr) == ERROR_SUCCESS;
         ++index) {
        DWORD number = 0;
        DWORD size = sizeof number;
        if (RegQueryValueExA(opened, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size) ==
            ERROR_SUCCESS) {
            ++count;
        }
        nameSize = sizeof name;
    }
    RegCloseKey(opened);
    return count;
}

std::int64_t countProcesses(const std::wstring& executableName) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    std::int64_t count = 0;
    for (BOOL more = Process32FirstW(snapshot, &entry); more; more = Process32NextW(snapshot, &entry)) {
        if (_wcsicmp(executableName.c_str(), entry.szExeFile) == 0 && hasOwner(entry.th32ProcessID)) {
            ++count;
        }
    }
    CloseHandle(snapshot);
    return count;
}

std::int64_t countExisting(const Paths& paths) {
    return sumOver(paths, [](const WIN32_FILE_ATTRIBUTE_DATA&) { return std::int64_t{1}; });
}

std::int64_t sumAttributes(const Paths& paths) {
    return sumOver(paths, [](const WIN32_FILE_ATTRIBUTE_DATA& data) {
        return static_cast<std::int64_t>(data.dwFileAttributes);
    });
}

std::int64_t sumLastModified(const Paths& paths) {
    return sumOver(paths,
                   [](const WIN32_FILE_ATTRIBUTE_DATA& data) { return toJavaTime(data.ftLastWriteTime); });
}

}  // namespace bench
