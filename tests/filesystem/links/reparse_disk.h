// A disk whose files and directories are nothing but attributes and reparse data.
#pragma once

#include <windows.h>

#include <winioctl.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "reparse_bytes.h"
#include "winutil_fixture.h"

namespace testbed {

class ReparseDisk {
public:
    struct Entry {
        DWORD attributes = 0;
        Bytes data;
    };
    struct Open {
        std::wstring path;
        DWORD access, share, disposition, flags;
        LPSECURITY_ATTRIBUTES security;
    };
    struct Written {
        Bytes data;
        DWORD outputSize;
        const void* output;
    };

    explicit ReparseDisk(SystemCalls& calls) : system_(calls) {
        replace("GetFileAttributesExW", &ReparseDisk::getAttributes);
        replace("GetFileAttributesW", &ReparseDisk::getAttributeWord);
        replace("CreateFileW", &ReparseDisk::openFile);
        replace("DeviceIoControl", &ReparseDisk::control);
        replace("CreateDirectoryW", &ReparseDisk::makeDirectory);
    }

    std::map<std::wstring, Entry> entries;
    std::vector<Open> opens;
    std::vector<Written> writes;
    DWORD openError = 0;     // of the next opens, when not 0
    DWORD controlError = 0;  // of the next control calls, when not 0
    // What the control call says that it wrote, when not what it did.
    std::optional<DWORD> claimedSize;

    void put(const std::wstring& path, DWORD attributes, const ReparseBytes& bytes) {
        entries[path] = {attributes | FILE_ATTRIBUTE_REPARSE_POINT, bytes.build()};
    }

private:
    template <class R, class... Args>
    void replace(const char* name, R (ReparseDisk::*method)(Args...)) {
        replacements_.push_back(system_.replace<R(Args...)>(
            name, [this, method](Args... args) { return (this->*method)(args...); }));
    }

    Entry* find(const std::wstring& path) {
        const auto found = entries.find(path.starts_with(L"\\\\?\\") ? path.substr(4) : path);
        return found == entries.end() ? nullptr : &found->second;
    }

    static BOOL fail(DWORD error) {
        SetLastError(error);
        return FALSE;
    }

    BOOL getAttributes(LPCWSTR path, GET_FILEEX_INFO_LEVELS, LPVOID data) {
        const Entry* entry = find(path);
        if (entry == nullptr) {
            return fail(ERROR_FILE_NOT_FOUND);
        }
        auto& written = *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data);
        written = {};
        written.dwFileAttributes = entry->attributes;
        return TRUE;
    }

    DWORD getAttributeWord(LPCWSTR path) {
        const Entry* entry = find(path);
        if (entry == nullptr) {
            fail(ERROR_FILE_NOT_FOUND);
            return INVALID_FILE_ATTRIBUTES;
        }
        return entry->attributes;
    }

    HANDLE openFile(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                    DWORD disposition, DWORD flags, HANDLE) {
        opens.push_back({path, access, share, disposition, flags, security});
        if (openError != 0 || find(path) == nullptr) {
            fail(openError != 0 ? openError : ERROR_FILE_NOT_FOUND);
            return INVALID_HANDLE_VALUE;
        }
        const HANDLE handle = Ledger::fakeHandle();
        handles_[handle] = path;
        return handle;
    }

    BOOL control(HANDLE handle, DWORD code, LPVOID input, DWORD inputSize, LPVOID output, DWORD outputSize,
                 LPDWORD returned, LPOVERLAPPED overlapped) {
        EXPECT_EQ(overlapped, nullptr);
        Entry* entry = find(handles_.at(handle));
        if (controlError != 0) {
            return fail(controlError);
        }
        if (code == FSCTL_SET_REPARSE_POINT) {
            const auto* bytes = static_cast<const std::byte*>(input);
            entry->data.assign(bytes, bytes + inputSize);
            entry->attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
            writes.push_back({entry->data, outputSize, output});
            *returned = 0;
            return TRUE;
        }
        EXPECT_EQ(code, FSCTL_GET_REPARSE_POINT);
        EXPECT_EQ(outputSize, 16384u);
        if ((entry->attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
            return fail(ERROR_NOT_A_REPARSE_POINT);
        }
        std::ranges::copy(entry->data, static_cast<std::byte*>(output));
        *returned = claimedSize.value_or(static_cast<DWORD>(entry->data.size()));
        return TRUE;
    }

    BOOL makeDirectory(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
        EXPECT_EQ(security, nullptr);
        if (find(path) != nullptr) {
            return fail(ERROR_ALREADY_EXISTS);
        }
        entries[path] = {FILE_ATTRIBUTE_DIRECTORY, {}};
        return TRUE;
    }

    SystemCalls& system_;
    std::map<HANDLE, std::wstring> handles_;
    std::vector<Replacement> replacements_;
};

}  // namespace testbed
