#include "volume/ata_serial.h"

// windows.h comes first: the other builds on it.
#include <windows.h>

#include <winioctl.h>

#include "bridge/owners.h"

namespace winutil::volume {

namespace {

static_assert(SMART_GET_VERSION == 0x74080 && SMART_RCV_DRIVE_DATA == 0x7C088);
static_assert(sizeof(GETVERSIONINPARAMS) == 24 && sizeof(SENDCMDINPARAMS) == 33);

constexpr DWORD blockSize = sizeof(SENDCMDINPARAMS) + IDENTIFY_BUFFER_SIZE;
constexpr std::size_t identifyOffset = offsetof(SENDCMDOUTPARAMS, bBuffer);
static_assert(blockSize == 545 && identifyOffset == 16);

bool hasSmartCommands(HANDLE drive) noexcept {
    GETVERSIONINPARAMS version = {};
    DWORD returned = 0;
    return DeviceIoControl(drive, SMART_GET_VERSION, nullptr, 0, &version, sizeof(version), &returned,
                           nullptr) != FALSE;
}

// Has the drive fill the block. Returns false when it refuses.
bool identify(HANDLE drive, std::byte* block) noexcept {
    reinterpret_cast<SENDCMDINPARAMS*>(block)->irDriveRegs.bCommandReg = ID_CMD;
    static_assert(ID_CMD == 0xEC);
    DWORD returned = 0;
    return DeviceIoControl(drive, SMART_RCV_DRIVE_DATA, block, sizeof(SENDCMDINPARAMS), block, blockSize,
                           &returned, nullptr) != FALSE;
}

}  // namespace

bool ataIdentifySerial(const char* devicePath, AtaSerial& serial) noexcept {
    serial[0] = '\0';
    const FileHandle drive(CreateFileA(devicePath, GENERIC_READ | GENERIC_WRITE,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                       nullptr));
    if (!drive || !hasSmartCommands(drive.get())) {
        return true;
    }
    const HeapMemory<std::byte> block = allocateZeroed<std::byte>(blockSize);
    if (block && identify(drive.get(), block.get())) {
        copySerial(IdentifyData(block.get() + identifyOffset, IDENTIFY_BUFFER_SIZE), serial);
    }
    return static_cast<bool>(block);
}

}  // namespace winutil::volume
