#include "volume_fixture.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <ostream>

namespace testbed {

namespace {

BOOL fail(DWORD code) {
    SetLastError(code);
    return FALSE;
}

}  // namespace

std::wstring volumeName(unsigned number) {
    wchar_t name[64];
    _snwprintf_s(name, std::size(name), _TRUNCATE, L"\\\\?\\Volume{00000000-0000-0000-0000-%012u}\\", number);
    return name;
}

std::wstring mountList(std::initializer_list<std::wstring> paths) {
    std::wstring list;
    for (const std::wstring& path : paths) {
        list.append(path).push_back(L'\0');
    }
    list.push_back(L'\0');
    return list;
}

PARTITION_INFORMATION_EX mbrPartition(DWORD number, BYTE type, LONGLONG length) {
    PARTITION_INFORMATION_EX partition = {};
    partition.PartitionStyle = PARTITION_STYLE_MBR;
    partition.PartitionNumber = number;
    partition.PartitionLength.QuadPart = length;
    partition.Mbr.PartitionType = type;
    partition.Mbr.RecognizedPartition = TRUE;
    return partition;
}

PARTITION_INFORMATION_EX gptPartition(DWORD number, const GUID& type, LONGLONG length) {
    PARTITION_INFORMATION_EX partition = {};
    partition.PartitionStyle = PARTITION_STYLE_GPT;
    partition.PartitionNumber = number;
    partition.PartitionLength.QuadPart = length;
    partition.Gpt.PartitionType = type;
    return partition;
}

void PrintTo(const OpenCall& call, std::ostream* stream) {
    *stream << toUtf8(call.path) << " access " << hex(call.access) << " sharing " << call.sharing
            << " disposition " << call.disposition << " flags " << hex(call.flags);
}

FakeMachine::FakeMachine(SystemCalls& calls, std::vector<FakeVolume> given)
    : volumes(std::move(given)), system_(calls) {
    replacements_.push_back(REPLACE(FindFirstVolumeW, [this](LPWSTR buffer, DWORD room) -> HANDLE {
        if (firstError != 0) {
            SetLastError(firstError);
            return INVALID_HANDLE_VALUE;
        }
        next_ = 1;
        return giveName(0, buffer, room) ? Ledger::fakeHandle() : INVALID_HANDLE_VALUE;
    }));
    replacements_.push_back(REPLACE(FindNextVolumeW, [this](HANDLE, LPWSTR buffer, DWORD room) {
        return giveName(next_++, buffer, room);
    }));
    replacements_.push_back(REPLACE(GetVolumePathNamesForVolumeNameW,
                                    [this](LPCWSTR name, LPWSTR buffer, DWORD room, PDWORD required) {
                                        return giveMountPoints(name, buffer, room, required);
                                    }));
    replacements_.push_back(
        REPLACE(CreateFileW, [this](LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                                    DWORD disposition, DWORD flags, HANDLE pattern) {
            EXPECT_EQ(security, nullptr);
            EXPECT_EQ(pattern, nullptr);
            opened.push_back({path, access, sharing, disposition, flags});
            return open(path);
        }));
    replacements_.push_back(
        REPLACE(DeviceIoControl, [this](HANDLE device, DWORD code, LPVOID in, DWORD inSize, LPVOID out,
                                        DWORD outSize, LPDWORD returned, LPOVERLAPPED overlapped) {
            EXPECT_EQ(in, nullptr);
            EXPECT_EQ(overlapped, nullptr);
            asked.push_back({device, code, inSize, outSize});
            return answerDevice(device, code, out, outSize, returned);
        }));
}

BOOL FakeMachine::giveName(std::size_t index, LPWSTR buffer, DWORD room) {
    nameRooms.push_back(room);
    if (index >= volumes.size()) {
        return fail(endError);
    }
    return wcscpy_s(buffer, room, volumes[index].name.c_str()) == 0 ? TRUE : FALSE;
}

BOOL FakeMachine::giveMountPoints(LPCWSTR name, LPWSTR buffer, DWORD room, PDWORD required) {
    mountRooms.push_back(room);
    const auto volume = std::ranges::find_if(volumes, [&](const FakeVolume& candidate) {
        return candidate.name == name || candidate.name + L"\\" == name;
    });
    if (volume == volumes.end() || volume->mountPoints.empty()) {
        return fail(ERROR_FILE_NOT_FOUND);
    }
    *required = static_cast<DWORD>(volume->mountPoints.size());
    if (volume->mountPoints.size() > room) {
        return fail(ERROR_MORE_DATA);
    }
    std::wmemcpy(buffer, volume->mountPoints.data(), volume->mountPoints.size());
    return TRUE;
}

HANDLE FakeMachine::open(LPCWSTR path) {
    const auto volume = std::ranges::find_if(volumes, [&](const FakeVolume& candidate) {
        return candidate.name == path || candidate.name == std::wstring(path) + L"\\";
    });
    const DWORD error = volume == volumes.end() ? diskError : volume->openError;
    if (error != 0) {
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE handle = Ledger::fakeHandle();
    handles_[handle] = volume == volumes.end() ? nullptr : &*volume;
    return handle;
}

BOOL FakeMachine::answerDevice(HANDLE device, DWORD code, void* out, DWORD outSize, DWORD* returned) {
    const FakeVolume* volume = handles_.at(device);
    if (volume == nullptr) {
        return code != IOCTL_DISK_GET_DRIVE_LAYOUT_EX ? fail(ERROR_INVALID_FUNCTION)
               : layoutError != 0                     ? fail(layoutError)
                                                      : giveLayout(out, outSize, returned);
    }
    if (code != IOCTL_STORAGE_GET_DEVICE_NUMBER || outSize != sizeof(STORAGE_DEVICE_NUMBER)) {
        return fail(ERROR_INVALID_FUNCTION);
    }
    if (volume->deviceError != 0) {
        return fail(volume->deviceError);
    }
    if (volume->tongueTied) {
        *returned = 0;
        return TRUE;
    }
    *static_cast<STORAGE_DEVICE_NUMBER*>(out) = {FILE_DEVICE_DISK, volume->disk, volume->partition};
    *returned = sizeof(STORAGE_DEVICE_NUMBER);
    return TRUE;
}

BOOL FakeMachine::giveLayout(void* out, DWORD outSize, DWORD* returned) const {
    constexpr std::size_t headerSize = 48;
    const std::size_t size = headerSize + partitions.size() * sizeof(PARTITION_INFORMATION_EX);
    if (size > outSize) {
        return fail(ERROR_INSUFFICIENT_BUFFER);
    }
    auto* layout = static_cast<DRIVE_LAYOUT_INFORMATION_EX*>(out);
    layout->PartitionStyle = style;
    layout->PartitionCount = static_cast<DWORD>(partitions.size()) + countedTooMany;
    std::memcpy(static_cast<char*>(out) + headerSize, partitions.data(), size - headerSize);
    *returned = static_cast<DWORD>(size);
    return TRUE;
}

std::vector<DWORD> FakeMachine::layoutSizes() const {
    std::vector<DWORD> sizes;
    for (const DeviceCall& call : asked) {
        if (call.code == 0x70050) {
            sizes.push_back(call.outSize);
        }
    }
    return sizes;
}

std::vector<std::wstring> VolumeTest::textsOf(const JavaObject& list) {
    std::vector<std::wstring> texts;
    for (const JavaObject& element : FakeJava::listElements(list)) {
        texts.push_back(element.text());
    }
    return texts;
}

}  // namespace testbed
