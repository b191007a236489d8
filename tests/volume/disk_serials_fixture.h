// A computer with disks behind its WMI, and with drives that may be asked themselves.
#pragma once

#include <windows.h>

#include <winioctl.h>

#include <cstring>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "wmi_fixture.h"

namespace testbed {

inline constexpr const char* addDiskInfo = "(Ljava/lang/String;Ljava/lang/String;Z)V";

struct Disk {
    std::wstring device;
    std::wstring serial;
    bool isSystem;
    bool operator==(const Disk&) const = default;
};

inline void PrintTo(const Disk& disk, std::ostream* stream) {
    *stream << toUtf8(disk.device) << " [" << toUtf8(disk.serial) << "] " << disk.isSystem;
}

struct Open {
    std::string path;
    DWORD access;
    bool operator==(const Open&) const = default;
};

inline void PrintTo(const Open& open, std::ostream* stream) {
    *stream << open.path << " access " << hex(open.access);
}

class DiskSerials : public WmiTest {
protected:
    // Where Windows is, and what becomes of asking for its disk.
    std::string windowsFolder = "C:\\Windows";
    DWORD volumeError = 0;
    DWORD numberError = 0;
    bool numberMissing = false;  // the device answers, and does not say it
    DWORD systemDisk = 0;
    // What becomes of asking a drive, and what its words 10 to 19 are.
    DWORD driveError = 0;
    DWORD versionError = 0;
    DWORD identifyError = 0;
    std::string serialWords = "eSirlaN mueb r2143 5";

    std::vector<Open> opened;
    std::vector<DWORD> asked;
    std::vector<Disk> disks;
    JavaObject collector = java.collector("addDiskInfo", addDiskInfo, [this](const Arguments& a) {
        disks.push_back({a[0].text(), a[1].text(), a[2].boolean()});
    });

    void list() { NATIVE(getHardDiskSN)(collector); }

    // The serial number that the drive gives, if the disk is reported at all.
    std::optional<std::wstring> serialOfTheDrive() {
        disks.clear();
        foundOnly({{L"DeviceID", text(L"\\\\.\\PHYSICALDRIVE1")}});
        list();
        return disks.empty() ? std::nullopt : std::optional(disks.front().serial);
    }

    void expectFailure(const std::wstring& message) {
        list();
        EXPECT_EQ(java.takeException(), ioException(message));
        EXPECT_THAT(disks, testing::IsEmpty());
    }

    struct Step {
        HRESULT& result;
        const wchar_t* text;
    };
    std::vector<Step> steps() {
        return {{initializeResult, L"Failed to initialize COM library. error="},
                {securityResult, L"Failed to initialize security."},
                {createResult, L"Failed to create IWbemLocator object."},
                {locator.connectResult, L"Could not connect [ROOT\\CIMV2]"},
                {blanketResult, L"Could not set proxy blanket."},
                {services.queryResult, L"Query for Computer Disk Drive failed."}};
    }

private:
    HANDLE open(LPCSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                DWORD flags, HANDLE pattern) {
        EXPECT_EQ(sharing, 3U);
        EXPECT_EQ(security, nullptr);
        EXPECT_EQ(disposition, DWORD{OPEN_EXISTING});
        EXPECT_EQ(flags, 0U);
        EXPECT_EQ(pattern, nullptr);
        opened.push_back({path, access});
        const DWORD error = access == 0 ? volumeError : driveError;
        if (error != 0) {
            SetLastError(error);
            return INVALID_HANDLE_VALUE;
        }
        return Ledger::fakeHandle();
    }

    BOOL fail(DWORD error) {
        SetLastError(error);
        return FALSE;
    }

    BOOL answer(DWORD code, const void* in, DWORD inSize, void* out, DWORD outSize, DWORD* returned) {
        asked.push_back(code);
        switch (code) {
            case 0x2D1080:
                events.push_back("ask for the system disk");
                EXPECT_EQ(in, nullptr);
                EXPECT_EQ(inSize, 0U);
                EXPECT_EQ(outSize, 12U);
                if (!numberMissing) {
                    *static_cast<STORAGE_DEVICE_NUMBER*>(out) = {FILE_DEVICE_DISK, systemDisk, 1};
                }
                return numberError == 0 ? TRUE : fail(numberError);
            case 0x74080:
                EXPECT_EQ(in, nullptr);
                EXPECT_EQ(inSize, 0U);
                EXPECT_EQ(outSize, 24U);
                return versionError == 0 ? TRUE : fail(versionError);
            case 0x7C088:
                return identifyError == 0 ? identify(in, inSize, out, outSize, returned)
                                          : fail(identifyError);
            default:
                return fail(ERROR_INVALID_FUNCTION);
        }
    }

    BOOL identify(const void* in, DWORD inSize, void* out, DWORD outSize, DWORD* returned) {
        EXPECT_EQ(inSize, 33U);
        EXPECT_EQ(outSize, 545U);
        EXPECT_EQ(in, out);
        // Nothing in the command but its register.
        std::string command(545, '\0');
        command[10] = '\xEC';
        EXPECT_EQ(std::string(static_cast<const char*>(in), 545), command);
        std::memset(out, 'x', outSize);
        std::memcpy(static_cast<char*>(out) + 16 + 20, serialWords.data(), 20);
        *returned = 16 + 512;
        return TRUE;
    }

    Replacement opening_ = REPLACE(CreateFileA, [this](auto... arguments) { return open(arguments...); });
    Replacement asking_ =
        REPLACE(DeviceIoControl, [this](HANDLE, DWORD code, LPVOID in, DWORD inSize, LPVOID out,
                                        DWORD outSize, LPDWORD returned, LPOVERLAPPED overlapped) {
            EXPECT_EQ(overlapped, nullptr);
            return answer(code, in, inSize, out, outSize, returned);
        });
    Replacement windows_ = REPLACE(GetWindowsDirectoryA, [this](LPSTR buffer, UINT) {
        std::memcpy(buffer, windowsFolder.c_str(), windowsFolder.size() + 1);
        return static_cast<UINT>(windowsFolder.size());
    });
};

inline Properties disk(const std::wstring& device, const std::wstring& serial) {
    return {{L"DeviceID", text(device)}, {L"SerialNumber", text(serial)}};
}

}  // namespace testbed
