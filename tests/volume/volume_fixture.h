// A machine of a test's own: volumes and one disk, behind the calls with which the library looks at them.
#pragma once

#include <windows.h>

#include <winioctl.h>

#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "winutil_fixture.h"

namespace testbed {

struct FakeVolume {
    std::wstring name;              // as the search gives it
    std::wstring mountPoints = {};  // the whole list, zeros included; none cannot be had
    DWORD disk = 0;
    DWORD partition = 0;
    DWORD openError = 0;
    DWORD deviceError = 0;
    bool tongueTied = false;  // its device answers, and does not say what it was asked
};

// \\?\Volume{00000000-0000-0000-0000-000000000012}\ and the like.
std::wstring volumeName(unsigned number);

// Paths as a list: each with its zero, and one more behind the last.
std::wstring mountList(std::initializer_list<std::wstring> paths);

// Entries of a disk's layout.
PARTITION_INFORMATION_EX mbrPartition(DWORD number, BYTE type, LONGLONG length = 1 << 20);
PARTITION_INFORMATION_EX gptPartition(DWORD number, const GUID& type, LONGLONG length = 1 << 20);
inline constexpr GUID basicData = {
    0xEBD0A0A2, 0xB9E5, 0x4433, {0x87, 0xC0, 0x68, 0xB6, 0xB7, 0x26, 0x99, 0xC7}};
inline constexpr GUID efiSystem = {
    0xC12A7328, 0xF81F, 0x11D2, {0xBA, 0x4B, 0x00, 0xA0, 0xC9, 0x3E, 0xC9, 0x3B}};
inline constexpr GUID recovery = {
    0xDE94BBA4, 0x06D1, 0x4D4B, {0xA1, 0x6A, 0xBF, 0xD5, 0x01, 0x79, 0xD6, 0xAC}};

// One call of DeviceIoControl.
struct DeviceCall {
    HANDLE device;
    DWORD code;
    DWORD inSize;
    DWORD outSize;
};

// One call of CreateFileW or CreateFileA.
struct OpenCall {
    std::wstring path;
    DWORD access;
    DWORD sharing;
    DWORD disposition;
    DWORD flags;
    bool operator==(const OpenCall&) const = default;
};
void PrintTo(const OpenCall& call, std::ostream* stream);

// While it lives the library meets these volumes, and this disk under any other name.
class FakeMachine {
public:
    FakeMachine(SystemCalls& calls, std::vector<FakeVolume> volumes);

    std::vector<FakeVolume> volumes;
    DWORD firstError = 0;                  // of the search itself
    DWORD endError = ERROR_NO_MORE_FILES;  // of the step behind the last volume
    DWORD diskError = 0;                   // of opening the disk
    DWORD layoutError = 0;                 // of asking for its layout

    DWORD style = PARTITION_STYLE_MBR;
    std::vector<PARTITION_INFORMATION_EX> partitions;
    DWORD countedTooMany = 0;  // how many more partitions the layout counts than it has

    std::vector<DWORD> nameRooms;  // characters that the search was given
    std::vector<DWORD> mountRooms;
    std::vector<OpenCall> opened;
    std::vector<DeviceCall> asked;

    std::vector<DWORD> layoutSizes() const;

private:
    SystemCalls& system() { return system_; }
    BOOL giveName(std::size_t index, LPWSTR buffer, DWORD room);
    BOOL giveMountPoints(LPCWSTR name, LPWSTR buffer, DWORD room, PDWORD required);
    HANDLE open(LPCWSTR path);
    BOOL answerDevice(HANDLE device, DWORD code, void* out, DWORD outSize, DWORD* returned);
    BOOL giveLayout(void* out, DWORD outSize, DWORD* returned) const;

    SystemCalls& system_;
    std::size_t next_ = 0;
    std::map<HANDLE, const FakeVolume*> handles_;  // the disk has none
    std::vector<Replacement> replacements_;
};

class VolumeTest : public WinUtilTest {
protected:
    // The elements of a list as texts.
    static std::vector<std::wstring> textsOf(const JavaObject& list);

    // What the library prints while the test runs, in ASCII.
    std::string printed;

private:
    Replacement printing_ =
        REPLACE(fwrite, [this](const void* bytes, std::size_t size, std::size_t count, FILE* stream) {
            EXPECT_EQ(_fileno(stream), 1);
            printed.append(static_cast<const char*>(bytes), size * count);
            return count;
        });
};

}  // namespace testbed
