// Drives, volumes and links that say anything.
#include "answers/devices.h"
#include "answers/volumes.h"
#include "disk_serials_fixture.h"
#include "hostile_test.h"

namespace testbed {

namespace {

class HostileDevices : public HostileTest<WinUtilTest> {
protected:
    // Devices that open, and answer with the input.
    void answerControls(hostile::Input& input) {
        devices_.emplace(input);
        replacements_.push_back(
            REPLACE(DeviceIoControl, [this](auto... arguments) { return devices_->control(arguments...); }));
        replacements_.push_back(REPLACE(CreateFileW, [](auto...) { return Ledger::fakeHandle(); }));
    }

    void answerSearches(hostile::Input& input) {
        volumes_.emplace(input);
        replacements_.push_back(REPLACE(FindFirstVolumeW, [this](LPWSTR name, DWORD room) {
            return volumes_->giveName(name, room) ? Ledger::fakeHandle() : INVALID_HANDLE_VALUE;
        }));
        replacements_.push_back(REPLACE(FindNextVolumeW, [this](HANDLE, LPWSTR name, DWORD room) {
            return volumes_->giveName(name, room) ? TRUE : FALSE;
        }));
        replacements_.push_back(REPLACE(GetVolumePathNamesForVolumeNameW, [this](auto... arguments) {
            return volumes_->giveMountPoints(arguments...);
        }));
        replacements_.push_back(
            REPLACE(fwrite, [](const void*, std::size_t, std::size_t count, FILE*) { return count; }));
    }

    std::vector<Replacement> replacements_;

private:
    std::optional<hostile::Devices> devices_;
    std::optional<hostile::Volumes> volumes_;
};

// Whether a target is made of what its reparse point holds, and not of what lies behind that.
bool isFrom(std::span<const std::byte> bytes, const std::wstring& target) {
    return std::ranges::any_of(
        std::initializer_list<std::wstring>{L"", L"\\\\", L"\\\\?\\"}, [&](const std::wstring& lead) {
            const auto rest = std::as_bytes(std::span(target).subspan(std::min(lead.size(), target.size())));
            return target.starts_with(lead) && (rest.empty() || !std::ranges::search(bytes, rest).empty());
        });
}

TEST_F(HostileDevices, KeepReparsePointsOfAnyForm) {
    const Replacement attributes =
        system().answer("GetFileAttributesW", FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY);
    const Replacement attributeData =
        REPLACE(GetFileAttributesExW, [](LPCWSTR, GET_FILEEX_INFO_LEVELS, LPVOID data) {
            static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data)->dwFileAttributes =
                FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY;
            return TRUE;
        });
    forEachInput("reparse_point", [&](hostile::Input& input) {
        answerControls(input);
        const hostile::Input again = input;
        note(NATIVE(getLinkType)(L"C:\\link"));
        input = again;
        const JavaObject target = NATIVE(getLinkTarget)(L"C:\\link");
        note(target);
        hostile::Input held = again;
        EXPECT_TRUE(!target || isFrom(held.rest(), target.text()));
        replacements_.clear();
    });
}

TEST_F(HostileDevices, HaveLayoutsOfAnyForm) {
    forEachInput("disk_volumes", [&](hostile::Input& input) {
        answerControls(input);
        answerSearches(input);
        NATIVE(listNTFSPartitions)(L"\\\\.\\PHYSICALDRIVE0", collector());
        replacements_.clear();
    });
}

TEST_F(HostileDevices, AreMountedAnywhere) {
    forEachInput("mount_list", [&](hostile::Input& input) {
        answerSearches(input);
        NATIVE(listPartitions)(collector());
        replacements_.clear();
    });
}

using HostileDisks = HostileTest<WmiTest>;

TEST_F(HostileDisks, IdentifyThemselvesAsAnything) {
    const Replacement opening = REPLACE(CreateFileA, [](auto...) { return Ledger::fakeHandle(); });
    const Replacement windows = system().answer("GetWindowsDirectoryA", 0);
    forEachInput("identify_data", [&](hostile::Input& input) {
        hostile::Devices devices(input);
        const Replacement asking =
            REPLACE(DeviceIoControl, [&](auto... arguments) { return devices.control(arguments...); });
        foundOnly(disk(L"\\\\.\\PHYSICALDRIVE0", L""));
        NATIVE(getHardDiskSN)(collector());
    });
}

}  // namespace

}  // namespace testbed
